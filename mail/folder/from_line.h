#ifndef ATTALVEN_MAIL_FOLDER_FROM_LINE_H
#define ATTALVEN_MAIL_FOLDER_FROM_LINE_H

// The From_ line, which separates the messages of an mbox file (RFC 4155), and the search for lines
// that may be one.

#include "mail/base/ascii.h"

namespace attalven {

/// A longer From_ line is judged by its first bytes alone.
inline constexpr size_t kFromLineLimit = 29999;

/// Whether `line`, which starts a physical line and holds its line end, separates messages.
bool isFromLine(string_view line);

/// Position of the first LF in `s` that "From " follows, npos when there is none.
size_t findFromStart(string_view s);
/// The same for "From ", an LF or a CR LF: what may end a header.
size_t findHeaderBreak(string_view s);
/// The forms for any processor; the others, which are faster, give the same results.
size_t findFromStartPortable(string_view s);
size_t findHeaderBreakPortable(string_view s);

}  // namespace attalven

#endif
