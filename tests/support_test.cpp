// The support library: texts in place, growable texts, names of days and months; links, HTML and
// WML preparation, markup taken off, tokens replaced; clock parts and files; requests, headers,
// frames, templates, message tables and authentication codes.

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <regex>

#include "kit/calls.h"
#include "support/auth_code.h"
#include "support/page.h"

namespace {

using SupportCgi = kit::Site;
using SupportFile = kit::Site;
using kit::taken;

int sign(int n) {
    return (n > 0) - (n < 0);
}

std::string words(char* line) {
    std::string all;
    for (int i = 0; i < 5; i++) all += taken(strMakeWord(line, ' ')) + "|";
    return all;
}

std::string arguments(const char* text, const char* delimiters) {
    char area[64] = "old";
    bool isArea = getArgs(area, text, delimiters) == area;
    return (isArea ? "1 " : "0 ") + std::string(area);
}

TEST(SupportText, RowByRow) {
    kit::runTable(
        "support/text.table",
        {RESULT(strRmCrLf),
         RESULT(strRmWhiteSpace),
         RESULT(strRmHeadWhiteSpace),
         RESULT(strRmTailWhiteSpace),
         RESULT(strRmChar),
         RESULT(strTabToSpc),
         RESULT(strToLwr),
         RESULT(cgiSpcToPlus),
         RESULT(strCaseStr),
         RESULT(strChrNextStr),
         {"strCaseCmp",
          kit::result(+[](const char* a, const char* b) { return sign(strCaseCmp(a, b)); })},
         {"strNCaseCmp", kit::result(+[](const char* a, const char* b, int n) {
              return sign(strNCaseCmp(a, b, n));
          })},
         {"strChkHan", kit::result(+[](const char* text) { return strChkHan(text) != 0; })},
         {"words", kit::result(words)},
         {"getArgs", kit::result(arguments)}});
}

TEST(SupportText, GrowableText) {
    int length = 0, capacity = 0;
    char* text = memStrCat(memStrInit(), "ab", 4096, &length, &capacity);
    EXPECT_EQ(capacity, 4096);
    std::string block(5000, 'x');
    for (int i = 0; i < 4; i++) text = memStrCat(text, block.c_str(), 4096, &length, &capacity);
    EXPECT_EQ(length, 20002);
    EXPECT_EQ(capacity % 4096, 0);
    EXPECT_EQ(taken(text), "ab" + block + block + block + block);
}

TEST(SupportClock, Names) {
    EXPECT_STREQ(week_kor[5], "\xB1\xDD");
    EXPECT_TRUE(!week_eng[7] && !week_kor[7] && !month_eng[12]);
}

TEST(SupportSystem, RandomNumbers) {
    initRandom();
    bool seen[3] = {};
    for (int i = 0; i < 300; i++) seen[getRandom(3)] = true;
    EXPECT_TRUE(seen[0] && seen[1] && seen[2]);
    EXPECT_EQ(getRandom(-5), 0);
}

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

std::string record(const char* path, int size, int n) {
    std::string area(static_cast<size_t>(size), '?');
    int length = fileGetRecord(path, area.data(), size, n);
    return std::to_string(length) + " " + area;
}

TEST_F(SupportFile, RowByRow) {
    kit::runTable(
        "support/file.table",
        {RESULT(fileTotalLine), HEAP(fileGetLine), RESULT(record), RESULT(getTs), RESULT(getYear),
         RESULT(getMonth), RESULT(getDay), RESULT(fileGetNameFromFilePath)},
        dir);
}

TEST_F(SupportFile, CopyKeepsTheFile) {
    std::string from = dir + "/from", to = dir + "/to", content(3'000'000, 'n');
    kit::writeFile(from, content);
    kit::writeFile(to, std::string(4'000'000, 'o'));
    struct stat before, after;
    ASSERT_EQ(stat(to.c_str(), &before), 0);
    EXPECT_EQ(fileCopy(from.c_str(), to.c_str()), 0);
    ASSERT_EQ(stat(to.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(kit::readFile(to), content);
    EXPECT_EQ(fileCopy(to.c_str(), to.c_str()), -1);
    EXPECT_EQ(kit::readFile(to), content);
    EXPECT_EQ(fileCopy((dir + "/none").c_str(), to.c_str()), -1);
}

TEST_F(SupportFile, StreamTextsAndSizes) {
    kit::File f = kit::fileOf("0123456789");
    EXPECT_EQ(taken(fileStrmGetStr(4, f.get())), "0123");
    EXPECT_EQ(fileStrmGetSize(f.get()), 10);
    EXPECT_EQ(taken(fileStrmGetStr(INT_MAX, f.get())), "456789");
    EXPECT_EQ(fileStrmGetStr(1, f.get()), nullptr);
    fputs("more", f.get());
    EXPECT_EQ(fileStrmGetSize(f.get()), 14);
    EXPECT_EQ(ftell(f.get()), 14);
}

TEST_F(SupportFile, PathsAndState) {
    std::string link = dir + "/link", path = dir + "/f";
    kit::writeFile(path, "");
    ASSERT_EQ(symlink("f", link.c_str()), 0);
    EXPECT_EQ(chkExistFile(link.c_str()), 1);
    EXPECT_EQ(fileChgStat(path.c_str(), nullptr, "", 0640), 0);
    EXPECT_EQ(kit::modeOf(path), 0640);
    EXPECT_EQ(fileChgStat(path.c_str(), "no-such-user", nullptr, 0600), -1);
    EXPECT_EQ(kit::modeOf(path), 0600);
    EXPECT_EQ(fileChgStat(link.c_str(), nullptr, nullptr, 0777), -1);
    unlink(path.c_str());
    EXPECT_EQ(chkExistFile(link.c_str()), 0);

    EXPECT_GT(getDiskFreeSize(dir.c_str()), 0u);
    EXPECT_EQ(getDiskFreeSize((dir + "/none").c_str()), 0u);
}

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
