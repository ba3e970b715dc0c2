// One text part of a message as text: read, transfer-decoded, converted to the page character set
// and prepared for an HTML page. One working text passes through the steps, each of which replaces
// it or leaves it; the earlier text is released before the next step needs memory, so that a large
// body fits under a CGI process's data limit. Survives parts that claim to lie beyond the end of
// the file, unknown character sets and bodies made of nothing but references to inline parts.

#include <cstring>

#include "mail/codec.h"
#include "mail/display.h"
#include "mail/parse/record.h"
#include "support/support.h"

namespace attalven {

namespace {

constexpr int kPageMode = 2;

/// What "cid:" references may add to a text: a body that repeats the four bytes grows by the length
/// of the prefix each time.
constexpr size_t kMaxReferenceBytes = size_t{64} << 20;

/// The next working text, when a step gave one.
bool replaceText(OwnedText& text, char* fresh) {
    if (fresh) text.reset(fresh);
    return fresh != nullptr;
}

OwnedText readBody(const MailBody& part, FILE* fp) {
    if (part.bodySize <= 0 || part.bodyOffset < 0 || fseeko(fp, 0, SEEK_END) != 0) return nullptr;
    int64_t left = ftello(fp) - part.bodyOffset;
    if (left <= 0 || fseeko(fp, part.bodyOffset, SEEK_SET) != 0) return nullptr;
    return OwnedText(fileStrmGetStr(static_cast<int>(std::min<int64_t>(part.bodySize, left)), fp));
}

/// NULL also for an encoded body that decodes to nothing.
OwnedText decodeTransfer(OwnedText raw, int code) {
    if (!raw || (code != kBase64 && code != kQuotedPrintable)) return raw;
    OwnedText text(code == kBase64 ? mailDecodeBase64(raw.get()) : mailDecodeQP(raw.get()));
    return text && *text ? std::move(text) : nullptr;
}

void replaceToken(OwnedText& text, const char* token, const char* by) {
    if (strstr(text.get(), token)) replaceText(text, strConvTokenStr(text.get(), token, by));
}

/// A page has its own META tags; those of a body would name the character set that the body had.
void toPageCharSet(OwnedText& text, const char* charSet) {
    if (!viewOf(charSet).empty()) {
        if (replaceText(text, mailDecodeCharSet(text.get(), charSet)))
            replaceToken(text, "<META", "<!-META");
    } else if (SearchISO2022KRDesignator(text.get())) {
        replaceText(text, mailDecodeCharSet(text.get(), "ISO-2022-KR"));
    } else if (SearchISO2022JPDesignator(text.get())) {
        replaceText(text, mailDecodeCharSet(text.get(), "ISO-2022-JP"));
    }
}

/// Points the references to inline parts at the download page. A BASE tag of the body would bend
/// the page's own links.
void linkInlineParts(OwnedText& text, const char* cidPrefix) {
    constexpr string_view kReference = "cid:";
    string_view body = text.get();
    size_t room = kMaxReferenceBytes, length = strlen(cidPrefix);
    for (size_t at = 0; (at = body.find(kReference, at)) != string_view::npos;
         at += kReference.size()) {
        if (room < length) return;
        room -= length;
    }
    if (replaceText(text, strConvTokenStr(text.get(), kReference.data(), cidPrefix)))
        replaceToken(text, "<BASE", "<!-BASE");
}

void toPageText(OwnedText& text, string_view subType, const char* cidPrefix) {
    if (cidPrefix && strstr(text.get(), "cid:")) return linkInlineParts(text, cidPrefix);
    bool escaped = equalNoCase(subType, "plain") || equalNoCase(subType, "enriched");
    if (!escaped && !equalNoCase(subType, "html")) return;
    if (replaceText(text, strToHyperLink(text.get())) && escaped)
        replaceText(text, strConvHTMLStr(text.get(), "\n"));
}

}  // namespace
}  // namespace attalven

using namespace attalven;

char* mailDecode(MailBody* part, int mode, const char* cidPrefix, FILE* fp) {
    if (!part || !fp) return nullptr;
    OwnedText text = decodeTransfer(readBody(*part, fp), part->encoding);
    if (!text) return nullptr;
    toPageCharSet(text, part->charSet);
    if (mode == kPageMode) toPageText(text, viewOf(part->subType), cidPrefix);
    return text.release();
}
