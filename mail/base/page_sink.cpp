// Sinks for foreign texts in pages: nothing here lets a text leave the place or the attribute in
// which it stands.

#include "page_sink.h"

namespace attalven {

namespace {

struct Replacements {
    const char *less, *greater, *quote;
};
constexpr Replacements kReferences = {"&lt;", "&gt;", "&quot;"};
constexpr Replacements kUrlCodes = {"%3C", "%3E", "%22"};

/// What is printed for `c`; NULL when it is the byte itself.
const char* replacementOf(char c, const Replacements& by) {
    switch (c) {
        case '<':
            return by.less;
        case '>':
            return by.greater;
        case '"':
            return by.quote;
        default:
            return isControl(c) ? "" : nullptr;
    }
}

void appendReplaced(Text& out, string_view s, const Replacements& by) {
    for (char c : s) {
        const char* instead = replacementOf(c, by);
        instead ? out.append(instead) : out.append(c);
    }
}

}  // namespace

void appendMarkupSafe(Text& out, string_view s) {
    appendReplaced(out, s, kReferences);
}

void appendUrlSafe(Text& out, string_view s) {
    appendReplaced(out, s, kUrlCodes);
}

}  // namespace attalven
