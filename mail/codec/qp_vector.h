#ifndef ATTALVEN_MAIL_CODEC_QP_VECTOR_H
#define ATTALVEN_MAIL_CODEC_QP_VECTOR_H

// The bulk of quoted-printable in vectors. quoted_printable.cpp calls these, nobody else does. They
// read kQpWindow bytes, and store behind their result as many bytes as they may read.

#include <cstddef>

namespace attalven {

inline constexpr size_t kQpWindow = 64;

/// Copies the bytes before the first that a body does not write as itself, at most kQpWindow.
/// Gives how many.
size_t qpCopyLiterals(const char* text, char* out);

/// Copies the bytes before the first "=", as long as kQpWindow bytes are left of `size`. Gives how
/// many.
size_t qpCopyPlain(const char* text, size_t size, char* out);

/// Decodes escapes of true digits and single bytes between them, as long as kQpWindow bytes are
/// left of `size`. Gives the bytes taken and moves `out` behind what was written.
size_t qpDecodeEscapes(const char* text, size_t size, char*& out);

}  // namespace attalven

#endif
