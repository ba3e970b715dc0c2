#ifndef ATTALVEN_MAIL_CODEC_QUOTED_PRINTABLE_H
#define ATTALVEN_MAIL_CODEC_QUOTED_PRINTABLE_H

// The quoted-printable kernel (RFC 2045 section 6.7): one encoder, which also writes the Q words of
// headers (RFC 2047 section 4.2), and one decoder. Steps read and write nothing but the bytes named
// here, so they work on exact-size areas; decoding works in place.

#include <array>

#include "../base/ascii.h"

namespace attalven {

/// How the encoder treats a byte.
enum class QpClass : uint8_t { kEscape, kLow, kHigh, kBlank, kLineFeed, kReturn };
using QpClasses = std::array<QpClass, 256>;

/// kLow is 33 to 60, kHigh 72 to 126: both literal. What lies between is escaped.
constexpr QpClasses qpBodyClasses() {
    QpClasses classes{};
    for (size_t c = 33; c <= 60; c++) classes[c] = QpClass::kLow;
    for (size_t c = 72; c <= 126; c++) classes[c] = QpClass::kHigh;
    classes[' '] = classes['\t'] = QpClass::kBlank;
    classes['\n'] = QpClass::kLineFeed;
    classes['\r'] = QpClass::kReturn;
    return classes;
}

/// In a header word blanks are escaped too, and "_", which would stand for one.
constexpr QpClasses qpWordClasses() {
    QpClasses classes = qpBodyClasses();
    classes[' '] = classes['\t'] = classes['_'] = QpClass::kEscape;
    return classes;
}

inline constexpr QpClasses kQpBody = qpBodyClasses(), kQpWord = qpWordClasses();

/// Where lines are folded: before a byte when more characters than this stand on the line.
struct QpFolding {
    const QpClasses& classes;
    int lowLimit;         // before a byte of kLow
    int limit;            // before any other, line ends included; at most lowLimit
    string_view fold;     // what is written then; it does not count as characters of the next line
    bool vector = false;  // runs of literal bytes are found 16 at a time; for kQpBody alone
};

inline constexpr QpFolding kQpStreamFolding{kQpBody, 75, 57, "=\n", true};
inline constexpr QpFolding kQpTextFolding{kQpBody, 55, 55, "=\n", true};

/// Encodes the first `take` bytes of `text`; what follows them only tells whether a blank ends a
/// line, which the end of `text` does too. `position` counts the characters on the line. Gives the
/// bytes written to `out`, which has room for qpRoom().
size_t qpEncode(const QpFolding& folding, int& position, string_view text, size_t take, char* out);

/// Three bytes for each, a fold whenever they can have filled a line (and one for a position
/// carried over), and the byte behind the last escape, which is touched.
constexpr size_t qpRoom(const QpFolding& folding, size_t bytes) {
    size_t bytesOfLine = static_cast<size_t>(folding.limit) / 3 + 1;
    return 3 * bytes + (bytes / bytesOfLine + 2) * folding.fold.size() + 1;
}

/// What "=" before CR or LF does.
enum class QpSoftBreak { kEndsText, kEndsLine, kSkipsBoth };

/// The decoder: an escape that a step's text does not hold in full waits for the next one.
struct QpDecoder {
    QpSoftBreak softBreak;
    bool dropNuls = false;  // escapes of a NUL byte are left out
    bool vector = true;     // plain text is copied 16 bytes at a time
    char held[3] = {};
    size_t heldSize = 0;
};

/// Decodes `text` into `out`, room text.size() + 2. Gives the number of bytes.
size_t qpDecode(QpDecoder& d, string_view text, char* out);

/// At the end of the text: the start of an escape stands for itself. Room 2.
size_t qpDecodeEnd(QpDecoder& d, char* out);

}  // namespace attalven

#endif
