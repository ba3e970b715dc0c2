#include "language.h"

#include "cmd/site_texts.h"
#include "support/support.h"

namespace host {

const char* htmlCharSet(const char* charSet) {
    struct Name {
        const char *library, *browsers;
    };
    constexpr Name table[] = {{"SHIFT-JIS", "Shift_JIS"}, {"HZ", "GB2312"}, {"BIG5", "Big5"}};
    for (const Name& name : table)
        if (strCaseCmp(charSet, name.library) == 0) return name.browsers;
    return charSet;
}

const std::vector<Language>& languages() {
    static const std::vector<Language> table = [] {
        std::vector<Language> rows;
        for (const cmd::SiteLanguage& l : cmd::siteLanguages())
            rows.push_back({l.code, l.tag, l.charSet, htmlCharSet(l.charSet)});
        return rows;
    }();
    return table;
}

const Language& pageLanguage() {
    return languages()[static_cast<size_t>(getTemplateLang() - 1)];
}

}  // namespace host
