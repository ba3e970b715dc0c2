// The text of HTML source, for quoting.

#include <cstdlib>
#include <cstring>
#include <string>

#include "kit/text.h"
#include "mailwrite_source.h"
#include "support/support.h"

namespace host {

namespace {

struct Reference {
    const char *name, *text;
};
constexpr Reference kReferences[] = {
    {"amp", "&"},   {"lt", "<"},    {"gt", ">"},    {"quot", "\""},  {"apos", "'"},
    {"nbsp", " "},  {"copy", "©"},  {"reg", "®"},   {"middot", "·"}, {"hellip", "…"},
    {"ndash", "–"}, {"mdash", "—"}, {"lsquo", "‘"}, {"rsquo", "’"},  {"ldquo", "“"},
    {"rdquo", "”"}, {"bull", "•"},  {"euro", "€"},  {"times", "×"},  {"laquo", "«"},
    {"raquo", "»"}, {"trade", "™"}, {"yen", "¥"},   {"sect", "§"},   {"deg", "°"},
};
constexpr const char* kBlocks[] = {"<br",  "<p>",  "<p ",  "</p",  "</div",       "</tr",
                                   "</li", "</h",  "</dt", "</dd", "<blockquote", "</table",
                                   "<hr",  "</ul", "</ol", "</pre"};

std::string textOfReference(const std::string& name) {
    if (name.size() > 1 && name[0] == '#') {
        bool isHex = name[1] == 'x' || name[1] == 'X';
        char* end = nullptr;
        unsigned long code = strtoul(name.c_str() + (isHex ? 2 : 1), &end, isHex ? 16 : 10);
        bool isControl = (code < ' ' && code != '\t') || (code >= 0x7F && code < 0xA0);
        return *end || isControl ? "" : utf8Of(code);
    }
    for (const Reference& r : kReferences)
        if (name == r.name) return r.text;
    return "";
}

std::string withoutReferences(const std::string& text) {
    std::string out;
    for (size_t at = 0; at < text.size();) {
        std::string name = text[at] == '&' ? text.substr(at + 1, 11) : "";
        size_t end = name.find(';');
        std::string character = end == name.npos ? "" : textOfReference(name.substr(0, end));
        out += character.empty() ? text.substr(at, 1) : character;
        at += character.empty() ? 1 : end + 2;
    }
    return out;
}

bool startsBlock(const char* tag) {
    for (const char* block : kBlocks)
        if (strNCaseCmp(tag, block, static_cast<int>(strlen(block))) == 0) return true;
    return false;
}

}  // namespace

std::string textOfHtml(const std::string& html) {
    std::string lines;
    for (size_t i = 0; i < html.size(); i++) {
        bool isBlank = html[i] == '\n' || html[i] == ' ' || html[i] == '\t';
        if (html[i] == '<' && startsBlock(html.c_str() + i)) lines += '\n';
        if (!isBlank)
            lines += html[i];
        else if (!lines.empty() && lines.back() != ' ' && lines.back() != '\n')
            lines += ' ';
    }
    std::string text = takeText(strStripHTMLTag(lines.c_str())), out;
    for (char c : text) {
        bool atStart = out.empty() || out.back() == '\n';
        bool isThirdBreak = c == '\n' && (out.empty() || out.ends_with("\n\n"));
        if (!isThirdBreak && !(c == ' ' && atStart)) out += c;
    }
    return withoutReferences(out);
}

}  // namespace host
