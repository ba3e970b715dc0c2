#ifndef ATTALVEN_MAIL_BASE_CHARSET_NAME_H
#define ATTALVEN_MAIL_BASE_CHARSET_NAME_H

// The form of a character set's name, wherever one comes from a mail, a form or a host.

#include "byte_set.h"

namespace attalven {

inline constexpr size_t kCharsetNameMax = 64;
inline constexpr ByteSet kCharsetNameBytes = ByteSet("._:+-").withAlnum();

/// 1 to 64 letters, digits and "._:+-": other names carry options, or are no names at all.
constexpr bool isCharsetForm(string_view name) {
    return !name.empty() && name.size() <= kCharsetNameMax &&
           kCharsetNameBytes.run(name) == name.size();
}

}  // namespace attalven

#endif
