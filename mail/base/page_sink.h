#ifndef ATTALVEN_MAIL_BASE_PAGE_SINK_H
#define ATTALVEN_MAIL_BASE_PAGE_SINK_H

// How texts that come from a mail or a request enter a page.

#include "text.h"

namespace attalven {

constexpr bool isControl(char c) {
    return byteOf(c) < 0x20 || c == 0x7F;
}

/// Appends `s` for a place in a page where it must stay text: `<`, `>` and `"` become character
/// references, control bytes go; every other text stays as it is. None of these bytes is ever the
/// second half of a character in a page character set.
void appendMarkupSafe(Text& out, string_view s);
/// The same inside an address in quotes: the three become %3C, %3E and %22.
void appendUrlSafe(Text& out, string_view s);

}  // namespace attalven

#endif
