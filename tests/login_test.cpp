// Message texts, dates, login checks and notices. The message table and the
// template are written for each test; the support library reads them.

#include <climits>
#include <cstdlib>

#include "kit/site.h"
#include "mail/storage/format_filter.h"
#include "support/auth_code.h"

namespace {

class Login : public kit::Site {
  protected:
    void messages(const std::string& table) { kit::writeFile(dir + "/root/conf/msg.eng", table); }
    static void cookies(const char* header) { setenv("HTTP_COOKIE", header, 1); }
};

TEST_F(Login, FormatsKeepOnlyWhatTheArgumentsServe) {
    using attalven::FormatArguments;
    constexpr FormatArguments any = attalven::kTrustedArguments, none = {0, true}, one = {1, true};
    const struct {
        const char* text;
        FormatArguments arguments;
        const char* expected;
    } rows[] = {
        {"%lld %hhu %zx %lF %p %c %-5s %05.2G", any, "%lld %hhu %zx %lF %p %c %-5s %05.2G"},
        {"%n %hn", any, "%%n %%hn"},
        {"%*d %.*s %1$d", any, "%%*d %%.*s %%1$d"},
        {"%300d %301d %.300s %.301s %99999999999d", any,
         "%300d %%301d %.300s %%.301s %%99999999999d"},
        {"%ls %lc %hs %lp %lld% lllld %Lf %hf", any, "%%ls %%lc %%hs %%lp %lld%% lllld %%Lf %%hf"},
        {"%%%-+ 0#x%%%%100% ", any, "%%%-+ 0#x%%%%100%% "},
        {"%d %%", none, "%%d %%"},
        {"%s %ld %d %d", one, "%%s %%ld %d %%d"},
    };
    for (const auto& r : rows) {
        attalven::Text out;
        attalven::filterFormat(r.text, r.arguments, out);
        EXPECT_EQ(out.view(), r.expected) << r.text;
    }
}

TEST_F(Login, MessagesTakeFiveSlotsInTurn) {
    messages("1\tone %d\n2\t%s and %s\n3\t" + std::string(299, 'x') + "\xb0\xa1\n4\t%n100%\n");
    char* first = mailGetMsg(1, 11);
    EXPECT_STREQ(first, "one 11");
    EXPECT_STREQ(mailGetMsg(2, "a", "b"), "a and b");
    EXPECT_EQ(mailGetMsg(3), std::string(299, 'x')) << "no half of a character";
    EXPECT_STREQ(mailGetMsg(4), "%n100%");
    EXPECT_STREQ(mailGetMsg(99, 1), "");
    EXPECT_STREQ(first, "one 11");
    EXPECT_EQ(mailGetMsg(1, 12), first);
}

TEST_F(Login, LoginErrorsFillTheirLimits) {
    messages("5\tfive %d %s\n110\tat most %d characters of %d\n111\t%s%d\n");
    EXPECT_STREQ(mailGetLoginErrMsg(-110), "at most 15 characters of %d");
    EXPECT_STREQ(mailGetLoginErrMsg(111), "%s255");
    EXPECT_STREQ(mailGetLoginErrMsg(-5), "five %d %s");
    EXPECT_STREQ(mailGetLoginErrMsg(INT_MIN), "");
}

TEST_F(Login, FailurePageFollowsTheCookies) {
    for (const char* set : {"kor2", "eng1", "..1"})
        kit::writeFile(dir + "/doc/template/" + set + "/t_login_fail.html",
                       std::string(set) + "|[%LANG%]|[%TNUM%]|[%DEFAULT%]|\n");
    conf.defaultTemplateNum = 1;
    const std::string script = "<SCRIPT LANGUAGE=\"JavaScript\">\nalert('no');\n</SCRIPT>";
    const struct {
        const char *cookies, *page;
    } rows[] = {
        {"lang=; tnum=0", "eng1|eng|1||\n"},
        {"lang=korean; tnum=2x", "kor2|kor|2||\n"},
        {"lang=../; tnum=x", "eng1|eng|1||\n"},
        {"lang=jpn", ""},
    };
    for (const auto& r : rows) {
        cookies(r.cookies);
        EXPECT_EQ(kit::outputOf([] { mailLoginFail("no"); }), script + r.page) << r.cookies;
    }
}

TEST_F(Login, OnlyTheCodesOwnUserPasses) {
    time_t later = time(nullptr) + 100;
    auto check = [&](const char* id, const char* carried, const char* key) {
        return mailAuthUserId(id, kit::taken(authCodeMake(carried, key, later)).c_str());
    };
    EXPECT_EQ(check("kim", "kim", conf.adminKey), 1);
    EXPECT_EQ(check("Kim", "kim", conf.adminKey), 0);
    EXPECT_EQ(check("kim", "kim", "other"), 0);
    EXPECT_EQ(check("abcdefghijklmno", "abcdefghijklmnop", conf.adminKey), 0) << "cut id";
    EXPECT_EQ(mailAuthUserId("", "no code"), 0);
    EXPECT_EQ(mailUserLevel("sysop"), 0);
    EXPECT_EQ(mailUserLevel("Sysop"), 2);
    conf.adminId[0] = 0;
    EXPECT_EQ(mailUserLevel(""), 2);
}

TEST_F(Login, MemoAndNewMail) {
    EXPECT_EQ(kit::outputOf([] { mailChkMemo("kim"); }), "");
    kit::writeFile(dir + "/mbox/k/i/kim/memo", "a memo");
    EXPECT_EQ(kit::outputOf([] { mailChkMemo("kim"); }),
              "<SCRIPT LANGUAGE=\"JavaScript\">\nmemoViewWin();</SCRIPT>\n");

    const std::string start = "From a@example.org\nSubject: x\n", end = "\nbody\n\n";
    std::string spool;
    for (const char* status : {"", "Status: RO\n", "", "Status:  O\n"})
        spool += start + status + end;
    kit::writeFile(dir + "/spool/k/i/kim", spool);
    kit::writeFile(dir + "/spool/b.example/k/i/kim", start + end);
    EXPECT_EQ(mailNewMailChk("kim", "", 1), 2);
    EXPECT_EQ(mailNewMailChk("kim", "b.example", 1), 1);
    EXPECT_EQ(mailNewMailChk("kim", "", 0), 0);
    EXPECT_EQ(mailNewMailChk("lee", "", 1) + mailNewMailChk("", "", 1), 0);
    EXPECT_EQ(kit::readFile(dir + "/spool/k/i/kim"), spool);
}

TEST_F(Login, DatesInTheLanguageOfThePage) {
    setenv("TZ", "KST-9", 1);
    time_t friday = 983491500;  // 2001-03-02 00:05 UTC
    cookies("lang=eng");
    EXPECT_EQ(mailGetDate(friday), "03/02/2001(" + std::string(week_eng[5]) + ")09:05");
    cookies("lang=kor");
    EXPECT_EQ(mailGetDate(friday), "2001/03/02(" + std::string(week_kor[5]) + ")09:05");
    EXPECT_STREQ(mailGetDate(INT64_MAX), "");
}

}  // namespace
