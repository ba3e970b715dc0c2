#ifndef ATTALVEN_MAIL_DISPLAY_PAGE_LINKS_H
#define ATTALVEN_MAIL_DISPLAY_PAGE_LINKS_H

// How texts that come from a mail or a request enter links and header lines, and the links to the
// part-download page.

#include "mail/base/page_sink.h"
#include "mail/display.h"

namespace attalven {

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
