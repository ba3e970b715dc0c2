// Links, HTML and WML preparation, markup taken off, tokens replaced.

#include <sys/resource.h>

#include <regex>

#include "kit/calls.h"

namespace {

using kit::taken;

/// "{x}" for the canonical link of the web or mail address x.
std::string shortened(const std::string& page) {
    static const std::regex link(
        "<A HREF=\"(?:mailto:(?!\\w+://)|(?=\\w+://))([^\"]*)\" TARGET=\"_blank\" "
        "REL=\"noopener noreferrer\">\\1</A>");
    return std::regex_replace(page, link, "{$1}");
}

std::string linked(const char* text) {
    return taken(strToHyperLink(text));
}

TEST(PageText, RowByRow) {
    kit::runTable(
        "support/page_text.table",
        {{"strToHyperLink", kit::result(+[](const char* s) { return shortened(linked(s)); })},
         {"strConvHTMLStr", kit::result(+[](const char* s, const char* lineEnd) {
              return shortened(taken(strConvHTMLStr(s, lineEnd)));
          })},
         {"links on a page", kit::result(+[](const char* s) {
              return shortened(taken(strConvHTMLStr(linked(s).c_str(), "\n")));
          })},
         HEAP(strStripHTMLTag),
         HEAP(strConvWMLStr),
         HEAP(strConvTokenStr)});
}

TEST(PageText, NothingComesOutUnescapedWhenMemoryIsOut) {
    if (kit::kAddressSanitizer) GTEST_SKIP();
    std::string quotes(16'000'000, '"');
    // Less than the page of six times as many bytes.
    rlimit limit = {quotes.size() * 5, RLIM_INFINITY};
    setrlimit(RLIMIT_AS, &limit);
    EXPECT_EQ(taken(strConvHTMLStr(quotes.c_str(), "")), "");
    limit.rlim_cur = RLIM_INFINITY;
    setrlimit(RLIMIT_AS, &limit);
}

// A quadratic scanner takes hours for them.
}  // namespace
