// Lines of key, " = " and value. Survives lines of any length (pieces), keys without value, numbers
// out of range (clamped), values wider than their field (cut) and, when writing, values that hold
// line breaks and would otherwise smuggle in further settings.

#include "settings_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "mail/base/bounded_text.h"
#include "mail/base/file.h"
#include "mail/base/keyword.h"
#include "mail/base/line_reader.h"
#include "mail/base/page_sink.h"
#include "mail/base/sink.h"
#include "support/support.h"

namespace attalven {

namespace {

string_view valueOf(string_view line) {
    string_view value = valueAfter(line, '=').value_or(string_view());
    while (!value.empty() && isLineBreak(value.back())) value.remove_suffix(1);
    return value;
}

}  // namespace

string_view firstLine(string_view text) {
    return {text.data(), std::find_if(text.begin(), text.end(), isLineBreak)};
}

const Setting* storeSetting(Settings settings, string_view line, void* record) {
    const Setting* setting = findKeyword(settings, line);
    if (!setting) return nullptr;
    FieldRef to = setting->field(record);
    if (to.number)
        *to.number = decimal(valueOf(line));
    else
        cutCopy(to.text, valueOf(line));
    return setting;
}

void readSettings(Settings settings, FILE* stream, size_t lineLimit, void* record) {
    LineReader lines(stream, lineLimit);
    for (LinePiece line; lines.next(line);) storeSetting(settings, line.text, record);
}

void writeSettings(Settings settings, const void* record, Text& out) {
    for (const Setting& setting : settings) {
        if (setting.use == Use::kReadOnly) continue;
        FieldRef from = setting.field(const_cast<void*>(record));
        out.append(setting.key);
        out.append(" = ");
        if (from.number)
            out.appendFormat("%d", *from.number);
        else
            out.append(firstLine({from.text.data(), strnlen(from.text.data(), from.text.size())}));
        out.append('\n');
    }
}

bool isMissing(const char* path) {
    struct stat st;
    return stat(path, &st) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

Replaced replaceSettings(const char* path, const Text& content) {
    return content.failed() ? Replaced::kNotWritten : replaceFile(path, content.view());
}

OwnedText readText(const char* path) {
    constexpr size_t block = 16 * 1024;
    Text text;
    if (OwnedFile file = openRegular(path)) {
        for (size_t n = block; n == block; text.commit(n)) {
            char* room = text.room(block);
            if (!room) break;
            n = fread(room, 1, block, file.get());
        }
    }
    return OwnedText(text.take());
}

void failToOpen(string_view path) {
    Text page;
    appendMarkupSafe(page, path);
    cgiMimeHeader("text/html");
    printf("%s file open error!!!", page.failed() ? "" : page.c_str());
    exit(-1);
}

}  // namespace attalven
