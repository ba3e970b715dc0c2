// The end of tags, comments and raw text elements. The rules are those of the HTML standard's
// tokenizer to the letter, because hostile mail lives on the difference: a reader that ends a tag
// earlier than the browser can be made to write into an attribute.

#include "markup.h"

#include <array>

#include "byte_blocks.h"

namespace attalven {

namespace {

// Where in a tag the scanner stands. Only a value may open quotes, and only inside quotes ">" does
// not end the tag.
enum State : unsigned char { kName, kBefore, kAttr, kAfter, kValue, kDouble, kSingle, kBare, kEnd };
enum Class : unsigned char { cSpace, cSlash, cEquals, cDouble, cSingle, cClose, cOther };

constexpr Class classOfByte(char c) {
    switch (c) {
        case ' ':
        case '\t':
        case '\n':
        case '\f':
        case '\r':
            return cSpace;
        case '/':
            return cSlash;
        case '=':
            return cEquals;
        case '"':
            return cDouble;
        case '\'':
            return cSingle;
        case '>':
            return cClose;
        default:
            return cOther;
    }
}

constexpr std::array<Class, 256> kClasses = [] {
    std::array<Class, 256> table{};
    for (unsigned c = 0; c < 256; c++) table[c] = classOfByte(static_cast<char>(c));
    return table;
}();

constexpr Class classOf(char c) {
    return kClasses[byteOf(c)];
}

constexpr State kNext[][7] = {
    // space   /        =        "        '        >        other
    {kBefore, kBefore, kName, kName, kName, kEnd, kName},             // kName: "<img"
    {kBefore, kBefore, kAttr, kAttr, kAttr, kEnd, kAttr},             // kBefore an attribute
    {kAfter, kBefore, kValue, kAttr, kAttr, kEnd, kAttr},             // kAttr: its name
    {kAfter, kBefore, kValue, kAttr, kAttr, kEnd, kAttr},             // kAfter its name
    {kValue, kBare, kBare, kDouble, kSingle, kEnd, kBare},            // kValue: behind "="
    {kDouble, kDouble, kDouble, kBefore, kDouble, kDouble, kDouble},  // kDouble quotes
    {kSingle, kSingle, kSingle, kSingle, kBefore, kSingle, kSingle},  // kSingle quotes
    {kBefore, kBare, kBare, kBare, kBare, kEnd, kBare},               // kBare value
};

size_t tagLength(string_view s) {
    State state = kName;
    for (size_t at = 1; at < s.size(); at++) {
        state = kNext[state][classOf(s[at])];
        if (state == kEnd) return at + 1;
    }
    return s.size();
}

/// Up to the next ">": declarations, processing instructions and what browsers take for a comment.
size_t bogusLength(string_view s) {
    size_t end = s.find('>');
    return end == string_view::npos ? s.size() : end + 1;
}

/// comment = "<!--" ( ">" / "->" / *CHAR ( "-->" / "--!>" ) )
size_t commentLength(string_view s) {
    string_view body = tail(s, 4);
    if (body.starts_with('>')) return 5;
    if (body.starts_with("->")) return 6;
    for (size_t at = 4; (at = s.find("--", at)) != string_view::npos; at++) {
        string_view rest = tail(s, at + 2);
        if (rest.starts_with('>')) return at + 3;
        if (rest.starts_with("!>")) return at + 4;
    }
    return s.size();
}

/// Whether the tag name that starts `s` is `name`: something that ends a name follows.
bool startsTagName(string_view s, string_view name) {
    if (!startsWithNoCase(s, name)) return false;
    s = tail(s, name.size());
    return s.empty() || classOf(s.front()) == cSpace || s.front() == '/' || s.front() == '>';
}

constexpr string_view kRawText[] = {"script", "style",   "textarea", "title",    "xmp",
                                    "iframe", "noembed", "noframes", "plaintext"};

}  // namespace

size_t markupLength(string_view s) {
    char next = s.size() > 1 ? s[1] : ' ';
    if (isAlpha(next)) return tagLength(s);
    if (next == '/') {
        if (s.size() == 2) return 0;
        return isAlpha(s[2]) ? tagLength(tail(s, 1)) + 1 : bogusLength(s);
    }
    if (next == '?') return bogusLength(s);
    if (next != '!') return 0;
    return s.starts_with("<!--") ? commentLength(s) : bogusLength(s);
}

string_view startTagName(string_view tag) {
    if (tag.size() < 2 || !isAlpha(tag[1])) return {};
    size_t end = 1;
    while (end < tag.size() && classOf(tag[end]) != cSpace && tag[end] != '/' && tag[end] != '>')
        end++;
    return tail(head(tag, end), 1);
}

bool isRawTextElement(string_view name) {
    return std::any_of(std::begin(kRawText), std::end(kRawText),
                       [name](string_view raw) { return equalNoCase(raw, name); });
}

size_t rawTextLength(string_view s, string_view name) {
    if (equalNoCase(name, "plaintext")) return s.size();
    // A script that opens a comment and another script in it takes that one's end tag for its own.
    bool script = equalNoCase(name, "script"), commented = false, nested = false;
    for (size_t at = 0; (at = findBytes<'<', '-'>(s, at)) < s.size(); at++) {
        string_view here = tail(s, at);
        if (here.starts_with("</") && startsTagName(tail(here, 2), name)) {
            if (!nested) return at;
            nested = false;
        } else if (script && here.starts_with("<!--")) {
            commented = true;
            at += 1;  // "<!-->" ends the comment with its own dashes
        } else if (script && here.starts_with("-->")) {
            commented = nested = false;
        } else if (commented && here.starts_with('<') && startsTagName(tail(here, 1), name)) {
            nested = true;
        }
    }
    return s.size();
}

}  // namespace attalven
