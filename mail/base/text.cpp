// Growable text: geometric growth, one sticky failure flag, no bytes beyond the 64-bit size are
// ever counted.

#include "text.h"

#include <sys/mman.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace attalven {

namespace {

constexpr uintptr_t kHugePage = 2 << 20;
constexpr size_t kHugeText = 4 * kHugePage;

/// A fresh page costs more than the bytes that are written to it; large pages make that cost vanish
/// for large texts.
void adviseHugePages(char* block, size_t size) {
    size_t before = -reinterpret_cast<uintptr_t>(block) & (kHugePage - 1);
    if (size < before + kHugePage) return;
    madvise(block + before, (size - before) & -kHugePage, MADV_HUGEPAGE);
}

}  // namespace

bool Text::fail() {
    free(data_);
    data_ = nullptr;
    size_ = capacity_ = 0;
    failed_ = true;
    return false;
}

bool Text::grow(size_t extra) {
    if (failed_) return false;
    size_t need = size_ + extra + 1;
    if (need <= capacity_) return true;
    if (need <= size_) return fail();
    // Near the memory limit less room may still fit: half as much each time, so that a text that is
    // appended to byte by byte does not ask the kernel for each.
    size_t reserve = std::max<size_t>(capacity_ / 2, 64), capacity = need + reserve;
    char* moved = static_cast<char*>(realloc(data_, capacity));
    while (!moved && reserve) {
        reserve = reserve > 4096 ? reserve / 2 : 0;
        capacity = need + reserve;
        moved = static_cast<char*>(realloc(data_, capacity));
    }
    if (!moved) return fail();
    if (capacity >= kHugeText) adviseHugePages(moved, capacity);
    data_ = moved;
    capacity_ = capacity;
    return true;
}

void Text::appendGrowing(string_view s) {
    if (s.empty() || !grow(s.size())) return;
    memcpy(data_ + size_, s.data(), s.size());
    size_ += s.size();
}

void Text::appendFormat(const char* format, ...) {
    va_list args, again;
    va_start(args, format);
    va_copy(again, args);
    int n = vsnprintf(nullptr, 0, format, args);
    va_end(args);
    if (n > 0 && grow(static_cast<size_t>(n))) {
        vsnprintf(data_ + size_, static_cast<size_t>(n) + 1, format, again);
        size_ += static_cast<size_t>(n);
    }
    va_end(again);
}

char* Text::room(size_t n) {
    return grow(n) ? data_ + size_ : nullptr;
}

void Text::swap(Text& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
    std::swap(failed_, other.failed_);
}

char* Text::c_str() {
    if (!grow(0)) return nullptr;
    data_[size_] = 0;
    return data_;
}

char* Text::take() {
    char* text = c_str();
    if (!text) return nullptr;
    char* shrunk = capacity_ - size_ > 64 ? static_cast<char*>(realloc(text, size_ + 1)) : text;
    data_ = nullptr;
    size_ = capacity_ = 0;
    return shrunk ? shrunk : text;
}

OwnedText copyText(string_view s) {
    OwnedText copy(static_cast<char*>(malloc(s.size() + 1)));
    if (!copy) return nullptr;
    if (!s.empty()) memcpy(copy.get(), s.data(), s.size());
    copy.get()[s.size()] = 0;
    return copy;
}

void setText(char*& field, string_view s) {
    OwnedText copy = copyText(s);  // before the free: `s` may point into the old text
    free(field);
    field = copy.release();
}

}  // namespace attalven
