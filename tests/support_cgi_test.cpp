// Requests, headers, frames, templates, message tables and authentication codes.

#include "kit/site.h"
#include "support/auth_code.h"
#include "support/page.h"

namespace {

using kit::outputOf;
using kit::taken;
using SupportCgi = kit::Site;

TEST(SupportRequest, Environment) {
    setenv("REMOTE_ADDR", "2001:db8::1", 1);
    setenv("CONTENT_LENGTH", "12", 1);
    setenv("HTTP_USER_AGENT", std::string(1025, 'x').c_str(), 1);
    CgiEnv env;
    cgiGetEnv(&env);
    EXPECT_STREQ(env.remoteAddr, "2001:db8::1");
    EXPECT_STREQ(env.userAgent, "");
    EXPECT_STREQ(env.queryString, "");
    EXPECT_EQ(env.contentLength, 12);
    setenv("REMOTE_ADDR", "../etc", 1);
    setenv("CONTENT_LENGTH", "-12", 1);
    cgiGetEnv(&env);
    EXPECT_STREQ(env.remoteAddr, "");
    EXPECT_EQ(env.contentLength, 0);
}

TEST(SupportRequest, Browser) {
    for (auto [agent, version] : {std::pair{"Mozilla/4.0 (compatible; MSIE 5.01; X)", 5.01F},
                                  {"msie 10", 10},
                                  {"MSIE 5..5", 5},
                                  {"MSIE", 0}}) {
        setenv("HTTP_USER_AGENT", agent, 1);
        EXPECT_FLOAT_EQ(cgiGetMSIEVer(), version) << agent;
    }
    setenv("HTTP_ACCEPT", "image/vnd.wap.wbmp, text/vnd.wap.wml", 1);
    EXPECT_EQ(cgiGetBrowserLangType(), 2);
    setenv("HTTP_ACCEPT", "text/html, text/vnd.wap.wml", 1);
    EXPECT_EQ(cgiGetBrowserLangType(), 1);
}

TEST(SupportRequest, Cookies) {
    struct Row {
        const char *header, *name, *expected;
    } rows[] = {
        {"lang=kor; tnum=2", "tnum", "2"},  {"xlang=a; lang=b;lang=c", "lang", "b"},
        {"Lang=a", "lang", "(null)"},       {"lang", "lang", "(null)"},
        {"auth = \"a=b\" ", "auth", "a=b"}, {"lang=a\x01", "lang", "(null)"},
    };
    for (const Row& r : rows) {
        setenv("HTTP_COOKIE", r.header, 1);
        const char* value = cgiCkGetVal(r.name);
        EXPECT_STREQ(value ? value : "(null)", r.expected) << r.header;
    }
    setenv("HTTP_COOKIE", ("a=" + std::string(4097, 'x')).c_str(), 1);
    EXPECT_EQ(cgiCkGetVal("a"), nullptr);
}

TEST(SupportPage, HeadersAndFrame) {
    auto header = [](const char* type) { return outputOf([&] { cgiMimeHeader(type); }); };
    EXPECT_EQ(header("text/html"), "Content-Type: text/html\n\n");
    EXPECT_EQ(header("a/b\r\nX: y"), "Content-Type: a/bX: y\n\n");
    EXPECT_EQ(header(nullptr), "Content-Type: application/octet-stream\n\n");
    pageSetCharSet("EUC-KR");
    EXPECT_EQ(header("text/html"), "Content-Type: text/html; charset=EUC-KR\n\n");
    EXPECT_EQ(header("image/gif"), "Content-Type: image/gif\n\n");
    EXPECT_EQ(outputOf(htmlHeadStart), "<HEAD>\n<META CHARSET=\"EUC-KR\">\n");
    pageSetCharSet("x\"y");
    EXPECT_EQ(outputOf(htmlHeadStart), "<HEAD>\n");
    EXPECT_EQ(outputOf([] { htmlBodyStart("white"); }), "<BODY BGCOLOR=\"white\">\n");
    EXPECT_EQ(outputOf([] { htmlBodyStart("\"x"); }), "<BODY>\n");
}

TEST(SupportPage, UrlEncoding) {
    EXPECT_EQ(taken(cgiCharToHex("Kim Lee+\xB1@a/b?c&d%e.f_g-h~\n")),
              "Kim Lee%2B%B1%40a%2Fb%3Fc%26d%25e.f_g-h%7E%0A");
}

void printArgument(const char* arg, void**) {
    printf("<%s>", arg ? arg : "none");
}

TEST_F(SupportCgi, Directives) {
    struct Row {
        const char *input, *expected;
    } rows[] = {
        {"a [%LANG%]\nb[%TNUM%]c", "a kor\nb-7c"},
        {"[%ARG  two words %][%ARG%]", "<two words><none>"},
        {"x[%UNKNOWN y%]z", "xz"},
        {"[%arg%]", ""},
        {"[%LANG\n%]", "[%LANG\n%]"},
        {"[%[%LANG%]%] 100%", "[%kor%] 100%"},
        {"[%LANG-x%]", "[%LANG-x%]"},
    };
    const char* language = "kor";
    int number = -7;
    const Directive table[] = {
        {"LANG", pfnPrtStr, reinterpret_cast<void**>(const_cast<char**>(&language)), 0},
        {"TNUM", pfnPrtInt, reinterpret_cast<void**>(&number), 0},
        {"ARG", printArgument, nullptr, 0},
        {}};
    for (const Row& r : rows) {
        kit::File f = kit::fileOf(r.input);
        EXPECT_EQ(outputOf([&] { strmParseDirective(f.get(), table); }), r.expected) << r.input;
    }
}

TEST_F(SupportCgi, TemplatesByLanguageAndNumber) {
    kit::writeFile(dir + "/doc/template/eng0/t.txt", "english");
    kit::writeFile(dir + "/doc/template/kor0/t.txt", "korean");
    kit::writeFile(dir + "/doc/template/kor2/t.txt", "");
    EXPECT_EQ(getTemplateLang(), 1);
    EXPECT_EQ(taken(getTemplateStr("t.txt", nullptr)), "english");
    setenv("HTTP_COOKIE", "lang=korean; tnum=2", 1);
    EXPECT_EQ(getTemplateLang(), 4);
    EXPECT_EQ(taken(getTemplateStr("t.txt", "")), "");
    setenv("HTTP_COOKIE", "lang=jpn; tnum=9", 1);
    EXPECT_EQ(getTemplateLang(), 2);
    EXPECT_EQ(taken(getTemplateStr("t.txt", "kor")), "korean");
    for (auto [name, language] :
         {std::pair{"t.txt", ""}, {"../kor0/t.txt", "kor"}, {"t.txt", "../template/kor"}})
        EXPECT_EQ(getTemplateStr(name, language), nullptr) << name;
    setenv("HTTP_COOKIE", "lang=xyz", 1);
    snprintf(conf.defaultTemplateLang, sizeof conf.defaultTemplateLang, "chn");
    EXPECT_EQ(getTemplateLang(), 3);
}

TEST_F(SupportCgi, MessageTable) {
    std::string conf = dir + "/root/conf";
    kit::writeFile(conf + "/msg.eng", "# comment\n81\tLowest\r\n8\teight\n81\tagain\n9\t");
    kit::writeFile(conf + "/msg.kor", "81\t\xB0\xA1\n");
    auto text = [&](int number, int language) {
        const char* t = msgGet(conf.c_str(), number, language);
        return std::string(t ? t : "(null)");
    };
    EXPECT_EQ(text(81, 1) + text(9, 1) + text(8, 99), "Lowesteight");
    EXPECT_EQ(text(81, 4) + text(81, 2) + text(1, 1), "\xB0\xA1(null)(null)");
    kit::writeFile(conf + "/msg.eng", "8\tnew\n");
    EXPECT_EQ(text(8, 1), "new");
}

TEST(SupportAuthCode, CarriesAnIdUntilItExpires) {
    time_t later = time(nullptr) + 100;
    std::string code = taken(authCodeMake("kim.lee", "secret", later));
    EXPECT_STREQ(strGetAuthCodeVal(code.c_str(), "secret"), "kim.lee");
    EXPECT_EQ(strGetAuthCodeVal(code.c_str(), "Secret"), nullptr);
    for (size_t i = 0; i < code.size(); i++) {
        std::string forged = code;
        forged[i] = forged[i] == 'A' ? 'B' : 'A';
        EXPECT_EQ(strGetAuthCodeVal(forged.c_str(), "secret"), nullptr) << i;
        EXPECT_EQ(strGetAuthCodeVal(code.substr(0, i).c_str(), "secret"), nullptr) << i;
    }
    EXPECT_EQ(strGetAuthCodeVal((code + "A").c_str(), "secret"), nullptr);
    std::string old = taken(authCodeMake("kim", "secret", time(nullptr)));
    EXPECT_EQ(strGetAuthCodeVal(old.c_str(), "secret"), nullptr);
    EXPECT_EQ(authCodeMake("", "secret", later), nullptr);
    EXPECT_EQ(authCodeMake(std::string(65, 'k').c_str(), "secret", later), nullptr);
}

}  // namespace
