#ifndef ATTALVEN_MAIL_CONFIG_SETTINGS_FILE_H
#define ATTALVEN_MAIL_CONFIG_SETTINGS_FILE_H

// The one reader and the one writer of all settings files. A table with a row per setting ties a
// key to a field of a record; its rows stand in the order in which the lines are written.

#include <cstdio>
#include <span>
#include <type_traits>

#include "mail/base/replace_file.h"
#include "mail/base/text.h"

namespace attalven {

/// One field of a record: a number, or a text area whose size counts the NUL.
struct FieldRef {
    int* number;
    std::span<char> text;
};

template <typename Record, typename T>
FieldRef refer(void* record, T Record::*member) {
    T& value = static_cast<Record*>(record)->*member;
    if constexpr (std::is_same_v<T, int>)
        return {&value, {}};
    else
        return {nullptr, value};
}
/// Finds a member in the record that a table describes: field<&Record::member>.
template <auto Member>
FieldRef field(void* record) {
    return refer(record, Member);
}

/// Whether a setting is also written, or only understood where a file has it.
enum class Use { kReadAndWrite, kReadOnly };

struct Setting {
    string_view key;
    FieldRef (*field)(void* record);
    Use use = Use::kReadAndWrite;
};
using Settings = std::span<const Setting>;

/// Stores the value of a line "key = value" in the field whose key starts the line, ignoring case;
/// what stands between key and "=" does not matter. Texts are cut to their fields. The row that
/// took the value, NULL when there is none.
const Setting* storeSetting(Settings settings, string_view line, void* record);

/// Stores all lines of the stream, of which each piece of `lineLimit` - 1 bytes counts as a line of
/// its own. Fields without a line keep what they hold; of repeated keys the last one wins.
void readSettings(Settings settings, FILE* stream, size_t lineLimit, void* record);

/// Appends the line of each setting. A text ends at its first line break, which would start another
/// setting.
void writeSettings(Settings settings, const void* record, Text& out);

/// `text` up to its first CR or LF.
string_view firstLine(string_view text);

/// The file-creation mask that the writers of settings leave behind: new files are private.
constexpr unsigned int kSettingsMask = 0177;

/// Whether nothing stands at the path. Where that cannot be told (a busy disk, no memory, no
/// descriptor), there may be settings, which no defaults must replace.
bool isMissing(const char* path);

/// Replaces a settings file by `content`; content that memory did not suffice for keeps the old
/// one.
Replaced replaceSettings(const char* path, const Text& content);

/// The whole of a text file as a new heap text, empty when it does not open, NULL when memory is
/// out.
OwnedText readText(const char* path);

/// Ends the process with the page that tells that a settings file cannot be opened.
[[noreturn]] void failToOpen(string_view path);

}  // namespace attalven

#endif
