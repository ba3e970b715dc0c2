// Conversion between character sets: families, choices of source and target, results that must
// fail.

#include <gtest/gtest.h>

#include <string>

#include "tests/kit/site.h"

namespace {

using kit::taken;
using std::string;

// Every name leads to the page set of its family, and the converter knows it in both directions.
TEST(Charset, Families) {
    const char* families[][17] = {
        {"EUC-KR", "EUCKR", "ISO-2022-KR", "CSISO2022KR", "CSEUCKR"},
        {"SHIFT-JIS", "SJIS", "JP", "EUC-JP", "EUCJP", "ISO-2022-JP", "ISO-2022-JP-1",
         "ISO-2022-JP-2", "CSISO2022JP", "ISO646-JP", "CSISO2022JP2",
         "EXTENDED_UNIX_CODE_PACKED_FORMAT_FOR_JAPANESE", "JIS_C6220-1969-RO", "ISO-IR-14",
         "CSISO14JISC6220RO", "CSEUCPKDFMTJAPANESE"},
        {"GB2312", "CN-GB", "GB_1988-80", "CSISO57GB1988", "CSGB2312"},
        {"BIG5", "BIG-5", "BIGFIVE", "BIG-FIVE", "CSBIG5", "CN-BIG5", "UNICODEBIG"},
        {"HZ", "HZ-GB-2312"}};
    for (auto& family : families)
        for (const char** name = family; *name; name++) {
            string lower = *name;
            for (char& c : lower) c = static_cast<char>(tolower(c));
            EXPECT_STREQ(getDefaultCharSet(lower.c_str()), family[0]);
            EXPECT_EQ(taken(strConvCharSet(family[0], lower.c_str(), "Hello")), "Hello") << lower;
            EXPECT_NE(taken(strConvCharSet(*name, family[0], "Hello")), "(null)") << *name;
        }
    EXPECT_STREQ(getDefaultCharSet("EUC-KRX"), "EUC-KRX");
    EXPECT_STREQ(getDefaultCharSet("a-name-of-more-than-thirty-characters"),
                 "a-name-of-more-than-thirty-cha");
    char* last = getDefaultCharSet("big-five");
    EXPECT_STREQ(getDefaultCharSet(last), "BIG5");
}

TEST(Charset, Languages) {
    for (auto [code, charset] : {std::pair{"kor", "euc-kr"},
                                 {"jpn", "iso-2022-jp"},
                                 {"chn", "gb2312"},
                                 {"KOR", "iso-8859-1"}})
        EXPECT_STREQ(mailGetLangCharSet(code), charset);
}

struct Row {
    const char *label, *charset;
    string text, expected;
};

TEST(Charset, ForDisplay) {
    const Row rows[] = {
        {"alias", "ISO-2022-JP", "\x1b$B0!\x1b(BZ", "\x88\x9fZ"},
        {"own decoder", "iso-2022-jp", "\x1b$B-!\x1b(B", "\x87\x40"},
        {"own Korean decoder", "iso-2022-kr", "\x1b$)C\x0e\x30\x21\x0f\xff", "\xb0\xa1\xff"},
        {"aliases have no own decoder", "csiso2022jp", "\x1b$B-!\x1b(B", "(null)"},
        {"Korean Unicode", "utf-8", "가", "\xb0\xa1"},
        {"half-width katakana", "UTF-8", "ｱ", "\xb1"},
        {"simplified", "utf-8", "么们", "\xc3\xb4\xc3\xc7"},
        {"no page set holds it", "utf-8", "\xd8\xa7", "(null)"},
        {"utf8 is no UTF name here", "utf8", "é", "é"},
        {"one bad byte", "euc-kr", "\xb0\xa1\xff!", "(null)"},
        {"incomplete end", "euc-kr", "\xb0\xa1\xb0", "\xb0\xa1"},
        {"empty text", "euc-kr", "", "(null)"},
        {"options are no name", "utf-8//ignore", "abc", "(null)"},
        {"a converter that no mail needs", "ISO-2022-CN-EXT", "abc", "(null)"},
        {"the same by another name", "iso2022cn-ext", "abc", "(null)"},
    };
    for (auto& row : rows)
        EXPECT_EQ(taken(mailDecodeCharSet(row.text.c_str(), row.charset)), row.expected)
            << row.label;
}

TEST(Charset, ForSending) {
    const Row rows[] = {
        {"UTF from Japanese pages", "jpn-utf-8", "\x88\x9f", "亜"},
        {"from GB2312", "cnt-utf-8", "\xd6\xd0", "中"},
        {"from Big5", "cns-utf-8", "\xa4\xa4", "中"},
        {"no such prefix", "fra-utf-8", "a", "(null)"},
        {"a short text in a stateful set", "ISO-2022-KR", "\xb0\xa1", "\x1b$)C\x0e\x30\x21\x0f"},
        {"ends in ASCII", "ISO-2022-JP", "\x88\x9f", "\x1b$B0!\x1b(B"},
        {"same set", "euc-kr", "\xb0\xa1", "\xb0\xa1"},
    };
    for (auto& row : rows)
        EXPECT_EQ(taken(mailEncodeCharSet(row.text.c_str(), row.charset)), row.expected)
            << row.label;
    for (char* none : {mailDecodeCharSet(nullptr, "euc-kr"), mailDecodeCharSet("a", nullptr),
                       mailEncodeCharSet(nullptr, "euc-kr"), mailEncodeCharSet("a", nullptr),
                       mailGetSrcCharSet(nullptr)})
        EXPECT_EQ(none, nullptr);
}

// A text whose form grows as much as it can, and one beyond any first guess of the room.
TEST(Charset, LongTexts) {
    string sjis, mail, utf;
    for (int i = 0; i < 20000; i++) sjis += "\xb1", utf += "ｱ";
    EXPECT_EQ(taken(strConvCharSet("utf-8", "shift-jis", sjis.c_str())), utf);
    EXPECT_EQ(taken(strConvCharSet("shift-jis", "utf-8", utf.c_str())), sjis);
    sjis.clear();
    for (int i = 0; i < 20000; i++) sjis += "\x88\x9fz", mail += "\x1b$B0!\x1b(Bz";
    EXPECT_EQ(taken(strConvCharSet("iso-2022-jp", "shift-jis", sjis.c_str())), mail);
}

TEST(Charset, GuessesTheSource) {
    for (auto [text, charset] : {std::pair{"\xb0\xa1", "EUC-KR"},
                                 {"\xb0\xa1\x8e\xb1", "EUC-JP"},
                                 {"\xc9\xcf\xa9\xa4", "GB2312"},
                                 {"\xa4\x40", "BIG5"},
                                 {"\xff", nullptr},
                                 {"", nullptr}})
        EXPECT_STREQ(mailGetSrcCharSet(text), charset) << text;
}

}  // namespace
