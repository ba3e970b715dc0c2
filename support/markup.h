#ifndef ATTALVEN_SUPPORT_MARKUP_H
#define ATTALVEN_SUPPORT_MARKUP_H

// What a browser reads as markup (the HTML standard's tokenizer), as far as finding its end needs.

#include "mail/base/ascii.h"

namespace attalven {

/// Length of the tag, comment or declaration that starts `s`, all of `s` when it does not end; 0
/// when the "<" is text. Linear in the result.
size_t markupLength(string_view s);

/// Name of the start tag in `tag` ("a" of "<a href=x>"), "" for anything else; case as it stands.
string_view startTagName(string_view tag);

/// Whether browsers read no tags inside this element.
bool isRawTextElement(string_view name);

/// Length of the contents of the raw text element `name`, whose start tag stands before `s`: up to
/// its end tag, all of `s` without one.
size_t rawTextLength(string_view s, string_view name);

}  // namespace attalven

#endif
