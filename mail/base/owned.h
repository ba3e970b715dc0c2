#ifndef ATTALVEN_MAIL_BASE_OWNED_H
#define ATTALVEN_MAIL_BASE_OWNED_H

// Ownership of malloc memory and of records. A raw owning pointer stands only between release() and
// return.

#include <cstdlib>
#include <memory>

namespace attalven {

struct FreeMemory {
    void operator()(void* p) const { free(p); }
};
/// A heap text or array: caller frees with free().
template <typename T>
using OwnedMemory = std::unique_ptr<T, FreeMemory>;
using OwnedText = OwnedMemory<char>;

/// Deleter of a record whose public free takes the address of the pointer: Owned<MailInfo,
/// mailFree>.
template <auto Release>
struct ReleaseByAddress {
    template <typename T>
    void operator()(T* p) const {
        Release(&p);
    }
};
template <typename T, void (*Release)(T**)>
using Owned = std::unique_ptr<T, ReleaseByAddress<Release>>;

/// `count` zeroed elements, NULL when memory is out.
template <typename T>
OwnedMemory<T> allocate(size_t count = 1) {
    return OwnedMemory<T>(static_cast<T*>(calloc(count, sizeof(T))));
}

}  // namespace attalven

#endif
