// Page text of any bytes: what strConvHTMLStr() writes holds no markup but line breaks and links of
// the canonical form, every link that strToHyperLink() made stays one, and markup that is taken off
// stays off.

#include "fuzz.h"
#include "support/support.h"

namespace {

using fuzz::require, fuzz::taken;

size_t count(const std::string& s, const std::string& token) {
    size_t n = 0;
    for (size_t at = 0; (at = s.find(token, at)) != s.npos; at += token.size()) n++;
    return n;
}

const std::string kOpen = "<A HREF=\"",
                  kMiddle = "\" TARGET=\"_blank\" REL=\"noopener noreferrer\">", kClose = "</A>";

/// Takes a canonical link off the page's start; false if it is none.
bool takeLink(std::string& page) {
    if (!page.starts_with(kOpen)) return false;
    size_t middle = page.find(kMiddle), close = page.find(kClose);
    if (middle == page.npos || close == page.npos || close < middle) return false;
    std::string url = page.substr(kOpen.size(), middle - kOpen.size());
    std::string text = page.substr(middle + kMiddle.size(), close - middle - kMiddle.size());
    if (url != text && url != "mailto:" + text) return false;
    for (char c : url)
        if (c <= ' ' || c == 0x7F || strchr("\"<>\\^`{|}", c)) return false;
    page.erase(0, close + kClose.size());
    return true;
}

void checkPage(std::string page) {
    while (!page.empty()) {
        size_t plain = page.find_first_of("<>\"");
        if (plain)
            page.erase(0, plain);
        else if (page.starts_with("<BR>\n"))
            page.erase(0, 5);
        else
            require(takeLink(page));
    }
}

std::string unbracketed(std::string s) {
    std::erase_if(s, [](char c) { return c == '<' || c == '>' || c == ' '; });
    return s;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text = fuzz::textOf(data, size).c_str();
    std::string links = taken(strToHyperLink(text.c_str()));
    std::string page = taken(strConvHTMLStr(links.c_str(), "\n"));
    checkPage(page);
    checkPage(taken(strConvHTMLStr(text.c_str(), "\n")));
    require(count(links, kMiddle) - count(text, kMiddle) <= count(page, kMiddle));

    std::string stripped = taken(strStripHTMLTag(text.c_str()));
    bool hz = text.find("~{") != text.npos || stripped.find("~{") != stripped.npos;
    // What is joined may be an address in brackets, which loses those alone; a "<" before it gets a
    // blank.
    require(hz || unbracketed(taken(strStripHTMLTag(stripped.c_str()))) == unbracketed(stripped));
    std::string wml = taken(strConvWMLStr(stripped.c_str(), "\\&\"\n"));
    require(count(wml, "<br/>\n") == count(wml, ">"));
    return 0;
}
