#ifndef ATTALVEN_HOST_KIT_ENCODED_WORD_H
#define ATTALVEN_HOST_KIT_ENCODED_WORD_H

// Encoded words of header values (RFC 2047 section 2), one by one: the library reads a value as a
// whole, by the set of its last word.

#include <string>
#include <string_view>

namespace host {

struct EncodedWord {
    size_t begin = 0, end = 0;  // where it stands in the value
    std::string set, bytes;     // without language; decoded, in its set, up to a NUL byte
};

/// The next word of `value` at or behind `at`; one without end is text. False when there is none.
bool findWord(std::string_view value, size_t at, EncodedWord& word);

}  // namespace host

#endif
