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
    /// The set with letters and digits added.
    constexpr ByteSet withAlnum() const {
        ByteSet set = *this;
        for (unsigned c = 0; c < 128; c++)
            if (isAlpha(static_cast<char>(c)) || isDigit(static_cast<char>(c))) set.has_[c] = true;
        return set;
    }
    constexpr bool has(char c) const { return has_[byteOf(c)]; }
    /// Position of the first member in `s`, its length when there is none.
    constexpr size_t find(string_view s) const {
        size_t n = 0;
        while (n < s.size() && !has(s[n])) n++;
        return n;
    }
    /// Length of the run of members at the start of `s`, at most `max`.
    constexpr size_t run(string_view s, size_t max = string_view::npos) const {
        size_t n = 0;
        while (n < s.size() && n < max && has(s[n])) n++;
        return n;
    }

  private:
    bool has_[256] = {};
};

}  // namespace attalven

#endif
