#ifndef ATTALVEN_MAIL_CODEC_BASE64_VECTOR_H
#define ATTALVEN_MAIL_CODEC_BASE64_VECTOR_H

// The bulk of base64 in vectors. base64.cpp calls these, nobody else does.

#include <cstddef>

namespace attalven {

/// Shortest line, in characters, that the functions below take.
inline constexpr size_t kBase64Block = 32;

/// Encodes `lines` lines of `lineLength` characters (a multiple of 4, at least kBase64Block), each
/// followed by a line feed.
void base64EncodeLines(const char* bytes, size_t lines, size_t lineLength, char* out);

/// Both decoders take whole blocks of characters of the alphabet, up to the first block that holds
/// another byte, at most `size` bytes. They give the bytes taken and move `out` behind the result;
/// what was not taken is unchanged, also in place. The first takes lines of exactly `lineLength`
/// characters (a multiple of 4, at least kBase64Block) with the line feed behind them.
size_t base64DecodeLines(const char* text, size_t size, size_t lineLength, char*& out);
size_t base64DecodeBlocks(const char* text, size_t size, char*& out);

}  // namespace attalven

#endif
