#ifndef ATTALVEN_HOST_KIT_MBOX_SCAN_H
#define ATTALVEN_HOST_KIT_MBOX_SCAN_H

// Where the messages of an mbox file lie, found without an index: by the rule of the library's own
// scan (mailChkRFC822From() on the start of each physical line), in the same order and number.

#include <string>
#include <vector>

#include "delivery.h"

namespace host {

/// The messages of the open file, at most FLDR_MAX_MSGS and up to 2 GiB.
std::vector<EntrySpan> findMessages(int fd);

/// The header block of a message with its From_ line, up to the empty line or 1 MiB.
std::string headerBlock(int fd, const EntrySpan& message);

}  // namespace host

#endif
