#ifndef ATTALVEN_MAIL_BASE_BOUNDED_TEXT_H
#define ATTALVEN_MAIL_BASE_BOUNDED_TEXT_H

// Texts of a fixed width that always cut to fit, on a character boundary: static results, record
// fields, work areas.

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <span>

#include "ascii.h"

namespace attalven {

/// Copies `src` into the character array `dst`, cut to fit, always terminated.
inline void cutCopy(std::span<char> dst, string_view src) {
    size_t n = cutLength(src, dst.size() - 1);
    if (n) memcpy(dst.data(), src.data(), n);
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
        if (n) memmove(data_ + size_, s.data(), n);  // `s` may be the text itself
        size_ += n;
        data_[size_] = 0;
    }
    void append(char c) { append(string_view(&c, 1)); }
    /// printf-style; `format` is always a literal.
    __attribute__((format(printf, 2, 3))) void appendFormat(const char* format, ...) {
        size_t room = N - size_;
        va_list args;
        va_start(args, format);
        int n = vsnprintf(data_ + size_, room + 1, format, args);
        va_end(args);
        bool whole = n >= 0 && static_cast<size_t>(n) <= room;
        // Where it was cut, the terminator counts as one byte more, so that the cut is looked at.
        size_ +=
            whole ? static_cast<size_t>(n) : cutLength({data_ + size_, n < 0 ? 0 : room + 1}, room);
        data_[size_] = 0;
    }
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
