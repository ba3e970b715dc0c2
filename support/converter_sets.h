#ifndef ATTALVEN_SUPPORT_CONVERTER_SETS_H
#define ATTALVEN_SUPPORT_CONVERTER_SETS_H

// The character sets that the converter knows more about than their name.

#include <cstdint>
#include <string_view>

namespace attalven::converter {

/// How a set's bytes relate to ASCII.
enum class Shape : uint8_t {
    other,      // nothing is known: the C library alone converts
    stateless,  // a byte below 0x80 that starts a character is ASCII
    shifting,   // ISO-2022-JP: ASCII in the initial state, escape sequences leave it
    hz,         // ASCII with "~{" and "~}" around GB2312 (RFC 1843)
};

/// Which characters of a source the strict table must not be left to read alone.
enum class Screen : uint8_t { none, korean, japanese, shiftJis, big5 };

/// Names of the C library. The wide tables, where there are any, read and write what the strict
/// ones refuse.
struct Charset {
    const char *read = nullptr, *write = nullptr, *wideRead = nullptr, *wideWrite = nullptr;
    Shape shape = Shape::other;
    Screen screen = Screen::none;
    uint8_t wideLead = 0;  // when not 0: the only lead byte that the wide table may write
};

/// The set of that name, case ignored; NULL for a name that is left to the C library.
const Charset* findCharset(std::string_view name);
/// 1 to 64 letters, digits and "._:+-": other names carry options or are no names at all.
bool isCharsetName(std::string_view name);

}  // namespace attalven::converter

#endif
