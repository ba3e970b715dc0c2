// Positioned reads and writes, complete or failed: over short results and interruptions.

#include "block_copy.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace attalven {

namespace {

bool writeAt(int fd, int64_t offset, string_view bytes) {
    while (!bytes.empty()) {
        ssize_t n = pwrite(fd, bytes.data(), bytes.size(), offset);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        bytes = tail(bytes, static_cast<size_t>(n));
        offset += n;
    }
    return true;
}

/// Gives the range block by block, with the block's distance from the range's start, to `take`
/// until it gives false.
template <typename Take>
bool eachBlock(Range range, char* block, Take take) {
    for (int64_t done = 0; done < range.size;) {
        size_t n =
            static_cast<size_t>(std::min(range.size - done, static_cast<int64_t>(Blocks::kSize)));
        if (!readAt(range.fd, range.offset + done, block, n) || !take(done, string_view(block, n)))
            return false;
        done += static_cast<int64_t>(n);
    }
    return true;
}

}  // namespace

bool readAt(int fd, int64_t offset, char* to, size_t size) {
    while (size > 0) {
        ssize_t n = pread(fd, to, size, offset);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        to += n;
        offset += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

void startWriteback(int fd, int64_t end, size_t size) {
    constexpr int64_t kStep = 8 * 1024 * 1024;
    int64_t from = (end - static_cast<int64_t>(size)) / kStep, to = end / kStep;
    // Only a start: an error shows at the sync.
    if (from < to) sync_file_range(fd, from * kStep, (to - from) * kStep, SYNC_FILE_RANGE_WRITE);
}

bool copyRange(Range from, int to, int64_t toOffset, Blocks& blocks) {
    return eachBlock(from, blocks.first.get(), [&](int64_t done, string_view block) {
        if (!writeAt(to, toOffset + done, block)) return false;
        startWriteback(to, toOffset + done + static_cast<int64_t>(block.size()), block.size());
        return true;
    });
}

bool digestRange(Range range, Blocks& blocks, Digest& digest) {
    return eachBlock(range, blocks.first.get(), [&](int64_t, string_view block) {
        digest.add(block);
        return true;
    });
}

std::optional<bool> isSameRange(Range range, int other, int64_t otherOffset, Blocks& blocks) {
    bool isSame = true;
    bool isRead = eachBlock(range, blocks.first.get(), [&](int64_t done, string_view block) {
        char* there = blocks.second.get();
        if (!readAt(other, otherOffset + done, there, block.size())) return false;
        isSame = memcmp(block.data(), there, block.size()) == 0;
        return isSame;
    });
    if (!isRead && isSame) return std::nullopt;
    return isSame;
}

}  // namespace attalven
