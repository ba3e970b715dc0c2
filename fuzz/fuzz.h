#ifndef ATTALVEN_FUZZ_FUZZ_H
#define ATTALVEN_FUZZ_FUZZ_H

// What the fuzzers share: the end of a run whose oracle fails, and texts that free themselves.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace fuzz {

inline void require(bool holds) {
    if (!holds) abort();
}

inline std::string textOf(const void* data, size_t size) {
    return {static_cast<const char*>(data), size};
}

/// The next field of the input, up to a NUL; empty behind the last one.
inline std::string takeField(std::string& input) {
    size_t end = std::min(input.find('\0'), input.size());
    std::string field = input.substr(0, end);
    input.erase(0, end + 1);
    return field;
}

/// The text with a backslash before quotes and backslashes, as a quoted string holds it.
inline std::string escaped(const std::string& text) {
    std::string all;
    for (char c : text) all += c == '"' || c == '\\' ? std::string{'\\', c} : std::string{c};
    return all;
}

/// A heap text as a string; frees it.
inline std::string taken(char* text) {
    require(text);
    std::string copy = text;
    free(text);
    return copy;
}

/// What `write(FILE*)` writes.
template <typename Write>
std::string written(Write write) {
    char* text = nullptr;
    size_t size = 0;
    FILE* f = open_memstream(&text, &size);
    write(f);
    fclose(f);
    std::string copy(text, size);
    free(text);
    return copy;
}

}  // namespace fuzz

#endif
