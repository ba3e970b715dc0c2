// The auto-reply record: two lines, one pair of keys. Its name and keys come from the program that
// answers mail; a name that is no plain file name is refused, and a key never spills over its line.

#include "mail/base/file.h"
#include "mail/base/line_reader.h"
#include "mail/base/replace_file.h"
#include "mail/config.h"
#include "mail/storage/user_paths.h"
#include "settings_file.h"
#include "support/host.h"

using namespace attalven;

namespace {

constexpr size_t kLineLimit = 5000, kNameLimit = 255;

bool isFileName(string_view name) {
    return !name.empty() && name.size() <= kNameLimit && name != "." && name != ".." &&
           name.find('/') == string_view::npos;
}

/// Whether the next line equals the key; a missing line counts as empty.
bool takeKey(LineReader& lines, string_view key, bool withCase) {
    LinePiece line;
    string_view text = lines.next(line) ? trimTail(line.text) : string_view();
    return withCase ? text == key : equalNoCase(text, key);
}

}  // namespace

int mailChkAutoSubmittedInfo(const char* name, const char* id, const char* domain,
                             const char* firstKey, const char* secondKey) {
    if (!isFileName(viewOf(name))) return 0;
    FilePath path = userFilePath(id, domain, name);
    OwnedFile file = openRegular(path.c_str());
    if (!file) {
        if (isMissing(path.c_str()))
            mailSaveAutoSubmittedInfo(name, id, domain, firstKey, secondKey);
        return 0;
    }
    LineReader lines(file.get(), kLineLimit);
    return takeKey(lines, viewOf(firstKey), admOptions.allowCaseUserIdFlag == 1) &&
           takeKey(lines, viewOf(secondKey), true);
}

void mailSaveAutoSubmittedInfo(const char* name, const char* id, const char* domain,
                               const char* firstKey, const char* secondKey) {
    if (!isFileName(viewOf(name))) return;
    Text content;
    for (const char* key : {firstKey, secondKey}) {
        content.append(firstLine(viewOf(key)));
        content.append('\n');
    }
    replaceSettings(userFilePath(id, domain, name).c_str(), content);
}
