// Texts in place, growable texts, names of days and months.

#include "kit/calls.h"

namespace {

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

}  // namespace
