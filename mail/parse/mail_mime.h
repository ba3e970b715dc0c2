#ifndef ATTALVEN_MAIL_PARSE_MAIL_MIME_H
#define ATTALVEN_MAIL_PARSE_MAIL_MIME_H

// Pieces of the structure parser that have a file of their own.

#include "mail/base/line_reader.h"
#include "record.h"

namespace attalven {

/// Bodies are scanned in pieces of at most 5119 bytes.
inline constexpr size_t kScanLineLimit = 5120;

/// mailParseSinglepart from the reader's position: `msg` has a root body.
OwnedBody splitUuencoded(MailInfo& msg, LineReader& reader);

}  // namespace attalven

#endif
