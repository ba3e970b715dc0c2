// The settings reader against a plain fgets loop, and the writer against the reader.

#include <strings.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "mail/config.h"
#include "mail/config/settings_tables.h"

using namespace attalven;

namespace {

void check(bool ok) {
    if (!ok) abort();
}

/// The last line whose key starts it decides; of two keys that do, the first in the documented
/// order is the longer one.
void modelLine(char* line, MailAdminPreference& rec) {
    char* value = strchr(line, '=');
    value = value ? value + 1 + strspn(value + 1, " \t\n\v\f\r") : line + strlen(line);
    value[strcspn(value, "\n")] = 0;
    long long number = atoll(value);
    int clamped = number > 2147483647    ? 2147483647
                  : number < -2147483648 ? -2147483647 - 1
                                         : static_cast<int>(number);
    if (strncasecmp(line, "POP3_FLAG", 9) == 0)
        rec.pop3Flag = clamped;
    else if (strncasecmp(line, "POP3", 4) == 0)
        rec.pop3 = clamped;
    else if (strncasecmp(line, "SPOOL_SIZE_MAIL_WARN_FLAG", 25) == 0)
        rec.spoolSizeMailWarnFlag = clamped;
    else if (strncasecmp(line, "SPOOL_SIZE", 10) == 0)
        rec.spoolSize = clamped;
    else if (strncasecmp(line, "QUOTA", 5) == 0)
        rec.quota = clamped;
}

MailAdminPreference readFrom(const void* data, size_t size) {
    MailAdminPreference rec = {};
    FILE* f = fmemopen(const_cast<void*>(data), size, "r");
    check(f);
    readSettings(adminSettings(), f, kShortLines, &rec);
    fclose(f);
    return rec;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
    if (size == 0 || memchr(data, 0, size)) return 0;
    MailAdminPreference rec = readFrom(data, size), model = {};
    FILE* f = fmemopen(const_cast<unsigned char*>(data), size, "r");
    for (char line[kShortLines]; f && fgets(line, sizeof line, f);) modelLine(line, model);
    if (f) fclose(f);
    check(rec.pop3 == model.pop3 && rec.pop3Flag == model.pop3Flag && rec.quota == model.quota);
    check(rec.spoolSize == model.spoolSize &&
          rec.spoolSizeMailWarnFlag == model.spoolSizeMailWarnFlag);

    Text once, twice;
    writeSettings(adminSettings(), &rec, once);
    MailAdminPreference back = readFrom(once.view().data(), once.size());
    writeSettings(adminSettings(), &back, twice);
    check(once.view() == twice.view());
    return 0;
}
