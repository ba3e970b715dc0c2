// Encoded words in header values (RFC 2047). What a value carries from word to word: the character
// set of the last word, which converts the whole, and the transfer encoding in force, which a word
// with an unknown letter inherits. Any text is a value: words cut by its end keep the part being
// read, sets that nobody knows and bytes that do not convert leave the decoded bytes.

#include "encoded_word_decode.h"

#include <cstring>

#include "base64.h"
#include "mail/base/bounded_text.h"
#include "mail/codec.h"
#include "quoted_printable.h"

namespace attalven {
namespace {

class WordDecoder {
  public:
    void read(string_view value);
    OwnedText convert();

  private:
    enum class Transfer : uint8_t { kNone, kBase64, kQuotedPrintable };

    bool readWord(string_view& rest);
    bool readPart(string_view& rest, string_view end, string_view& part);
    void setTransfer(string_view letter);
    void appendBase64(string_view token);
    void appendQuotedPrintable(string_view token);
    OwnedText toPage();

    Text result_;
    BoundedText<100> charset_;  // of the last word
    Transfer transfer_ = Transfer::kNone;
};

/// Position of the "=?" that starts a word: something other than "=" follows it.
size_t findWord(string_view s) {
    for (size_t at = s.find("=?"); at != string_view::npos; at = s.find("=?", at + 1))
        if (at + 2 < s.size() && s[at + 2] != '=') return at;
    return string_view::npos;
}

void WordDecoder::read(string_view value) {
    for (size_t word; (word = findWord(value)) != string_view::npos;) {
        result_.append(head(value, word));
        value = tail(value, word + 2);
        if (!readWord(value)) return;
    }
    result_.append(value);
}

/// encoded-word = "=?" charset "?" encoding "?" encoded-text "?="; `rest` begins behind the "=?".
/// False when the value ends inside the word.
bool WordDecoder::readWord(string_view& rest) {
    string_view part;
    if (!readPart(rest, "?", part)) return false;
    charset_.assign(head(part, part.find('*')));  // a language may follow (RFC 2231 section 5)
    if (!readPart(rest, "?", part)) return false;
    setTransfer(part);
    if (!readPart(rest, "?=", part)) return false;
    if (transfer_ == Transfer::kBase64) {
        appendBase64(part);
    } else if (transfer_ == Transfer::kQuotedPrintable) {
        appendQuotedPrintable(part);
    } else {
        result_.append(part);
    }
    return true;
}

bool WordDecoder::readPart(string_view& rest, string_view end, string_view& part) {
    size_t at = rest.find(end);
    part = head(rest, at);
    rest = tail(rest, part.size() + end.size());
    if (at == string_view::npos) result_.append(part);
    return at != string_view::npos;
}

void WordDecoder::setTransfer(string_view letter) {
    if (equalNoCase(head(letter, 1), "b")) transfer_ = Transfer::kBase64;
    if (equalNoCase(head(letter, 1), "q")) transfer_ = Transfer::kQuotedPrintable;
}

// The result is a text: of a word that holds a NUL byte, what follows it is lost.

void WordDecoder::appendBase64(string_view token) {
    char* out = result_.room(base64DecodedRoom(token.size()));
    if (!out) return;
    Base64Decoder d;
    result_.commit(strnlen(out, base64Decode(d, token, out).written));
}

void WordDecoder::appendQuotedPrintable(string_view token) {
    char* out = result_.room(token.size() + 2);
    if (!out) return;
    std::replace_copy(token.begin(), token.end(), out, '_', ' ');
    QpDecoder d{QpSoftBreak::kEndsText};
    size_t size = qpDecode(d, string_view(out, token.size()), out);
    size += qpDecodeEnd(d, out + size);
    result_.commit(strnlen(out, size));
}

OwnedText WordDecoder::toPage() {
    const char* text = result_.c_str();
    if (!text) return nullptr;
    const char* charset = charset_.c_str();
    if (charset_.empty()) {
        if (SearchISO2022KRDesignator(text)) {
            charset = "ISO-2022-KR";
        } else if (SearchISO2022JPDesignator(text)) {
            charset = "ISO-2022-JP";
        } else {
            return nullptr;
        }
    }
    return OwnedText(mailDecodeCharSet(text, charset));
}

OwnedText WordDecoder::convert() {
    OwnedText page = toPage();
    return page ? std::move(page) : OwnedText(result_.take());
}

}  // namespace

bool isPlainValue(string_view value) {
    constexpr char kEscape = 0x1B;
    return value.find("=?") == string_view::npos && value.find(kEscape) == string_view::npos;
}

OwnedText decodeWords(string_view value) {
    value = head(value, value.find('\0'));
    if (value.empty()) return nullptr;
    if (isPlainValue(value)) return copyText(value);
    WordDecoder decoder;
    decoder.read(value);
    return decoder.convert();
}

}  // namespace attalven

char* mailDecodeSubject(const char* text) {
    return attalven::decodeWords(attalven::viewOf(text)).release();
}
