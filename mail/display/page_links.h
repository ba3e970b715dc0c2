#ifndef ATTALVEN_MAIL_DISPLAY_PAGE_LINKS_H
#define ATTALVEN_MAIL_DISPLAY_PAGE_LINKS_H

// How texts that come from a mail or a request enter markup, links and header lines, and the links
// to the part-download page.

#include "mail/base/text.h"
#include "mail/display.h"

namespace attalven {

/// Appends `s` for a place in a page where it must stay text: `<`, `>` and `"` become character
/// references, control bytes go; every other text stays as it is. None of these bytes is ever the
/// second half of a character in a page character set.
void appendMarkupSafe(Text& out, string_view s);
/// The same inside an address in quotes: the three become %3C, %3E and %22.
void appendUrlSafe(Text& out, string_view s);
/// For a line of a response header: control bytes go, among them every line break.
void appendWithoutControls(Text& out, string_view s);

/// `text` URL-encoded, spaces as "+"; NULL for NULL and when the encoder gives nothing.
OwnedText urlEncoded(const char* text);

/// Part download of the message that a view shows: all but the Content-ID, which stands last.
Text cidLinkPrefix(const MailView& view);
/// Part download by file name.
Text fileLink(const MailView& view, const char* fileName);

/// Prints a finished text; nothing when memory ran out while it grew.
void printText(const Text& text);

}  // namespace attalven

#endif
