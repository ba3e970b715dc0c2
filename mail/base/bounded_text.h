#ifndef ATTALVEN_MAIL_BASE_BOUNDED_TEXT_H
#define ATTALVEN_MAIL_BASE_BOUNDED_TEXT_H

// Texts of a fixed width that always cut to fit, on a character boundary: static results, record
// fields, work areas.

#include <cstring>

#include "ascii.h"

namespace attalven {

/// Copies `src` into the character array `dst`, cut to fit, always terminated.
template <size_t Size>
void cutCopy(char (&dst)[Size], string_view src) {
    size_t n = cutLength(src, Size - 1);
    if (n) memcpy(dst, src.data(), n);
    dst[n] = 0;
}

/// At most N bytes and a NUL.
template <size_t N>
class BoundedText {
  public:
    void clear() { assign({}); }
    void assign(string_view s) {
        size_ = 0;
        append(s);
    }
    void append(string_view s) {
        size_t n = cutLength(s, N - size_);
        if (n) memcpy(data_ + size_, s.data(), n);
        size_ += n;
        data_[size_] = 0;
    }
    void append(char c) { append(string_view(&c, 1)); }
    /// Whether `s` would go in whole: what is cut must not become another path, host or id.
    bool fits(string_view s) const { return s.size() <= N - size_; }

    string_view view() const { return {data_, size_}; }
    const char* c_str() const { return data_; }
    char* data() { return data_; }
    size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

  private:
    size_t size_ = 0;
    char data_[N + 1] = {};
};

}  // namespace attalven

#endif
