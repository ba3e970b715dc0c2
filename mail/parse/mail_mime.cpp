// MIME structure (RFC 2046 section 5.1). One pass over the file: the search for delimiters runs
// over whole blocks, lines are only cut where a part header or a delimiter stands. Every node
// records where its bytes lie; nothing is copied or decoded.
//
// Crafted mail has multiparts nested by the ten thousand, millions of parts, headers that would
// read on into the next message: nesting and parts are bounded, part headers end with the region,
// and no level of recursion holds a buffer.

#include "mail_mime.h"

#include "header_lines.h"
#include "mail/base/keyword.h"
#include "mail_mime_field.h"

namespace attalven {
namespace {

constexpr int kMaxParts = 10'000;

struct PartField {
    string_view key;
    void (*read)(MailBody&, string_view header, string_view value);
};
constexpr PartField kPartFields[] = {
    {"content-type", [](MailBody& part, string_view header,
                        string_view value) { readContentType(header, value, part); }},
    {"content-transfer-encoding",
     [](MailBody& part, string_view, string_view value) { part.encoding = encodingOf(value); }},
    {"content-disposition",
     [](MailBody& part, string_view header, string_view value) {
         part.isAttachment = startsWithNoCase(value, "attachment");
         readFileName(header, part);
     }},
    {"content-description",
     [](MailBody& part, string_view, string_view value) {
         if (!part.description) setText(part.description, value);
     }},
    {"content-id", [](MailBody& part, string_view,
                      string_view value) { setText(part.contentId, betweenBrackets(value)); }},
    {"content-location",
     [](MailBody& part, string_view, string_view value) { setText(part.location, value); }},
};

/// What stands behind "--" and the boundary decides whether a delimiter closes.
bool isClosing(string_view line, string_view delimiter) {
    return trimTail(tail(line, delimiter.size())) == "--";
}

/// Reads the parts of one message up to `end`.
class Structure {
  public:
    Structure(const MailInfo* msg, FILE* fp)
        : reader_(fp, kScanLineLimit),
          isDigest_(msg && msg->body && hasSubType(*msg->body, "digest")) {}

    LineReader& reader() { return reader_; }
    void endAfter(int64_t size) { end_ = reader_.position() + size; }

    OwnedBody readParts(const char* boundary, int levels = kMaxNesting);
    OwnedBody readPartHeader();

  private:
    bool readFields(MailBody& part);

    LineReader reader_;
    int64_t end_ = INT64_MAX;
    int count_ = 0;
    bool isDigest_;
};

/// The parts up to the closing delimiter. A delimiter is any line that starts with "--" and the
/// boundary; one that would open a part too many is content of the last.
OwnedBody Structure::readParts(const char* boundary, int levels) {
    string_view name = viewOf(boundary);
    if (!boundary || levels == 0 || name.size() + 2 >= kScanLineLimit ||
        name.find('\n') != string_view::npos)
        return nullptr;
    Text delimiter;
    delimiter.append("--");
    delimiter.append(name);
    if (delimiter.failed()) return nullptr;
    Chain<MailBody, mailFreeBody> parts;
    MailBody* open = nullptr;
    auto closeAt = [&open](int64_t at) {
        if (open) open->bodySize = clampInt(at - open->bodyOffset);
    };
    for (LinePiece line; reader_.skipToLine(delimiter.view(), end_) && reader_.next(line);) {
        bool closes = isClosing(line.text, delimiter.view());
        if (!closes && count_ == kMaxParts) continue;
        closeAt(line.offset);
        if (closes) return OwnedBody(parts.take());
        OwnedBody part = readPartHeader();
        if (!part) break;
        open = parts.append(std::move(part));
        if (open->type == kMultipart)
            open->child = readParts(mailGetParam("boundary", open->params), levels - 1).release();
    }
    closeAt(reader_.position());
    return OwnedBody(parts.take());
}

OwnedBody Structure::readPartHeader() {
    OwnedBody part(mailNewBody());
    if (!part) return nullptr;
    count_++;
    part->offset = clampInt(reader_.position());
    part->type = kText;
    reader_.setLimit(kPartHeaderLineLimit);
    bool hasFields = readFields(*part);
    reader_.setLimit(kScanLineLimit);
    part->bodyOffset = clampInt(reader_.position());
    if (!hasFields && isDigest_) {
        part->type = kMessage;
        setText(part->subType, "rfc822");
    } else if (part->type == kText && !part->subType) {
        setText(part->subType, "plain");
    }
    return part;
}

/// Reads the header block; false when its place is taken by an empty line.
bool Structure::readFields(MailBody& part) {
    StreamLines lines{reader_, end_};
    LinePiece first;
    if (!lines.next(first)) return true;
    if (trim(first.text).empty()) return false;
    reader_.putBack(first);
    unfoldHeaders(lines, [&part](string_view header) {
        std::optional<string_view> value = headerValue(header);
        if (!value) return false;
        if (const PartField* row = findKeyword<PartField>(kPartFields, header))
            row->read(part, header, *value);
        return true;
    });
    return true;
}

}  // namespace
}  // namespace attalven

using namespace attalven;

int mailParseBody(MailInfo* msg, FILE* fp) {
    if (!msg || !fp) return 0;
    MailBody* root = msg->body;
    if (!root) return 1;
    mailFreeBody(&root->child);
    Structure structure(msg, fp);
    structure.reader().seek(msg->bodyOffset);
    if (root->type == kMultipart) {
        structure.endAfter(msg->bodySize);
        root->child = structure.readParts(mailGetParam("boundary", root->params)).release();
    } else {
        root->child = splitUuencoded(*msg, structure.reader()).release();
    }
    return 1;
}

MailBody* mailParseMultipart(MailInfo* msg, FILE* fp, const char* boundary, int remaining) {
    if (!fp) return nullptr;
    Structure structure(msg, fp);
    structure.endAfter(remaining);
    return structure.readParts(boundary).release();
}

MailBody* mailReadMimeHeader(MailInfo* msg, FILE* fp) {
    return fp ? Structure(msg, fp).readPartHeader().release() : nullptr;
}

MailBody* mailParseSinglepart(MailInfo* msg, FILE* fp) {
    if (!msg || !msg->body || !fp) return nullptr;
    LineReader reader(fp, kScanLineLimit);
    return splitUuencoded(*msg, reader).release();
}
