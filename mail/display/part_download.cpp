// Downloads: complete CGI responses on standard output, contents streamed from the open message
// by the stream codecs, so that a part of any size needs constant memory. Header lines never carry
// a control byte of a mail's text, which could start a header line or the body early.

#include <cstring>

#include "mail/base/line_reader.h"
#include "mail/codec.h"
#include "mail/display.h"
#include "message_questions.h"
#include "page_links.h"
#include "support/support.h"

namespace attalven {

namespace {

constexpr size_t kHeaderLineLimit = 1000;
constexpr size_t kMaxMediaType = 100;

using StreamDecoder = void (*)(FILE* out, FILE* in, int length);

StreamDecoder decoderOf(int code) {
    switch (code) {
        case kQuotedPrintable:
            return strmDecodeQP;
        case kBase64:
            return strmDecodeBase64;
        case kUuencoded:
            return strmDecodeUU;
        default:
            return strmXBit;
    }
}

/// MSIE before 5.01 takes a Content-disposition line for the name of the page.
bool browserTakesFileName() {
    CgiEnv env = {};
    cgiGetEnv(&env);
    return !env.userAgent || !strCaseStr(env.userAgent, "MSIE") || !(cgiGetMSIEVer() < 5.01f);
}

void printDownloadHeader(string_view fileName, bool withName) {
    Text header;
    header.append("Content-Type: application/octet-stream\n");
    if (withName) {
        header.append("Content-disposition: form-data; name=\"filename\"; filename=");
        appendWithoutControls(header, fileName);
        header.append('\n');
    }
    header.append('\n');
    printText(header);
}

}  // namespace
}  // namespace attalven

using namespace attalven;

void mailDecodeAttachFile(MailBody* part, FILE* in, FILE* out) {
    if (!part || !in || !out || part->bodySize <= 0) return;
    if (fseeko(in, part->bodyOffset, SEEK_SET) != 0) return;
    decoderOf(part->encoding)(out, in, part->bodySize);
}

void mailSaveAttachFile(MailInfo* msg, long, const char* fileName, long, FILE* fp) {
    if (!msg || !fileName || !fp) return;
    bool withName = browserTakesFileName();
    for (MailBody& part : LeafParts(msg->body)) {
        if (!part.fileName || strcmp(part.fileName, fileName) != 0) continue;
        printDownloadHeader(part.fileName, withName);
        mailDecodeAttachFile(&part, fp, stdout);
    }
}

void mailViewCIDFile(MailInfo* msg, long, long, const char* contentId, long, FILE* fp) {
    if (!msg || !contentId || !fp) return;
    for (MailBody& part : LeafParts(msg->body)) {
        if (!part.contentId || strcmp(part.contentId, contentId) != 0) continue;
        Text type;
        appendWithoutControls(type, mediaTypeText(part).view());
        type.truncate(kMaxMediaType);
        cgiMimeHeader(type.c_str());
        mailDecodeAttachFile(&part, fp, stdout);
    }
}

void mailSaveMailBody(MailInfo* msg, long, FILE* fp) {
    if (!msg || !fp) return;
    cgiMimeHeader("application/octet-stream");
    for (MailBody& part : LeafParts(msg->body)) {
        if (part.type != kText) continue;
        OwnedText text(mailDecode(&part, 1, nullptr, fp));
        if (text) fputs(text.get(), stdout);
        return;
    }
}

void mailViewRFC822(MailInfo* msg, int mode, long, FILE* fp) {
    if (!msg || !fp || fseeko(fp, msg->offset, SEEK_SET) != 0) return;
    if (mode == 1) return strmXBit(stdout, fp, msg->size);
    LineReader lines(fp, kHeaderLineLimit);
    LinePiece piece;
    while (lines.next(piece) && !(piece.startsLine && isEmptyLine(piece.text)))
        fwrite(piece.text.data(), 1, piece.text.size(), stdout);
}
