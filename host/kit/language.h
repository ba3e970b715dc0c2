#ifndef ATTALVEN_HOST_KIT_LANGUAGE_H
#define ATTALVEN_HOST_KIT_LANGUAGE_H

// The four languages of the pages, and the names of character sets.

#include <vector>

namespace host {

/// Code ("kor"), language tag ("ko"), page character set as the library names it, and as browsers
/// do.
struct Language {
    const char *code, *tag, *charSet, *htmlCharSet;
};

/// In the order of the library's language numbers, 1 English to 4 Korean.
const std::vector<Language>& languages();

/// The language of the user's pages, by getTemplateLang().
const Language& pageLanguage();

/// The browsers' name of a page character set of the library ("SHIFT-JIS": "Shift_JIS").
const char* htmlCharSet(const char* charSet);

}  // namespace host

#endif
