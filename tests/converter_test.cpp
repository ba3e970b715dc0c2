// The converter of the support library: names, wider tables, HZ, positions after a failure, kept
// handles.

#include <gtest/gtest.h>

#include "support/support.h"
#include "tests/kit/conversion.h"

namespace {

using kit::Outcome;
using std::string;

const msiconv_t none = reinterpret_cast<msiconv_t>(-1);

Outcome run(const char* target, const char* source, const string& text, size_t step = 4096) {
    msiconv_t cd = msiconv_open(target, source);
    if (cd == none) return {"", EBADF, 0};
    Outcome o = kit::convertAll([cd](auto... a) { return msiconv(cd, a...); }, text, step);
    msiconv_close(cd);
    return o;
}

TEST(Converter, OpensNamesOnly) {
    for (const char* name : {"ks_c_5601-1987", "x-windows-949", "Windows-31J", "x-sjis", "gbk"})
        EXPECT_EQ(run("utf-8", name, "Hello").text, "Hello") << name;
    const string longName(65, 'a');
    for (const char* name : {"", "x-unknown", "UTF-8//TRANSLIT", "/", "a b", longName.c_str()}) {
        EXPECT_EQ(msiconv_open("UTF-8", name), none) << name;
        EXPECT_EQ(msiconv_open(name, "UTF-8"), none) << name;
    }
}

struct Row {
    const char *label, *target, *source;
    string input;
    Outcome expected;
};

const Row rows[] = {
    {"extended syllable read", "UTF-8", "EUC-KR", "\xb0\xa1\x8c\x63!", {"가똠!", 0, 5}},
    {"extended syllable written", "EUC-KR", "UTF-8", "가똠", {"\xb0\xa1\x8c\x63", 0, 6}},
    {"Korean check is strict", "EUC-KR", "euc-kr", "\xb0\xa1\x8c\x63", {"\xb0\xa1", EILSEQ, 2}},
    {"cut before a bad byte", "UTF-8", "EUC-KR", "\xb0\xa1\xb0\x80", {"가", EILSEQ, 2}},
    {"incomplete end", "UTF-8", "EUC-KR", "\xb0\xa1\xb0", {"가", EINVAL, 2}},
    {"Japanese control character", "EUC-JP", "EUC-JP", "\xb0\xa1\x93\xfa", {"\xb0\xa1", EILSEQ, 2}},
    {"single shifts", "UTF-8", "EUC-JP", "\x8e\xb1\x8f\xb0\xa1", {"ｱ丂", 0, 5}},
    {"backslash and tilde", "UTF-8", "SJIS", "\xb1\\\x95\x5c~\x83\x7e", {"ｱ\\表~ミ", 0, 7}},
    {"and back", "SJIS", "UTF-8", "ｱ\\表~ミ", {"\xb1\\\x95\x5c~\x83\x7e", 0, 11}},
    {"to mail in ASCII mode", "ISO-2022-JP", "SJIS", "\x88\x9f\\", {"\x1b$B0!\x1b(B\\", 0, 3}},
    {"strict wave dash", "UTF-8", "SHIFT-JIS", "\x81\x60", {"〜", 0, 2}},
    {"wide dash written", "SHIFT-JIS", "UTF-8", "～①", {"\x81\x60\x87\x40", 0, 6}},
    {"single bytes of the wide table", "UTF-8", "SHIFT-JIS", "\xa0z", {"", EILSEQ, 0}},
    {"Chinese extension read", "UTF-8", "GB2312", "\x96\x7c\xd6\xd0", {"東中", 0, 4}},
    {"not written", "GB2312", "UTF-8", "中東", {"\xd6\xd0", EILSEQ, 3}},
    {"dash and dot written", "GB2312", "UTF-8", "—·", {"\xa1\xaa\xa1\xa4", 0, 5}},
    {"Hong Kong", "UTF-8", "BIG5", "\xa4\xa4\x9d\xf7\xfa\x40z", {"中咗𠕇z", 0, 7}},
    {"circled digit", "BIG5", "UTF-8", "①", {"\xc6\xa1", 0, 3}},
    {"waiting character", "BIG5", "UTF-8", "Êx", {"\x88\x66x", 0, 3}},
    {"closed shift state", "ISO-2022-KR", "EUC-KR", "\xb0\xa1", {"\x1b$)C\x0e\x30\x21\x0f", 0, 2}},
    // The HZ texts agree with another implementation's; the tolerances are ours.
    {"open end", "GB2312", "HZ", "~{VP", {"\xd6\xd0", 0, 4}},
    {"tilde and joined line", "GB2312", "HZ", "~~a~\nb", {"~ab", 0, 6}},
    {"line end leaves the mode", "GB2312", "HZ", "~{VP\nab~}", {"\xd6\xd0\nab", 0, 9}},
    {"needless escapes", "GB2312", "HZ-GB-2312", "~}~{~{VP~}~}", {"\xd6\xd0", 0, 12}},
    {"tilde at the end", "GB2312", "HZ", "ab~", {"ab", EINVAL, 2}},
    {"half a pair", "GB2312", "HZ", "~{VPN", {"\xd6\xd0", EINVAL, 4}},
    {"blank in a pair", "GB2312", "HZ", "~{VP ~}", {"\xd6\xd0", EILSEQ, 4}},
    {"no such character", "UTF-8", "HZ", "a~{VP(;~}", {"a中", EILSEQ, 5}},
    {"written", "HZ", "UTF-8", "中文a~中\n中", {"~{VPND~}a~~~{VP~}\n~{VP~}", 0, 15}},
    {"a character it lacks", "HZ", "UTF-8", "中東", {"~{VP", EILSEQ, 3}},
    {"checked", "HZ", "HZ", "~{VP~}~\n~{ND~}a", {"~{VPND~}a", 0, 15}},
};

// However small the pieces of output, the text, the error and its place are the same; a long text
// passes through several stages.
TEST(Converter, ConvertsInPieces) {
    for (size_t step : {8u, 9u, 11u, 64u, 4096u})
        for (const Row& row : rows)
            EXPECT_EQ(run(row.target, row.source, row.input, step), row.expected)
                << row.label << step;
    string hz, gb;
    for (int i = 0; i < 1000; i++) gb += "\xd6\xd0z~ ", hz += "~{VP~}z~~ ";
    EXPECT_EQ(run("HZ", "GB2312", gb), (Outcome{hz, 0, gb.size()}));
    EXPECT_EQ(run("GB2312", "HZ", hz), (Outcome{gb, 0, hz.size()}));
    EXPECT_EQ(run("UTF-8", "HZ", hz + "~{(;").consumed, hz.size() + 2);
}

TEST(Converter, KeepsHandles) {
    const char* sets[] = {"SJIS", "GB2312", "BIG5", "UTF-8", "HZ", "ISO-2022-JP"};
    std::vector<msiconv_t> open;
    for (int i = 0; i < 3 * 36; i++) {
        open.push_back(msiconv_open(sets[i / 6 % 6], sets[i % 6]));
        ASSERT_NE(open.back(), none);
        if (open.size() < 6) continue;
        for (msiconv_t cd : open) EXPECT_EQ(msiconv_close(cd), 0);
        open.clear();
    }
    // What one use left behind does not show in the next.
    EXPECT_EQ(run("HZ", "UTF-8", "中東").error, EILSEQ);
    EXPECT_EQ(run("HZ", "UTF-8", "a").text, "a");
    EXPECT_EQ(run("ISO-2022-JP", "SHIFT-JIS", "\x88\x9f\xff").error, EILSEQ);
    EXPECT_EQ(run("ISO-2022-JP", "SHIFT-JIS", "a").text, "a");
    EXPECT_EQ(msiconv_close(none), -1);
}

}  // namespace
