// Requests, headers, frames, templates, message tables and authentication codes.

#include "kit/calls.h"
#include "support/auth_code.h"
#include "support/page.h"

namespace {

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

char* cookie(const char* header, const char* name) {
    setenv("HTTP_COOKIE", header, 1);
    return cgiCkGetVal(name);
}

void printArgument(const char* arg, void**) {
    printf("<%s>", arg ? arg : "none");
}

void printDirectives(const char* text) {
    const char* language = "kor";
    int number = -7;
    const Directive table[] = {
        {"LANG", pfnPrtStr, reinterpret_cast<void**>(const_cast<char**>(&language)), 0},
        {"TNUM", pfnPrtInt, reinterpret_cast<void**>(&number), 0},
        {"ARG", printArgument, nullptr, 0},
        {}};
    strmParseDirective(kit::fileOf(text).get(), table);
}

void setDefaultLanguage(const char* name) {
    snprintf(conf.defaultTemplateLang, sizeof conf.defaultTemplateLang, "%s", name);
}

TEST_F(SupportCgi, RowByRow) {
    kit::runTable("support/request.table",
                  {RESULT(cgiGetMSIEVer), RESULT(cgiGetBrowserLangType), RESULT(cookie),
                   PRINTED(cgiMimeHeader), PRINTED(pageSetCharSet), PRINTED(htmlHeadStart),
                   PRINTED(htmlBodyStart), HEAP(cgiCharToHex), PRINTED(printDirectives),
                   RESULT(getTemplateLang), HEAP(getTemplateStr), PRINTED(setDefaultLanguage),
                   RESULT(msgGet)},
                  dir);
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
