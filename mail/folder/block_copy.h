#ifndef ATTALVEN_MAIL_FOLDER_BLOCK_COPY_H
#define ATTALVEN_MAIL_FOLDER_BLOCK_COPY_H

// Ranges of files, in large blocks. Every function gives false on an error, and when a file ends
// before the range does.

#include <optional>

#include "digest.h"
#include "mail/base/owned.h"

namespace attalven {

/// The memory for it, obtained before a rewrite touches anything.
struct Blocks {
    static constexpr size_t kSize = 256 * 1024;  // measured: faster than 64 KB and than 1 MB
    OwnedText first{static_cast<char*>(malloc(kSize))}, second{static_cast<char*>(malloc(kSize))};
    explicit operator bool() const { return first && second; }
};

struct Range {
    int fd;
    int64_t offset, size;
};

bool readAt(int fd, int64_t offset, char* to, size_t size);
bool copyRange(Range from, int to, int64_t toOffset, Blocks& blocks);
/// For a file that is written front to back, after a write of `size` bytes up to `end`: has the
/// disk begin with them, so that the sync that follows has little to wait for.
void startWriteback(int fd, int64_t end, size_t size);
bool digestRange(Range range, Blocks& blocks, Digest& digest);
/// Whether the range of `other` that begins at `otherOffset` holds the same bytes; nothing when one
/// of them cannot be read.
std::optional<bool> isSameRange(Range range, int other, int64_t otherOffset, Blocks& blocks);

}  // namespace attalven

#endif
