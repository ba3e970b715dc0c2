// Preferences of the site, in four files. A load never frees the texts that the record held before:
// they may be the caller's, or never have been set.

#include <sys/stat.h>

#include "mail/base/bounded_text.h"
#include "mail/base/file.h"
#include "mail/base/line_reader.h"
#include "mail/base/replace_file.h"
#include "mail/config.h"
#include "mail/storage.h"
#include "mail/storage/user_paths.h"
#include "settings_tables.h"
#include "support/support.h"

using namespace attalven;

namespace {

constexpr string_view kSettings = "admin_preference.ini", kSubject = "adm_mail_subject.txt",
                      kMail = "adm_mail.txt", kSign = "adm_sign.txt";

char* textOf(string_view name) {
    return readText(siteFilePath(name).c_str()).release();
}

/// The first line, with its end; a file that does not open leaves the subject alone.
void readSubject(MailAdminPreference& rec) {
    OwnedFile file = openRegular(siteFilePath(kSubject).c_str());
    if (!file) return;
    LineReader lines(file.get(), kShortLines);
    LinePiece line;
    cutCopy(rec.admMailSubject, lines.next(line) ? line.text : string_view());
}

void replaceText(string_view name, const char* text) {
    replaceFile(siteFilePath(name).c_str(), viewOf(text));
}

}  // namespace

void mailGetAdminPreference(MailAdminPreference* rec) {
    if (!rec) return;
    FilePath path = siteFilePath(kSettings);
    OwnedFile file = openRegular(path.c_str());
    if (!file && isMissing(path.c_str())) {
        mailInitAdminPreference();
        file = openRegular(path.c_str());
    }
    if (!file) failToOpen(path.view());
    readSettings(adminSettings(), file.get(), kShortLines, rec);
    readSubject(*rec);
    rec->admMail = textOf(kMail);
    rec->admSign = textOf(kSign);
}

void mailSetAdminPreference(MailAdminPreference* rec) {
    if (!rec) return;
    if (!chkExistFile(conf.mboxRootDir)) mailInitPathName(conf.mboxRootDir);
    umask(kSettingsMask);
    FilePath path = siteFilePath(kSettings);
    Text content;
    writeSettings(adminSettings(), rec, content);
    if (replaceSettings(path.c_str(), content) == Replaced::kNotOpened) failToOpen(path.view());
    replaceText(kSubject, rec->admMailSubject);
    replaceText(kMail, rec->admMail);
    replaceText(kSign, rec->admSign);
}

void mailInitAdminPreference(void) {
    MailAdminPreference rec = {};
    rec.quota = 3;
    rec.pop3 = 5;
    rec.usrRegMethod = 1;
    rec.oneTimeMailSendNum = 30;
    rec.attachFileLimitSize = 5;
    rec.attachFileLimitNum = 5;
    rec.spoolSize = 3;
    rec.pop3Flag = 1;
    rec.resRegFlag = 1;
    rec.passwdFlag = 1;
    cutCopy(rec.shell, "/bin/noshell");
    rec.defaultHeaderEncoding = 3;
    rec.defaultBodyEncoding = 3;
    rec.loginAuthCookieType = 1;
    rec.noticeBoardDefaultPageSize = 5;
    rec.loginUserDisplayTime = 5;
    char sign[] = "<HR><SMALL>Sent with Attalven web mail</SMALL><BR>\n";
    rec.admSign = sign;
    mailSetAdminPreference(&rec);
}

void mailFreeAdminPreference(MailAdminPreference* rec) {
    if (!rec) return;
    free(rec->admMail);
    free(rec->admSign);
    rec->admMail = rec->admSign = nullptr;
}
