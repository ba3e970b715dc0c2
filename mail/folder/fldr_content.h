#ifndef ATTALVEN_MAIL_FOLDER_FLDR_CONTENT_H
#define ATTALVEN_MAIL_FOLDER_FLDR_CONTENT_H

// The new content of a folder: ranges of the old one and messages with a new Status line, in large
// writes.

#include <optional>

#include "block_copy.h"
#include "fldr_scan.h"

namespace attalven {

/// Every function gives false after an error of reading or writing.
class ContentWriter {
  public:
    /// Reads from `source`, writes at the position of `target`. `digest` of all that is written is
    /// kept when it is not NULL.
    ContentWriter(int source, int target, Blocks& blocks, Digest* digest)
        : source_(source), target_(target), blocks_(blocks), digest_(digest) {}

    /// The bytes as they are.
    bool copy(int64_t offset, int64_t size);
    /// The message with `status` in the place of its Status lines, or else behind its last header
    /// line, and with LF as the line that ends the header.
    bool copyMessage(const MessageSpan& message, string_view status);
    bool flush();
    /// Bytes given so far.
    int64_t size() const { return written_ + static_cast<int64_t>(used_); }

  private:
    bool put(string_view bytes);
    bool copyHeader(int64_t offset, int64_t size, string_view status);

    int source_, target_;
    Blocks& blocks_;  // first: the header lines in work; second: bytes to be written
    Digest* digest_;
    size_t used_ = 0;
    int64_t written_ = 0;
};

/// Whether a From_ line stands at the start of the range, apart from empty lines before it. Nothing
/// when it cannot be read.
std::optional<bool> beginsMessage(Range range, Blocks& blocks);

}  // namespace attalven

#endif
