#ifndef ATTALVEN_HOST_KIT_MBOX_SCAN_H
#define ATTALVEN_HOST_KIT_MBOX_SCAN_H

// The messages of an mbox file and their header blocks, found without an index: by the rule of the
// library's own scan (mailChkRFC822From() on the start of each physical line), in the same order
// and number. The file is read in blocks, once for each of the two.

#include <string>
#include <string_view>
#include <vector>

#include "delivery.h"

namespace host {

class MboxScan {
  public:
    explicit MboxScan(int fd);

    /// The messages, at most FLDR_MAX_MSGS and up to 2 GiB.
    std::vector<EntrySpan> messages();
    /// The header block of a message with its From_ line, up to its empty line or 1 MiB. Borrowed:
    /// until the next call.
    std::string_view header(const EntrySpan& message);

  private:
    std::string_view load(long at);

    int fd_;
    std::string buffer_;
    long begin_ = 0;   // of what the buffer holds
    size_t held_ = 0;  // bytes
};

}  // namespace host

#endif
