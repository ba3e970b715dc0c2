#ifndef ATTALVEN_MAIL_CODEC_ENCODED_WORD_DECODE_H
#define ATTALVEN_MAIL_CODEC_ENCODED_WORD_DECODE_H

#include "mail/base/text.h"

namespace attalven {

/// Whether a header value can hold no encoded word and no raw ISO-2022 text (which begins with
/// ESC), so that decoding would only copy it.
bool isPlainValue(string_view value);

/// mailDecodeSubject for a value that stands in a larger text; it ends at a NUL byte.
OwnedText decodeWords(string_view value);

}  // namespace attalven

#endif
