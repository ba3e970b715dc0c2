#ifndef ATTALVEN_SUPPORT_CONVERTER_HZ_H
#define ATTALVEN_SUPPORT_CONVERTER_HZ_H

// HZ (RFC 1843): GB2312 characters as pairs of 7-bit bytes between "~{" and "~}".

#include <cstddef>

namespace attalven::converter {

enum class HzResult { kDone, kFull, kIncomplete, kInvalid };

/// Reads HZ from `in` and writes the same text as 8-bit GB2312 to `out`; `gb` is the mode. Both
/// pointers advance over whole units only, so that a call with less room stops exactly behind what
/// it wrote.
HzResult readHz(bool& gb, const char*& in, const char* end, char*& out, const char* outEnd);

/// Writes 8-bit GB2312 of whole characters as HZ; all of it, or nothing when the room does not
/// suffice. Four bytes of room for each byte of text always suffice.
bool writeHz(bool& gb, const char* in, const char* end, char*& out, const char* outEnd);

/// Back to ASCII mode; false without room.
bool closeHz(bool& gb, char*& out, const char* outEnd);

}  // namespace attalven::converter

#endif
