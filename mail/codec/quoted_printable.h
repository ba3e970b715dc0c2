#ifndef ATTALVEN_MAIL_CODEC_QUOTED_PRINTABLE_H
#define ATTALVEN_MAIL_CODEC_QUOTED_PRINTABLE_H

// The quoted-printable kernel (RFC 2045 section 6.7): one encoder, which also writes the Q words of
// headers (RFC 2047 section 4.2), and one decoder.

#include <array>

#include "mail/base/ascii.h"
#include "mail/base/vector.h"

namespace attalven {

/// What the encoder writes for a byte: itself or "=XX". Size 0: CR and LF, which are no text.
struct QpToken {
    char bytes[3];
    uint8_t size;  // one store writes a token with its size behind it
};
using QpTokens = std::array<QpToken, 256>;

/// 33 to 60, 72 to 126 and blanks are literal; what lies between is escaped. In a header word
/// blanks are escaped too, and "_", which would stand for one.
consteval QpTokens qpTokens(bool word) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    QpTokens tokens{};
    for (size_t i = 0; i < tokens.size(); i++) {
        char c = static_cast<char>(i);
        bool blank = c == ' ' || c == '\t';
        bool literal = (i >= 33 && i <= 60) || (i >= 72 && i <= 126);
        if (word ? literal && c != '_' : literal || blank)
            tokens[i] = {{c}, 1};
        else if (c != '\n' && c != '\r')
            tokens[i] = {{'=', kDigits[i >> 4], kDigits[i & 15]}, 3};
    }
    return tokens;
}

inline constexpr QpTokens kQpBody = qpTokens(false), kQpWord = qpTokens(true);

/// Where lines are folded: before a byte when more characters than this stand on the line.
struct QpFolding {
    const QpTokens& tokens;
    int lowLimit;      // before a byte of 33 to 60
    int limit;         // before any other, line ends included; at most lowLimit
    string_view fold;  // what is written then; it does not count as characters of the next line
    bool vector = &tokens == &kQpBody && hasVector();
};

/// EncodeQP and the stream forms; mailEncodeQP.
inline QpFolding qpStreamFolding() {
    return {kQpBody, 75, 57, "=\n"};
}
inline QpFolding qpTextFolding() {
    return {kQpBody, 55, 55, "=\n"};
}

/// Encodes the first `take` bytes of `text`; what follows them only tells whether a blank ends a
/// line, which the end of `text` does too. `position` counts the characters on the line. Gives the
/// bytes written to `out`, which has room for qpRoom().
size_t qpEncode(const QpFolding& folding, int& position, string_view text, size_t take, char* out);

/// Three bytes for each, a fold whenever they can have filled a line (and one for a position
/// carried over), a soft break behind a last blank, and three bytes behind the text, which are
/// touched.
constexpr size_t qpRoom(const QpFolding& folding, size_t bytes) {
    size_t bytesOfLine = static_cast<size_t>(folding.limit) / 3 + 1;
    return 3 * bytes + (bytes / bytesOfLine + 2) * folding.fold.size() + 64;
}

/// What "=" before CR or LF does.
enum class QpSoftBreak { kEndsText, kEndsLine, kSkipsBoth };

/// The decoder: an escape that a step's text does not hold in full waits for the next one.
struct QpDecoder {
    QpSoftBreak softBreak;
    bool vector = hasVector();
    char held[3] = {};
    size_t heldSize = 0;
};

/// Decodes `text` into `out`, room text.size() + 2; `out` may be the text. Gives the number of
/// bytes.
size_t qpDecode(QpDecoder& d, string_view text, char* out);

/// At the end of the text: the start of an escape stands for itself. Room 2.
size_t qpDecodeEnd(QpDecoder& d, char* out);

}  // namespace attalven

#endif
