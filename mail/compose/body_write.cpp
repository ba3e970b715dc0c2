// The body of a composed message: texts out of memory, attachments and forwarded messages streamed
// from their files. Survives files that are missing, are no files or shrink while they are read
// (the part is then empty or short), and hostile names, which stay inside their parameter.

#include <limits.h>
#include <sys/stat.h>

#include "attachment_ref.h"
#include "boundary.h"
#include "mail/base/line_reader.h"
#include "mail/base/sink.h"
#include "mail/base/text.h"
#include "mail/codec.h"
#include "mail/compose.h"
#include "text_part.h"

namespace attalven {

namespace {

constexpr size_t kNameMax = 255, kEncodedNameMax = 767;
constexpr size_t kFromLineLimit = 1000;  // bytes of a fgets buffer: at most 999 characters

/// What all parts of a message have in common.
struct PartWriter {
    int bodyEncoding, sendMode;
    const char* charset;
    OutStream out;

    void list(MailBody* first, const Boundaries& boundaries);

  private:
    void alternatives(MailBody* children, const Boundaries& boundaries);
    void part(MailBody& node);
    void text(MailBody& node);
    void attachment(const MailBody& node);
    void forwarded(const MailBody& node);
    OwnedText attachmentName(string_view fileName) const;
};

bool isAlternative(const MailBody& node) {
    return node.child && node.type == kMultipart &&
           equalNoCase(viewOf(node.subType), "alternative");
}

void PartWriter::list(MailBody* first, const Boundaries& boundaries) {
    auto delimiter = [&](string_view end) {
        out.append("--");
        appendPlainParameter(out, boundaries.text);
        out.append(end);
    };
    for (MailBody* node = first; node; node = node->next) {
        delimiter("\n");
        if (isAlternative(*node) && boundaries.depth < kMaxNesting)
            alternatives(node->child, boundaries);
        else
            part(*node);
    }
    delimiter("--\n");
}

void PartWriter::alternatives(MailBody* children, const Boundaries& boundaries) {
    Text boundary = newBoundary(children, bodyEncoding, &boundaries);
    out.append("Content-Type: multipart/alternative;\n\tboundary=\"");
    out.append(boundary.view());
    out.append("\"\n\n\n");
    list(children, {boundary.view(), &boundaries, boundaries.depth + 1});
    out.append("\n");
}

void PartWriter::part(MailBody& node) {
    writeContentType(out, node);
    if (isTextInMemory(node))
        text(node);
    else if (node.type == kMessage)
        forwarded(node);
    else
        attachment(node);
    out.append("\n\n");
}

void PartWriter::text(MailBody& node) {
    if (OwnedText converted{mailEncodeCharSet(node.content, charset)}) {
        free(node.content);
        node.content = converted.release();
    }
    // The label of "kor-utf-8" is "utf-8": the prefix only tells the page character set.
    string_view label = viewOf(charset);
    if (findNoCase(label, "-utf-8") != string_view::npos) label = tail(label, 4);
    out.append(";\n\tcharset=\"");
    appendPlainParameter(out, label);
    out.append("\"\n");
    string_view name = transferName(isSealed(sendMode) ? kBase64 : bodyEncoding, viewOf(charset));
    if (name.empty()) return;
    out.append("Content-Transfer-Encoding: ");
    out.append(name);
    out.append("\n\n");
    if (!isSealed(sendMode)) writeText(out, node.content, bodyEncoding);
}

/// The name parameter's inside: the last component, the whole text when that is empty. Too long a
/// name is left out: a name cut inside an encoded word would be noise.
OwnedText PartWriter::attachmentName(string_view fileName) const {
    string_view last = lastComponent(fileName);
    OwnedText bare = copyText(last.empty() ? fileName : last);
    if (!bare || viewOf(bare.get()).size() > kNameMax) return nullptr;
    OwnedText name = headerName(bare.get(), charset);
    return viewOf(name.get()).size() > kEncodedNameMax ? nullptr : std::move(name);
}

void PartWriter::attachment(const MailBody& node) {
    OwnedText name = attachmentName(viewOf(node.fileName));
    out.append(";\n\tname=\"");
    out.append(viewOf(name.get()));
    out.append("\"\nContent-Transfer-Encoding: base64\n");
    if (node.contentId) {
        out.append("Content-ID: <");
        appendOneLine(out, node.contentId);
        out.append(">\n\n");
    } else {
        out.append("Content-Disposition: attachment;\n\tfilename=\"");
        out.append(viewOf(name.get()));
        out.append("\"\n\n");
    }
    // A multipart node has its content in its children, which only alternatives may have.
    if (!node.fileName || node.type == kMultipart) return;
    if (OwnedFile file = openAttachment(node.fileName)) strmEncodeBase64(out.stream, file.get());
}

/// The stored message without its From_ line, which is no part of it.
void PartWriter::forwarded(const MailBody& node) {
    out.append("\nContent-Disposition: inline\nContent-Transfer-Encoding: 7bit\n\n");
    OwnedFile file = node.fileName ? openAttachment(node.fileName) : nullptr;
    struct stat st;
    if (!file || fstat(fileno(file.get()), &st) != 0) return;
    int64_t rest = st.st_size;
    {
        LineReader reader(file.get(), kFromLineLimit);
        LinePiece fromLine;
        if (reader.next(fromLine)) rest -= static_cast<int64_t>(fromLine.text.size());
    }
    for (; rest > 0; rest -= INT_MAX)
        strmXBit(out.stream, file.get(), static_cast<int>(std::min<int64_t>(rest, INT_MAX)));
}

}  // namespace

}  // namespace attalven

using namespace attalven;

void mailMimeBodyWrite(MailBody* first, const char* boundary, int, int bodyEncoding, int sendMode,
                       const char* charset, FILE* out) {
    if (!out) return;
    PartWriter{bodyEncoding, sendMode, charset, {out}}.list(first, {viewOf(boundary)});
}

void mailBodyWrite(MailBody* body, int, int bodyEncoding, int sendMode, const char*, FILE* stream) {
    if (!body || !stream || !isTextInMemory(*body)) return;
    OutStream out{stream};
    if (!isSealed(sendMode)) writeText(out, body->content, bodyEncoding);
    out.append("\n\n");
}
