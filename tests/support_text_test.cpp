// Texts in place, growable texts, clock parts and names.

#include <climits>
#include <cstring>

#include "kit/site.h"

namespace {

using kit::taken;

TEST(SupportText, InPlace) {
    struct Row {
        const char* label;
        std::function<char*(char*)> edit;
        const char *input, *expected;
    } rows[] = {
        {"CR and LF anywhere", strRmCrLf, "a\r\nb\n\r", "ab"},
        {"all white space", strRmWhiteSpace, " a\t b\v\f\r\n", "ab"},
        {"head", strRmHeadWhiteSpace, " \t\na b ", "a b "},
        {"tail", strRmTailWhiteSpace, " a b\t\r\n ", " a b"},
        {"tail of blanks only", strRmTailWhiteSpace, " \n", ""},
        {"a byte above 0x7F", [](char* t) { return strRmChar(t, 0xA1); }, "\xA1x\xA1", "x"},
        {"tabs", strTabToSpc, "a\t\tb", "a  b"},
        {"lower case of ASCII only", strToLwr, "AZ@[\xC0", "az@[\xC0"},
        {"plus", cgiSpcToPlus, " a b+", "+a+b+"},
    };
    for (const Row& r : rows) {
        std::string text = r.input;
        EXPECT_EQ(r.edit(text.data()), text.data()) << r.label;
        EXPECT_STREQ(text.c_str(), r.expected) << r.label;
        EXPECT_EQ(r.edit(nullptr), nullptr) << r.label;
    }
}

TEST(SupportText, CompareAndFind) {
    EXPECT_EQ(strCaseCmp("aBc", "AbC"), 0);
    EXPECT_GT(strCaseCmp("\xC0", "z"), 0);
    EXPECT_LT(strCaseCmp(nullptr, "a"), 0);
    EXPECT_EQ(strNCaseCmp("Subject: x", "SUBJECT", 7), 0);
    EXPECT_LT(strNCaseCmp("Sub", "SUBJECT", 7), 0);
    EXPECT_STREQ(strCaseStr("x-UTF-8", "-utf-"), "-UTF-8");
    EXPECT_STREQ(strChrNextStr("key =\t value = 2\n", '='), "value = 2\n");
    EXPECT_EQ(strChrNextStr("key", '='), nullptr);
    EXPECT_TRUE(!strChkHan("abc~") && strChkHan("abc\x80"));
}

TEST(SupportText, Words) {
    char line[] = "From kim  Fri\n";
    for (const char* word : {"From", "kim", "(null)", "Fri\n", "(null)"})
        EXPECT_EQ(taken(strMakeWord(line, ' ')), word);
}

TEST(SupportText, Arguments) {
    struct Row {
        const char *src, *delimiters, *expected;
    } rows[] = {
        {"Kim <kim@example.org> <b>", "<>", "kim@example.org"},
        {"say 'hi' now", "'", "hi"},
        {"<>", "<>", ""},
        {"no closing <kim", "<>", nullptr},
        {"> <", "<>", nullptr},
    };
    for (const Row& r : rows) {
        char dst[64] = "old";
        EXPECT_EQ(getArgs(dst, r.src, r.delimiters), r.expected ? dst : nullptr) << r.src;
        EXPECT_STREQ(dst, r.expected ? r.expected : "") << r.src;
    }
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

TEST(SupportClock, PartsAndNames) {
    setenv("TZ", "Asia/Seoul", 1);
    time_t t = getTs(2001, 3, 2, 9, 5, 0);
    EXPECT_EQ(t, 983491500);
    EXPECT_EQ(getYear(t) * 10000 + getMonth(t) * 100 + getDay(t), 20010302);
    EXPECT_EQ(getTs(2001, 2, 30, 0, 0, 0), getTs(2001, 3, 2, 0, 0, 0));
    EXPECT_EQ(getTs(INT_MIN, 1, 1, 0, 0, 0), -1);
    EXPECT_EQ(getYear(LONG_MAX) + getMonth(LONG_MAX) + getDay(LONG_MAX), 0);
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

}  // namespace
