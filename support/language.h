#ifndef ATTALVEN_SUPPORT_LANGUAGE_H
#define ATTALVEN_SUPPORT_LANGUAGE_H

// Codes of the page languages, as template folders and message tables are named, and the request's
// cookies. For the support library only.

#include <iterator>
#include <optional>

#include "mail/base/ascii.h"

namespace attalven {

/// By language number, 1 English to 4 Korean; row 0 serves numbers that do not exist.
constexpr const char* kLanguageCodes[] = {"eng", "eng", "jpn", "chn", "kor"};

constexpr const char* languageCode(int language) {
    bool known = language > 0 && language < static_cast<int>(std::size(kLanguageCodes));
    return kLanguageCodes[known ? language : 0];
}

/// The number of the language whose code starts `text`, 0 for none.
constexpr int languageNumber(string_view text) {
    for (int n = 1; n < static_cast<int>(std::size(kLanguageCodes)); n++)
        if (head(text, 3) == kLanguageCodes[n]) return n;
    return 0;
}

/// The value of the request's cookie `name` by the rules of cgiCkGetVal().
std::optional<string_view> requestCookie(string_view name);

}  // namespace attalven

#endif
