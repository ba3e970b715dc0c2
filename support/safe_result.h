#ifndef ATTALVEN_SUPPORT_SAFE_RESULT_H
#define ATTALVEN_SUPPORT_SAFE_RESULT_H

#include "mail/base/text.h"

namespace attalven {

/// The text, or an empty one when memory ran out on the way: callers show the text as it stands
/// where page text gives them NULL, and a mail large enough must not gain that.
inline char* takeSafely(Text& text) {
    char* result = text.take();
    return result ? result : copyText("").release();
}

}  // namespace attalven

#endif
