#ifndef ATTALVEN_SUPPORT_HZ_SECTION_H
#define ATTALVEN_SUPPORT_HZ_SECTION_H

// HZ sections (RFC 1843) in page text: "~{", GB2312 characters as pairs of 7-bit bytes, "~}", on
// one line. Their bytes can be any ASCII ones, markup's included.

#include "mail/base/ascii.h"

namespace attalven {

/// First byte 0x21 to 0x77, second 0x21 to 0x7E. "~" and "{" cannot be first bytes, so that no
/// section contains the start of another: looking at every "~{" of a text takes linear time.
constexpr bool isHzPair(char first, char second) {
    return first >= 0x21 && first <= 0x77 && second >= 0x21 && second <= 0x7E;
}

/// Length of the section that starts at `at`, its shifts included; 0 if none does. A "~" behind a
/// byte of 0x80 or above can be the second half of another set's character.
constexpr size_t hzSectionLength(string_view s, size_t at) {
    string_view section = tail(s, at);
    if (!section.starts_with("~{") || (at > 0 && byteOf(s[at - 1]) >= 0x80)) return 0;
    size_t n = 2;
    while (n + 1 < section.size() && isHzPair(section[n], section[n + 1])) n += 2;
    return tail(section, n).starts_with("~}") ? n + 2 : 0;
}

}  // namespace attalven

#endif
