// The frame of a page that shows one message body, and the character set of the page. The frame's
// only input from outside is the background, which must look like a colour.

#include <cstdio>

#include "mail/base/bounded_text.h"
#include "mail/base/charset_name.h"
#include "page.h"
#include "support.h"

using namespace attalven;

namespace {

BoundedText<kCharsetNameMax> charset;

bool isColour(string_view s) {
    if (s.empty() || s.size() > 32) return false;
    if (s.front() == '#') s.remove_prefix(1);
    return std::all_of(s.begin(), s.end(), [](char c) { return isAlpha(c) || isDigit(c); });
}

}  // namespace

void pageSetCharSet(const char* name) {
    string_view s = viewOf(name);
    charset.assign(isCharsetForm(s) ? s : string_view());
}

const char* pageCharSet(void) {
    return charset.c_str();
}

void htmlStart(void) {
    fputs("<!DOCTYPE html>\n<HTML>\n", stdout);
}

void htmlHeadStart(void) {
    fputs("<HEAD>\n", stdout);
    if (!charset.empty()) printf("<META CHARSET=\"%s\">\n", charset.c_str());
}

void htmlBaseStyle(void) {
    fputs(
        "<STYLE TYPE=\"text/css\">\n"
        "BODY { margin: 8px; }\n"
        ".textbody { font-family: monospace; overflow-wrap: anywhere; }\n"
        "</STYLE>\n",
        stdout);
}

void htmlHeadEnd(void) {
    fputs("</HEAD>\n", stdout);
}

void htmlBodyStart(const char* background) {
    if (isColour(viewOf(background))) {
        printf("<BODY BGCOLOR=\"%s\">\n", background);
    } else {
        fputs("<BODY>\n", stdout);
    }
}

void htmlBodyEnd(void) {
    fputs("</BODY>\n", stdout);
}

void htmlEnd(void) {
    fputs("</HTML>\n", stdout);
}
