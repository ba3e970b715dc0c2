// Preferences of one user. The file is the user's; the record is the caller's, and the first save
// resets most of it, so that a new user starts from the site's defaults.

#include <sys/stat.h>

#include "mail/base/bounded_text.h"
#include "mail/base/file.h"
#include "mail/base/replace_file.h"
#include "mail/codec.h"
#include "mail/config.h"
#include "mail/storage/user_paths.h"
#include "settings_tables.h"
#include "support/support.h"

using namespace attalven;

namespace {

constexpr string_view kFileName = "preference.ini";

/// What only a get gives a default; a first save keeps the caller's values.
void resetPageOptions(MailPreference& pref) {
    pref.newMailCheckTime = 20;
    pref.attachFileDefaultNum = 3;
    pref.registeredMailFlag = 1;
    pref.editor = 1;
    pref.viewType = 1;
}

void resetMailOptions(MailPreference& pref) {
    pref.fetchMail = 2;
    pref.spoolMail = 1;
    cutCopy(pref.emailName, {});
    cutCopy(pref.charSet, viewOf(mailGetLangCharSet(conf.defaultTemplateLang)));
    cutCopy(pref.replyTo, {});
    cutCopy(pref.forwarding, {});
    pref.copyForwardingFlag = 0;
    pref.mailDelOption = 1;
    pref.pageSize = 10;
    cutCopy(pref.smtpServer, conf.serverName);
    pref.headerEncoding = admOptions.defaultHeaderEncoding;
    pref.bodyEncoding = admOptions.defaultBodyEncoding;
}

}  // namespace

void mailGetPreference(const char* id, const char* domain, MailPreference* pref) {
    if (!pref) return;
    resetMailOptions(*pref);
    resetPageOptions(*pref);
    FilePath path = userFilePath(id, domain, kFileName);
    OwnedFile file = openRegular(path.c_str());
    if (!file && isMissing(path.c_str())) {
        mailSetPreference(id, domain, pref);
        file = openRegular(path.c_str());
    }
    if (!file) failToOpen(path.view());
    readSettings(userSettings(), file.get(), kShortLines, pref);
}

void mailSetPreference(const char* id, const char* domain, MailPreference* pref) {
    if (!pref) return;
    ensureUserDirectory(id, domain);
    FilePath path = userFilePath(id, domain, kFileName);
    if (isMissing(path.c_str())) resetMailOptions(*pref);
    umask(kSettingsMask);
    Text content;
    writeSettings(userSettings(), pref, content);
    if (replaceSettings(path.c_str(), content) == Replaced::kNotOpened) failToOpen(path.view());
}
