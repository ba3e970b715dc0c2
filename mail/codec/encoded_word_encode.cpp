// Encoded words for outgoing headers (RFC 2047). The only state is `x_pos`, the characters on the
// current line of Q words, which by contract lives on between calls. A label from a form is cut and
// stripped, so that it can neither break its word nor the line.

#include "base64.h"
#include "charset_table.h"
#include "mail/base/bounded_text.h"
#include "mail/base/text.h"
#include "mail/codec.h"
#include "quoted_printable.h"

namespace attalven {
namespace {

int x_pos = 0;  // characters on the line of mailEncodeSubjectQP

/// "=?label?Q?" of a set's name, and what closes one word and opens the next on a new line.
struct WordFrame {
    BoundedText<100> label;
    BoundedText<120> open, fold;

    WordFrame(string_view charset, char letter);
};

WordFrame::WordFrame(string_view charset, char letter) {
    if (findNoCase(charset, "-utf-") != string_view::npos) charset = tail(charset, kLanguagePrefix);
    for (char c : charset)
        if (c > ' ' && c < 0x7F && c != '?') label.append(toLower(c));
    open.append("=?");
    open.append(label.view());
    open.append('?');
    open.append(letter);
    open.append('?');
    fold.append("?=\n\t");
    fold.append(open.view());
}

constexpr size_t kBytesOfWord = 42;  // 56 characters of base64

OwnedText base64Words(string_view text, string_view charset) {
    if (text.empty()) return nullptr;
    WordFrame frame(charset, 'B');
    Text out;
    Base64Encoder encoder{0};
    out.append(frame.open.view());
    for (;;) {
        string_view bytes = head(text, kBytesOfWord);
        char* area = out.room(base64Room(encoder, bytes.size()));
        if (!area) return nullptr;
        out.commit(base64Encode(encoder, bytes, area));
        text = tail(text, kBytesOfWord);
        if (text.empty()) break;
        out.append(frame.fold.view());
    }
    out.append("?=");
    return OwnedText(out.take());
}

OwnedText quotedWords(string_view text, string_view charset, int& position) {
    if (text.empty()) return nullptr;
    WordFrame frame(charset, 'Q');
    QpFolding folding{kQpWord, 55, 55, frame.fold.view()};
    Text out;
    out.append(frame.open.view());
    constexpr size_t slice = 1024;
    for (size_t taken = 0; !text.empty(); text = tail(text, taken)) {
        taken = std::min(text.size(), slice);
        char* area = out.room(qpRoom(folding, taken));
        if (!area) return nullptr;
        out.commit(qpEncode(folding, position, text, taken, area));
    }
    out.append("?=");
    return OwnedText(out.take());
}

/// Header encoding codes of the composer and the preferences.
enum HeaderEncoding { kQuoted = 2, kBase64 = 3 };

OwnedText words(string_view text, string_view charset, int code) {
    if (code == kQuoted) return quotedWords(text, charset, x_pos);
    if (code == kBase64) return base64Words(text, charset);
    return copyText(text);
}

}  // namespace
}  // namespace attalven

using namespace attalven;

char* mailEncodeSubject(const char* text, const char* charset, int code) {
    if (!text) return nullptr;
    if (viewOf(charset).empty()) return copyText(text).release();
    OwnedText converted(mailEncodeCharSet(text, charset));
    if (converted) return words(converted.get(), charset, code).release();
    return words(text, pageCharset(charset), code).release();
}

char* mailEncodeSubjectQP(const char* text, const char* charset) {
    return quotedWords(viewOf(text), viewOf(charset), x_pos).release();
}

char* mailEncodeSubjectBase64(const char* text, const char* charset) {
    return base64Words(viewOf(text), viewOf(charset)).release();
}
