// A text body with a uuencoded file in it: the text before the file and the file become two parts.
// The name on the begin line may be anything; it is copied at its own length and is not trusted
// here.

#include "mail_mime.h"

namespace attalven {
namespace {

constexpr string_view kBegin = "begin ", kEnd = "end";

bool isBegin(const LinePiece& line) {
    return line.startsLine && line.text.starts_with(kBegin);
}

/// Whether a digit, the first of the file mode, stands where a begin line has it.
bool hasMode(string_view line) {
    return line.size() > kBegin.size() && isDigit(line[kBegin.size()]);
}

/// The file name of a begin line, empty when the mode is not octal or no name follows.
///   begin-line = "begin" SP 1*OCTAL WSP file-name
string_view nameOf(string_view line) {
    line = tail(line, kBegin.size());
    size_t digits = std::min(line.find_first_not_of("01234567"), line.size());
    if (digits == 0) return {};
    string_view name = trimHead(tail(line, digits));
    auto end = std::find_if(name.begin(), name.end(), isSpace);
    return head(name, static_cast<size_t>(end - name.begin()));
}

/// The text before the block; it takes the root's place as first child.
OwnedBody textBefore(const MailInfo& msg, int64_t size) {
    OwnedBody text(mailNewBody());
    if (!text) return nullptr;
    text->offset = msg.offset;
    text->bodyOffset = msg.bodyOffset;
    text->bodySize = clampInt(size);
    text->type = msg.body->type;
    if (msg.body->subType) setText(text->subType, msg.body->subType);
    return text;
}

OwnedBody fileNode(const LinePiece& begin) {
    OwnedBody file(mailNewBody());
    if (!file) return nullptr;
    file->offset = clampInt(begin.offset);
    file->bodyOffset = clampInt(begin.offset + static_cast<int64_t>(begin.text.size()));
    file->encoding = kUuencoded;
    if (string_view name = nameOf(begin.text); !name.empty()) setText(file->fileName, name);
    const char* mediaType = mimeGetType(file->fileName);
    file->type = mimeGetMajorType(mediaType);
    setText(file->subType, mimeGetSubType(mediaType));
    return file;
}

/// Reads the block behind its begin line. The file ends at the last end line, or where a second
/// block begins; a line that runs past the end of the body counts as a begin line.
void measure(MailBody& file, LineReader& reader, int64_t end) {
    LinePiece line;
    while (reader.position() < end && reader.next(line)) {
        int size = clampInt(line.offset - file.bodyOffset);
        if (isBegin(line) || reader.position() > end) {
            if (hasMode(line.text)) file.bodySize = size;
            return;
        }
        if (line.startsLine && line.text.starts_with(kEnd)) file.bodySize = size;
    }
}

}  // namespace

OwnedBody splitUuencoded(MailInfo& msg, LineReader& reader) {
    MailBody& root = *msg.body;
    root.offset = msg.offset;
    root.bodyOffset = msg.bodyOffset;
    root.bodySize = msg.bodySize;
    int64_t start = reader.position(), end = start + msg.bodySize;
    LinePiece begin;
    if (!reader.skipToLine(kBegin, end) || !reader.next(begin) || !hasMode(begin.text))
        return nullptr;
    OwnedBody text = textBefore(msg, begin.offset - start);
    OwnedBody file = fileNode(begin);
    if (!text || !file) return nullptr;
    measure(*file, reader, end);
    root.type = kMultipart;
    text->next = file.release();
    return text;
}

}  // namespace attalven
