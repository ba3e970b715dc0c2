#ifndef ATTALVEN_SUPPORT_BYTE_SET_H
#define ATTALVEN_SUPPORT_BYTE_SET_H

// A set of bytes as a table: the page-text scanners go from one byte that matters to the next.

#include <array>

#include "mail/base/ascii.h"

namespace attalven {

class ByteSet {
  public:
    constexpr explicit ByteSet(string_view bytes) {
        for (char c : bytes) table_[byteOf(c)] = true;
    }
    /// The set with letters and digits added.
    constexpr ByteSet withAlnum() const {
        ByteSet set = *this;
        for (unsigned c = 0; c < 128; c++)
            if (isAlpha(static_cast<char>(c)) || isDigit(static_cast<char>(c)))
                set.table_[c] = true;
        return set;
    }
    constexpr bool has(char c) const { return table_[byteOf(c)]; }
    /// Position of the first byte of the set from `at` on, the text's length without one.
    constexpr size_t find(string_view s, size_t at) const {
        while (at < s.size() && !has(s[at])) at++;
        return at;
    }
    /// Length of the run of bytes of the set at the start of `s`, at most `max`.
    constexpr size_t run(string_view s, size_t max = string_view::npos) const {
        size_t n = 0;
        while (n < s.size() && n < max && has(s[n])) n++;
        return n;
    }

  private:
    std::array<bool, 256> table_{};
};

}  // namespace attalven

#endif
