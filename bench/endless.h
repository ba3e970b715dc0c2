#ifndef ATTALVEN_BENCH_ENDLESS_H
#define ATTALVEN_BENCH_ENDLESS_H

// A large seekable stream that takes neither disk nor memory: one line again and again.

#include <sys/types.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

struct Endless {
    const char* line;
    off_t size, at = 0;
};

inline ssize_t readEndless(void* cookie, char* to, size_t n) {
    auto* e = static_cast<Endless*>(cookie);
    n = std::min(n, static_cast<size_t>(e->size - e->at));
    size_t length = strlen(e->line), from = static_cast<size_t>(e->at) % length;
    for (size_t done = 0; done < n; from = 0) {
        size_t piece = std::min(length - from, n - done);
        memcpy(to + done, e->line + from, piece);
        done += piece;
    }
    e->at += static_cast<off_t>(n);
    return static_cast<ssize_t>(n);
}
inline int seekEndless(void* cookie, off64_t* to, int whence) {
    auto* e = static_cast<Endless*>(cookie);
    e->at = *to += whence == SEEK_SET ? 0 : whence == SEEK_CUR ? e->at : e->size;
    return 0;
}

inline FILE* openEndless(Endless& endless) {
    return fopencookie(&endless, "r", {readEndless, nullptr, seekEndless, nullptr});
}

#endif
