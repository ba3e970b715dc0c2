#ifndef ATTALVEN_MAIL_CODEC_ENCODED_WORD_DECODE_H
#define ATTALVEN_MAIL_CODEC_ENCODED_WORD_DECODE_H

#include "../base/text.h"

namespace attalven {

/// mailDecodeSubject for a value that stands in a larger text; it ends at a NUL byte.
OwnedText decodeWords(string_view value);

}  // namespace attalven

#endif
