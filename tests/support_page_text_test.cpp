// Links, HTML and WML preparation, markup taken off, tokens replaced.

#include <sys/resource.h>

#include <ctime>

#include "kit/site.h"

namespace {

using kit::taken;

struct Row {
    const char *label, *input, *expected;
};

/// "{x}" stands for the canonical link of the web or mail address x.
std::string expand(std::string_view s) {
    std::string out;
    for (size_t at = 0; at < s.size(); at++) {
        size_t end = s[at] == '{' ? s.find('}', at) : s.npos;
        if (end == s.npos) {
            out += s[at];
            continue;
        }
        std::string text(s.substr(at + 1, end - at - 1));
        std::string url = text.find("://") == text.npos ? "mailto:" + text : text;
        out += "<A HREF=\"" + url + "\" TARGET=\"_blank\" REL=\"noopener noreferrer\">" + text +
               "</A>";
        at = end;
    }
    return out;
}

TEST(PageText, Links) {
    const Row rows[] = {
        {"web", "http://a.b/c?d=1&e=2#f, HTTPS://x.", "{http://a.b/c?d=1&e=2#f}, {HTTPS://x}."},
        {"mail", "kim.lee+x@mail.a.org, (a_b@c.de)", "{kim.lee+x@mail.a.org}, ({a_b@c.de})"},
        {"brackets", "(http://a/b_(c)) [http://a/[d]]", "({http://a/b_(c)}) [{http://a/[d]}]"},
        {"quotes", "\"http://a/b\" 'kim@a.de'", "\"{http://a/b}\" '{kim@a.de}'"},
        {"angle brackets", "<kim@a.de> <mailto:a@a.de>", "<{kim@a.de}> <mailto:{a@a.de}>"},
        {"references", "&lt;http://a/?b=1&amp;c&gt;", "&lt;{http://a/?b=1&amp;c}&gt;"},
        {"no addresses", "http:// http://- xhttp://a svn+http://a a@b @ a@.b a@b.1c", nullptr},
        {"parts of longer ones", "O'Brien@a.de a..b@c.de a@b.de@c.de x/a@b.de a%b@c.de", nullptr},
        {"a user in a URL", "ftp://kim@a.de/x", "{ftp://kim@a.de/x}"},
        {"an ellipsis", "(...kim@a.de...)", "(...{kim@a.de}...)"},
        {"attributes", "<img src=\"http://a/b\" alt='c > kim@a.de' title= \"d>http://a", nullptr},
        {"behind a tag", "<p title=x\"y>http://a</p>", "<p title=x\"y>{http://a}</p>"},
        {"an anchor", "<a href=x>http://a</a> http://b", "<a href=x>http://a</a> {http://b}"},
        {"a named place", "<a name=x>http://a</A>", "<a name=x>{http://a}</A>"},
        {"comments", "<!-- a@b.cc > --> a@b.de <!-->c@d.de",
         "<!-- a@b.cc > --> {a@b.de} <!-->{c@d.de}"},
        {"scripts", "<SCRIPT>'a@b.de'</scripty></SCRIPT >a@b.de",
         "<SCRIPT>'a@b.de'</scripty></SCRIPT >{a@b.de}"},
        {"a script in a script's comment", "<script><!--<script></script>http://a</script>x@y.de",
         "<script><!--<script></script>http://a</script>{x@y.de}"},
        {"styles, titles and what never ends", "<style>http://a</style><title>http://b", nullptr},
        {"a tag that never ends", "http://a <b http://c", "{http://a} <b http://c"},
        {"less than", "1 < 2, http://a <3", "1 < 2, {http://a} <3"},
        {"a byte above 0x7F before", "kim\x83@a.de \xC1\xD6http://a \xC1\xD6kim@a.de", nullptr},
        {"and behind", "http://a/b\xBF\xA1 a@a.de\xBF\xA1",
         "{http://a/b}\xBF\xA1 {a@a.de}\xBF\xA1"},
        {"an open HZ section", "~{<http://a", nullptr},
    };
    for (const Row& r : rows)
        EXPECT_EQ(taken(strToHyperLink(r.input)), expand(r.expected ? r.expected : r.input))
            << r.label;
}

TEST(PageText, Html) {
    const Row rows[] = {
        {"empty", "", ""},
        {"markup", "<b>\"x\" & 'y'</b>", "&lt;b&gt;&quot;x&quot; &amp; 'y'&lt;/b&gt;"},
        {"line ends", "a\nb\r\n\nc\rd", "a<BR>|b<BR>|<BR>|c d"},
        {"blanks", " a  b c   d\n e", "&nbsp;a &nbsp;b c &nbsp;&nbsp;d<BR>|&nbsp;e"},
        {"tabs", "a\tb", "a&nbsp;&nbsp;&nbsp;&nbsp;b"},
        {"control bytes", "x\x01\x1B\x7Fy", "xy"},
        {"two-byte characters", "\x83\x5C\x83\x7C", "\x83\x5C\x83\x7C"},
        {"a markup byte behind a lead byte", "\x83<", "\x83&lt;"},
    };
    for (const Row& r : rows) EXPECT_EQ(taken(strConvHTMLStr(r.input, "|")), r.expected) << r.label;
    EXPECT_EQ(taken(strConvHTMLStr("a\nb", nullptr)), "a<BR>b");
}

TEST(PageText, HtmlKeepsCanonicalLinksOnly) {
    std::string both = taken(strToHyperLink("<i>http://a/?b=1&c kim@a.de"));
    EXPECT_EQ(taken(strConvHTMLStr(both.c_str(), "\n")),
              "&lt;i&gt;" + expand("{http://a/?b=1&amp;c} {kim@a.de}"));
    std::string good = expand("{http://a/b}");
    EXPECT_EQ(taken(strConvHTMLStr(good.c_str(), "")), good);
    for (auto [from, to] : {std::pair{"HREF", "href"},
                            {"http:", "javascript:"},
                            {"/b\" T", "/b\"T"},
                            {"/b<", "/c<"},
                            {"</A>", "</a>"},
                            {"http://a/b\" ", "mailto:a@b.de?bcc=c@d.de\" "},
                            {"/b\"", "/b\" ONCLICK=\""},
                            {"a/b<", "a/b<I>x</I><"}}) {
        std::string forged = good;
        forged.replace(forged.find(from), strlen(from), to);
        std::string out = taken(strConvHTMLStr(forged.c_str(), ""));
        EXPECT_EQ(out.find_first_of("<>\""), std::string::npos) << out;
    }
}

TEST(PageText, HzSectionsKeepTheirCharacters) {
    // 0x3C 0x75 is U+51CF, 0x30 0x22 U+963F, 0x30 0x21 U+554A (GB2312).
    EXPECT_EQ(taken(strConvHTMLStr("<~{0!<u0\"0!~}>", "")), "&lt;~{0!~}&#20943;&#38463;~{0!~}&gt;");
    EXPECT_EQ(taken(strConvHTMLStr("~{0!\n~}~{<b>~}", "")), "~{0!<BR>~}~{&lt;b&gt;~}");
    EXPECT_EQ(taken(strConvHTMLStr("~{\x7E\x21<<~}", "")), "~{~!&lt;&lt;~}");
    EXPECT_EQ(taken(strStripHTMLTag("a<b>~{0!<u~}</b>")), "a~{0!<u~}");
    EXPECT_EQ(taken(strConvWMLStr("~{0!$s~}", "")), "~{0!~}&#12435;");
}

TEST(PageText, StripsMarkup) {
    const Row rows[] = {
        {"tags", "<P CLASS=\"a>b\">Kim<BR/> &amp; Lee</P>\n", "Kim &amp; Lee\n"},
        {"text", "a < b > c <3 & d", "a < b > c <3 & d"},
        {"comments and declarations", "<!DOCTYPE x>a<!-- <b> -- > -->b<?c?>d<!-->e", "abde"},
        {"scripts and styles", "a<script>x<b>y</script>b<STYLE>z</style\n>c", "abc"},
        {"what never ends", "a<b c=\"d>e", "a"},
        {"a comment that never ends", "a<!-- b > c", "a"},
        {"nothing is assembled", "<<b>script>x<</b>/script>", "< script>x< /script>"},
        {"addresses", "<kim@a.de> <http://a/onload=x>", "kim@a.de http://a/onload=x"},
        {"an unclosed script", "a<script>b", "a"},
    };
    for (const Row& r : rows) EXPECT_EQ(taken(strStripHTMLTag(r.input)), r.expected) << r.label;
}

TEST(PageText, WmlAndTokens) {
    EXPECT_EQ(taken(strConvWMLStr("a\\b & \"c\"\r\nd<e>$f \x83\x5C\xB0\xA1\\", "\\&\"\n")),
              "a&#92;b &amp; &quot;c&quot;<br/>\nd&lt;e&gt;$$f \x83\x5C\xB0\xA1&#92;");
    EXPECT_EQ(taken(strConvWMLStr("a&b\\c\n", "a")), "&b\\c\n");
    EXPECT_EQ(taken(strConvTokenStr("cid:a CID: cid:", "cid:", "xcid:")), "xcid:a CID: xcid:");
    EXPECT_EQ(taken(strConvTokenStr("aaa", "aa", nullptr)), "a");
    EXPECT_EQ(taken(strConvTokenStr("abc", "", "x")), "abc");
    for (char* none :
         {strToHyperLink(nullptr), strConvHTMLStr(nullptr, ""), strStripHTMLTag(nullptr),
          strConvWMLStr(nullptr, ""), strConvTokenStr(nullptr, "a", "b")})
        EXPECT_EQ(none, nullptr);
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

TEST(PageText, HostileTextsTakeLinearTime) {
    for (std::string_view piece : {"<", "http://", "@", "a@", "<a ", "<!--", "~{a", "<http://a",
                                   "<script><!--", "<A HREF=\"http://a", "\"'=<x ", ".@a.-"}) {
        std::string text;
        while (text.size() < 1'000'000) text += piece;
        clock_t start = clock();  // processor time: the machine may be busy
        std::string links = taken(strToHyperLink(text.c_str()));
        taken(strConvHTMLStr(links.c_str(), "\n"));
        taken(strStripHTMLTag(text.c_str()));
        // A quadratic scanner takes minutes.
        EXPECT_LT(clock() - start, 2 * CLOCKS_PER_SEC) << piece;
    }
}

}  // namespace
