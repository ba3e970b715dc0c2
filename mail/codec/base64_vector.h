#ifndef ATTALVEN_MAIL_CODEC_BASE64_VECTOR_H
#define ATTALVEN_MAIL_CODEC_BASE64_VECTOR_H

// The bulk of base64 in AVX2, for processors that have it. base64.h calls these, nobody else does.

#include <cstddef>

namespace attalven {

/// Shortest line, in characters, that the functions below take.
inline constexpr size_t kBase64Block = 32;

/// Whether the processor runs the functions below.
bool base64HasVector();

/// Encodes `lines` lines of `lineLength` characters (a multiple of 4, at least kBase64Block), each
/// followed by a line feed.
void base64EncodeLines(const char* bytes, size_t lines, size_t lineLength, char* out);

/// Decodes lines of exactly `lineLength` characters of the alphabet and a line feed, at most
/// `lines` of them, up to the first that is different. Gives the number of lines taken.
size_t base64DecodeLines(const char* text, size_t lines, size_t lineLength, char* out);

/// Decodes blocks of kBase64Block characters of the alphabet, at most `blocks` of them, up to the
/// first that holds another byte. Gives the number of blocks taken.
size_t base64DecodeBlocks(const char* text, size_t blocks, char* out);

}  // namespace attalven

#endif
