#ifndef ATTALVEN_MAIL_BASE_TEXT_H
#define ATTALVEN_MAIL_BASE_TEXT_H

// Growable text in malloc memory. A failed allocation makes it fail for good: further appends do
// nothing, view() is empty and take() gives NULL, so that a loop of appends needs one check at its
// end.

#include <cstring>

#include "ascii.h"
#include "owned.h"

namespace attalven {

class Text {
  public:
    Text() = default;
    Text(Text&& other) noexcept { swap(other); }
    Text& operator=(Text&& other) noexcept {
        swap(other);
        return *this;
    }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() { free(data_); }

    void append(string_view s) {
        if (s.size() >= capacity_ - size_) return appendGrowing(s);
        if (!s.empty()) memcpy(data_ + size_, s.data(), s.size());
        size_ += s.size();
    }
    void append(char c) { append(string_view(&c, 1)); }
    /// printf-style; `format` is always a literal.
    void appendFormat(const char* format, ...) __attribute__((format(printf, 2, 3)));

    /// Room for `n` more bytes at the end, for a kernel that writes there; NULL when memory is out.
    /// commit() then adds the bytes that were written.
    char* room(size_t n);
    void commit(size_t n) { size_ += n; }

    void truncate(size_t n) { size_ = std::min(n, size_); }
    void clear() { size_ = 0; }
    void swap(Text& other) noexcept;

    /// Gives the text up, as when memory is out.
    bool fail();
    bool failed() const { return failed_; }
    bool empty() const { return size_ == 0; }
    size_t size() const { return size_; }
    string_view view() const { return {data_, size_}; }
    /// The bytes, terminated; NULL when memory is out.
    char* c_str();
    /// Hands the terminated text over, shrunk to its length: caller frees with free(). NULL after a
    /// failure. An empty text gives "". The Text is empty afterwards.
    char* take();

  private:
    bool grow(size_t extra);
    void appendGrowing(string_view s);

    char* data_ = nullptr;
    size_t size_ = 0, capacity_ = 0;
    bool failed_ = false;
};

/// A new heap copy of `s`, NULL when memory is out.
OwnedText copyText(string_view s);
/// The same for a record's field, which owns a plain pointer: frees the old text; a failed copy
/// leaves NULL.
void setText(char*& field, string_view s);

}  // namespace attalven

#endif
