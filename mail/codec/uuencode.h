#ifndef ATTALVEN_MAIL_CODEC_UUENCODE_H
#define ATTALVEN_MAIL_CODEC_UUENCODE_H

// One line of a uuencoded file: a character for its number of bytes, then four characters for each
// three bytes, six bits each from blank (or "`") on.

#include "mail/base/ascii.h"

namespace attalven {

/// Most bytes that a line can announce.
inline constexpr size_t kUuBytes = 63;

/// Decodes `line` up to its line end or NUL into the whole of `out`; what the line lacks reads as
/// NULs. Gives the number of bytes that it announces.
size_t uuDecodeLine(string_view line, char (&out)[kUuBytes]);

}  // namespace attalven

#endif
