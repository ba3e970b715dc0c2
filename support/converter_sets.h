#ifndef ATTALVEN_SUPPORT_CONVERTER_SETS_H
#define ATTALVEN_SUPPORT_CONVERTER_SETS_H

// The character sets that the converter knows more about than their name.

#include <cstdint>
#include <string_view>

namespace attalven::converter {

/// How a set's bytes relate to ASCII.
enum class Shape : uint8_t {
    kOther,      // nothing is known: the C library alone converts
    kStateless,  // a byte below 0x80 that starts a character is ASCII
    kShifting,   // ISO-2022-JP: ASCII in the initial state, escape sequences leave it
    kHz,         // ASCII with "~{" and "~}" around GB2312 (RFC 1843)
};

/// Which characters of a source the strict table must not be left to read alone.
enum class Screen : uint8_t { kNone, kKorean, kJapanese, kShiftJis, kBig5 };

/// Names of the C library. The wide tables, where there are any, read and write what the strict
/// ones refuse.
struct Charset {
    const char *read = nullptr, *write = nullptr, *wideRead = nullptr, *wideWrite = nullptr;
    Shape shape = Shape::kOther;
    Screen screen = Screen::kNone;
    uint8_t wideLead = 0;  // when not 0: the only lead byte that the wide table may write
};

/// The set of that name, case ignored; NULL for a name that is left to the C library.
const Charset* findCharset(std::string_view name);

}  // namespace attalven::converter

#endif
