// Uuencoded lines. No state crosses a line. Survives lines that announce more bytes than they
// carry: the result area always holds the greatest number that a line can announce.

#include "uuencode.h"

#include <cstring>

namespace attalven {

namespace {

unsigned sixBits(char c) {
    return (byteOf(c) - 32u) & 63u;
}

}  // namespace

size_t uuDecodeLine(string_view line, char (&out)[kUuBytes]) {
    memset(out, 0, sizeof out);
    size_t end = 0;
    while (end < line.size() && line[end] != '\0' && line[end] != '\n' && line[end] != '\r') end++;
    if (end == 0) return 0;
    size_t announced = sixBits(line[0]);
    string_view data = tail(head(line, end), 1);
    for (size_t at = 0; at < announced && !data.empty(); at += 3, data = tail(data, 4)) {
        unsigned bits = 0;
        for (size_t i = 0; i < 4; i++) bits = bits << 6 | (i < data.size() ? sixBits(data[i]) : 0);
        for (size_t i = 0; i < 3 && at + i < announced; i++)
            out[at + i] = static_cast<char>(bits >> (16 - 8 * i));
    }
    return announced;
}

}  // namespace attalven
