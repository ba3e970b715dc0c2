#ifndef ATTALVEN_MAIL_BASE_BYTE_SET_H
#define ATTALVEN_MAIL_BASE_BYTE_SET_H

// A set of bytes as a table, for scanners that run over ordinary bytes to the next special one.

#include "ascii.h"

namespace attalven {

class ByteSet {
  public:
    constexpr explicit ByteSet(string_view members) {
        for (char c : members) has_[byteOf(c)] = true;
    }
    constexpr bool has(char c) const { return has_[byteOf(c)]; }
    /// Position of the first member in `s`, its length when there is none.
    constexpr size_t find(string_view s) const {
        size_t n = 0;
        while (n < s.size() && !has(s[n])) n++;
        return n;
    }

  private:
    bool has_[256] = {};
};

}  // namespace attalven

#endif
