// Texts and names of parts. Names come from forms and from addresses that were decoded out of mail:
// they can hold line breaks, quotes and any byte.

#include "text_part.h"

#include <cstring>

#include "mail/base/sink.h"
#include "mail/base/text.h"
#include "mail/codec.h"
#include "support/support.h"

namespace attalven {

string_view transferName(int bodyEncoding, string_view charset) {
    switch (bodyEncoding) {
        case kRaw:
            return startsWithNoCase(charset, "iso-") ? "7bit" : "8bit";
        case kQuotedPrintable:
            return "quoted-printable";
        case kBase64:
            return "base64";
        default:
            return {};
    }
}

void writeText(OutStream out, const char* text, int bodyEncoding) {
    if (!text) return;
    if (bodyEncoding == kRaw) strmDestXBit(out.stream, text);
    if (bodyEncoding == kQuotedPrintable) strmDestEncodeQP(out.stream, text);
    if (bodyEncoding == kBase64) strmDestEncodeBase64(out.stream, text);
}

void writeField(OutStream out, string_view key, string_view value) {
    out.append(key);
    out.append(": ");
    appendHeaderFold(out, value);
    out.append("\n");
}

void writeContentType(OutStream out, const MailBody& node) {
    out.append("Content-Type: ");
    out.append(typeName(node.type));
    out.append("/");
    appendOneLine(out, viewOf(node.subType));
}

OwnedText headerName(const char* name, const char* charset) {
    Text line;
    appendOneLine(line, viewOf(name));
    const char* plain = line.c_str();
    OwnedText words(plain && strChkHan(plain) ? mailEncodeSubject(plain, charset, kBase64)
                                              : nullptr);
    Text quoted;
    appendQuoted(quoted, words ? viewOf(words.get()) : line.view());
    return OwnedText(line.failed() ? nullptr : quoted.take());
}

}  // namespace attalven
