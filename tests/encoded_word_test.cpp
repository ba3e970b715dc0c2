// Encoded words of headers: decoding and encoding.

#include <gtest/gtest.h>

#include <string>

#include "tests/kit/site.h"

namespace {

using kit::taken;
using std::string;

struct Row {
    const char* label;
    string value, expected;
};

TEST(EncodedWords, Decode) {
    const Row rows[] = {
        {"Q", "=?iso-8859-1?Q?Caf=E9_au_lait?=", "Caf\xe9 au lait"},
        {"blank between words", "=?euc-kr?B?sKE=?= =?euc-kr?b?sKI=?=", "\xb0\xa1 \xb0\xa2"},
        {"Unicode, with a language", "=?utf-8?B?6rCA?==?utf-8*ko?B?6rCA?=", "\xb0\xa1\xb0\xa1"},
        {"the last set rules", "=?utf-8?Q?a?= \xb0\xa1=?euc-kr?Q?=B0=A2?=", "a \xb0\xa1\xb0\xa2"},
        {"unknown set", "Re: =?x?q?a?= tail", "Re: a tail"},
        {"no end", "=?euc-kr?B?abc", "abc"},
        {"no end of the set", "a =?euc-kr", "a euc-kr"},
        {"start at the very end", "a=?", "a=?"},
        {"no word, then one", "=?=?x?q?b?=", "=?b"},
        {"empty words", "=?x?Q?\?=a=?x?B?\?=", "a"},
        {"empty set counts as none", "=?euc-kr?Q?=B0=A1?= =??\?=B0?=", "\xb0\xa1 \xb0"},
        {"escaped underscore", "=?x?Q?a=5Fb_c?=", "a_b c"},
        {"letter that carries over", "=?x?Q?=41?= =?x?z?=41?=", "A A"},
        {"soft break ends the word", "=?x?Q?a=\nb?=c", "ac"},
        {"NUL ends the word", "=?x?B?YQBi?=c", "ac"},
        {"raw Japanese", "\x1b$B0!\x1b(B", "\x88\x9f"},
        {"raw Korean", "a\x1b$)C\x0e\x30\x21\x0f", "a\xb0\xa1"},
        {"long name", "=?" + string(200, 'x') + "?Q?=41?=", "A"},
        {"bytes that do not convert", "=?euc-kr?Q?=FF=5A?=", "\xffZ"},
    };
    for (auto& row : rows)
        EXPECT_EQ(taken(mailDecodeSubject(row.value.c_str())), row.expected) << row.label;
}

TEST(EncodedWords, EncodeBase64) {
    const string word42 = "MDEyMzQ1Njc4OTAxMjM0NTY3ODkwMTIzNDU2Nzg5MDEyMzQ1Njc4OTAx",
                 text42 = "012345678901234567890123456789012345678901";
    for (auto& [text, charset, expected] :
         {std::tuple<string, string, string>{text42, "x", "=?x?B?" + word42 + "?="},
          {text42 + "a", "x", "=?x?B?" + word42 + "?=\n\t=?x?B?YQ==?="},
          {"a", "KOR-UTF-8", "=?utf-8?B?YQ==?="},
          {"a", "x y\r\nz?", "=?xyz?B?YQ==?="},
          {"a", string(120, 'L'), "=?" + string(100, 'l') + "?B?YQ==?="},
          {"", "x", "(null)"}})
        EXPECT_EQ(taken(mailEncodeSubjectBase64(text.c_str(), charset.c_str())), expected);
}

TEST(EncodedWords, EncodeQuoted) {
    EXPECT_EQ(taken(mailEncodeSubjectQP("a b", "ISO-8859-1")), "=?iso-8859-1?Q?a=20b?=");
    // A line end sets the counter, which the calls share, to 0.
    EXPECT_EQ(taken(mailEncodeSubjectQP("x_y?\r\n", "x")), "=?x?Q?x=5Fy=3F\n?=");
    string z(56, 'z');
    EXPECT_EQ(taken(mailEncodeSubjectQP((z + "zz").c_str(), "x")),
              "=?x?Q?" + z + "?=\n\t=?x?Q?zz?=");
    EXPECT_EQ(taken(mailEncodeSubjectQP((z + "Az").c_str(), "x")),
              "=?x?Q?" + string(54, 'z') + "?=\n\t=?x?Q?zz=41z?=");
    EXPECT_EQ(taken(mailEncodeSubjectQP("\n", "x")), "=?x?Q?\n?=");
    // A carried counter above 55 folds at once, before any byte.
    EXPECT_EQ(taken(mailEncodeSubjectQP(z.c_str(), "x")), "=?x?Q?" + z + "?=");
    EXPECT_EQ(taken(mailEncodeSubjectQP("\r", "x")), "=?x?Q?\?=\n\t=?x?Q?\?=");
    for (char* none :
         {mailEncodeSubjectQP("", "x"), mailEncodeSubjectQP(nullptr, "x"),
          mailEncodeSubjectBase64(nullptr, "x"), mailDecodeSubject(nullptr), mailDecodeSubject("")})
        EXPECT_EQ(none, nullptr);
}

TEST(EncodedWords, EncodeSubject) {
    struct {
        const char *label, *text, *charset;
        int code;
        const char* expected;
    } rows[] = {
        {"quoted", "\xb0\xa1", "euc-kr", 2, "=?euc-kr?Q?=B0=A1?="},
        {"Unicode", "\xb0\xa1", "kor-utf-8", 3, "=?utf-8?B?6rCA?="},
        {"mail set", "\x88\x9f", "ISO-2022-JP", 3, "=?iso-2022-jp?B?GyRCMCEbKEI=?="},
        {"without words", "\x88\x9f", "ISO-2022-JP", 1, "\x1b$B0!\x1b(B"},
        {"no conversion: page set", "\xff\xff", "ISO-2022-JP", 3, "=?shift-jis?B?//8=?="},
        {"unknown set", "a", "X-Set", 3, "=?x-set?B?YQ==?="},
        {"does not convert, without words", "\xff\xff", "euc-kr", 0, "\xff\xff"},
        {"no set", "a", "", 3, "a"},
        {"empty", "", "euc-kr", 3, "(null)"},
        {"empty without words", "", "euc-kr", 1, ""},
        {"NULL", nullptr, "euc-kr", 1, "(null)"},
    };
    for (auto& row : rows)
        EXPECT_EQ(taken(mailEncodeSubject(row.text, row.charset, row.code)), row.expected)
            << row.label;
}

}  // namespace
