// Vacation settings of one user: six lines and a text file. Whoever opens the page for the first
// time finds today's date in it; without the settings file any text that was left is dropped too.

#include <sys/stat.h>
#include <time.h>

#include "mail/base/bounded_text.h"
#include "mail/base/file.h"
#include "mail/base/replace_file.h"
#include "mail/config.h"
#include "mail/storage/user_paths.h"
#include "settings_tables.h"
#include "support/support.h"

using namespace attalven;

namespace {

constexpr string_view kSettings = "vacation.ini", kText = "vacation.txt";

void reset(MailVacationPref& vac) {
    time_t now = time(nullptr);
    int year = getYear(now), month = getMonth(now), day = getDay(now);
    vac = {};
    vac.startTs = clampInt(getTs(year, month, day, 0, 0, 0));
    vac.endTs = clampInt(getTs(year, month, day, 23, 59, 59));
    vac.style = 1;
    vac.signFlag = 1;
}

}  // namespace

void mailGetVacationPref(const char* id, const char* domain, MailVacationPref* vac) {
    if (!vac) return;
    ensureUserDirectory(id, domain);
    FilePath path = userFilePath(id, domain, kSettings);
    if (isMissing(path.c_str())) mailSetVacationPref(id, domain, vac);
    if (OwnedFile file = openRegular(path.c_str()))
        readSettings(vacationSettings(), file.get(), kLongLines, vac);
    vac->replyText = readText(userFilePath(id, domain, kText).c_str()).release();
}

void mailSetVacationPref(const char* id, const char* domain, MailVacationPref* vac) {
    if (!vac) return;
    ensureUserDirectory(id, domain);
    FilePath path = userFilePath(id, domain, kSettings);
    if (isMissing(path.c_str())) reset(*vac);
    umask(kSettingsMask);
    Text content;
    writeSettings(vacationSettings(), vac, content);
    replaceSettings(path.c_str(), content);
    replaceFile(userFilePath(id, domain, kText).c_str(), viewOf(vac->replyText));
}

void mailFreeVacationPref(MailVacationPref* vac) {
    if (!vac) return;
    free(vac->replyText);
    vac->replyText = nullptr;
}
