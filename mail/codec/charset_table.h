#ifndef ATTALVEN_MAIL_CODEC_CHARSET_TABLE_H
#define ATTALVEN_MAIL_CODEC_CHARSET_TABLE_H

// Families of character sets: what mail calls them, and in which set the pages of each are written.

#include <span>

#include "mail/base/ascii.h"

namespace attalven {

/// The page character set of the family of `name`; `name` itself, cut to 30 bytes, when it belongs
/// to none.
string_view pageCharset(string_view name);

/// Page sets in the order in which Unicode text is tried for display.
std::span<const string_view> utfCandidates();

/// For a sending set such as "kor-utf-8": the page set in which its text was typed; empty for any
/// other.
string_view utfPageCharset(string_view name);

/// Bytes of the language in front of the UTF name of such a set.
inline constexpr size_t kLanguagePrefix = 4;

/// Whether the converter may see a name that comes from a mail or a form.
bool isCharsetName(string_view name);

}  // namespace attalven

#endif
