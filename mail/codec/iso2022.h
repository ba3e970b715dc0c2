#ifndef ATTALVEN_MAIL_CODEC_ISO2022_H
#define ATTALVEN_MAIL_CODEC_ISO2022_H

// ISO-2022-KR (RFC 1557) by steps, for texts that come in pieces.

#include "mail/base/ascii.h"

namespace attalven {

inline constexpr string_view kKoreanDesignator = "\x1b$)C";

/// Converts `text` to EUC-KR in `out`, room text.size(); `korean` is the shift state, false at the
/// start of a text. Gives the number of bytes.
size_t decodeIso2022Kr(bool& korean, string_view text, char* out);

}  // namespace attalven

#endif
