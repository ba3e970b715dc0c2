// The settings reader against a plain fgets loop, and the writer against the reader.

#include <strings.h>

#include "fuzz.h"
#include "mail/base/file.h"
#include "mail/config.h"
#include "mail/config/settings_tables.h"

using namespace attalven;
using fuzz::require;

namespace {

/// The last line whose key starts it decides; of two keys that do, the first in the documented
/// order is the longer one.
void modelLine(char* line, MailAdminPreference& rec) {
    int* field = strncasecmp(line, "POP3_FLAG", 9) == 0               ? &rec.pop3Flag
                 : strncasecmp(line, "POP3", 4) == 0                  ? &rec.pop3
                 : strncasecmp(line, "SPOOL_SIZE", 10) != 0           ? nullptr
                 : strncasecmp(line + 10, "_MAIL_WARN_FLAG", 15) == 0 ? &rec.spoolSizeMailWarnFlag
                                                                      : &rec.spoolSize;
    const char* value = strchr(line, '=');
    if (field) *field = clampInt(value ? atoll(value + 1) : 0);
}

MailAdminPreference readFrom(const void* data, size_t size) {
    MailAdminPreference rec = {};
    OwnedFile f(fmemopen(const_cast<void*>(data), size, "r"));
    require(f != nullptr);
    readSettings(adminSettings(), f.get(), kShortLines, &rec);
    return rec;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
    if (size == 0 || memchr(data, 0, size)) return 0;
    MailAdminPreference rec = readFrom(data, size), model = {};
    OwnedFile f(fmemopen(const_cast<unsigned char*>(data), size, "r"));
    for (char line[kShortLines]; f && fgets(line, sizeof line, f.get());) modelLine(line, model);
    require(rec.pop3 == model.pop3 && rec.pop3Flag == model.pop3Flag);
    require(rec.spoolSize == model.spoolSize &&
            rec.spoolSizeMailWarnFlag == model.spoolSizeMailWarnFlag);

    Text once, twice;
    writeSettings(adminSettings(), &rec, once);
    MailAdminPreference back = readFrom(once.view().data(), once.size());
    writeSettings(adminSettings(), &back, twice);
    require(once.view() == twice.view());
    return 0;
}
