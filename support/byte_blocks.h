#ifndef ATTALVEN_SUPPORT_BYTE_BLOCKS_H
#define ATTALVEN_SUPPORT_BYTE_BLOCKS_H

// Scanning for the bytes that matter, sixteen at a time.

#include <cstring>
#include <utility>

#include "mail/base/ascii.h"

namespace attalven {

/// Sixteen bytes that are looked at together, in the vector registers that every target has.
using ByteBlock = unsigned char __attribute__((vector_size(16)));
using BlockMask = decltype(std::declval<ByteBlock>() == 0);

inline ByteBlock loadBlock(const char* p) {
    ByteBlock block;
    memcpy(&block, p, sizeof block);
    return block;
}
inline bool anySet(BlockMask mask) {
    uint64_t halves[2];
    memcpy(halves, &mask, sizeof halves);
    return (halves[0] | halves[1]) != 0;
}

/// Position of the first byte from `at` on that `stops(i)` accepts, the text's length without one.
/// `maskOf(p)` gives the mask of such bytes among the sixteen at `p`.
template <typename MaskOf, typename Stops>
size_t findByBlocks(string_view s, size_t at, MaskOf maskOf, Stops stops) {
    constexpr size_t kBlock = sizeof(ByteBlock);
    while (at < s.size()) {
        while (s.size() - at >= kBlock && !anySet(maskOf(s.data() + at))) at += kBlock;
        size_t end = std::min(at + kBlock, s.size());
        for (; at < end; at++)
            if (stops(at)) return at;
    }
    return at;
}

/// The same for a few given bytes.
template <char... Bytes>
size_t findBytes(string_view s, size_t at) {
    auto maskOf = [](const char* p) {
        ByteBlock block = loadBlock(p);
        return ((block == static_cast<unsigned char>(Bytes)) | ...);
    };
    return findByBlocks(s, at, maskOf, [s](size_t i) { return ((s[i] == Bytes) || ...); });
}

}  // namespace attalven

#endif
