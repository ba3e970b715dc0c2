#include "kit/site.h"

namespace {

using Converter = int (*)(char*, const char*);

std::string converted(Converter convert, const std::string& text) {
    std::unique_ptr<char[]> dst(new char[text.size() + 1]);
    int n = convert(dst.get(), text.c_str());
    EXPECT_EQ(dst[static_cast<size_t>(n)], 0);
    return {dst.get(), static_cast<size_t>(n)};
}

TEST(Iso2022, FindsDesignators) {
    const struct {
        const char* text;
        int korean, japanese;
    } rows[] = {
        {"", 0, 0},
        {"\n\x1b$)C", 0, 0},
        {"A\x1b$)C\n", 1, 0},
        {"A\n\x1b$)C", 0, 0},
        {"\x1b$)\x1b$)C", 1, 0},
        {"\x1b(B\x1b$B", 0, 0},
        {"A\n\x1b$B0!", 0, 3},
        {"\x1b(I\x1b$@", 0, 2},
        {"\x1b(J\x1b$)C", 1, 1},
        {"\x1b$", 0, 0},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(SearchISO2022KRDesignator(r.text), r.korean) << r.text;
        EXPECT_EQ(SearchISO2022JPDesignator(r.text), r.japanese) << r.text;
    }
}

TEST(Iso2022, Converts) {
    const struct {
        const char* label;
        Converter convert;
        std::string text, expected;
    } rows[] = {
        {"Korean", DecodeISO2022KR,
         "\x1b$)C\x0e\x30\x21\x0f"
         "A",
         "\xb0\xa1"
         "A"},
        {"blanks and line ends in Korean", DecodeISO2022KR, "\x0e\x30 \t\n0", "\xb0 \t\x8a\xb0"},
        {"other escapes stay", DecodeISO2022KR, "\x1b$)\xa1", "\x1b$)\xa1"},
        {"Japanese", DecodeISO2022JP, "\x1b$B\x30\x21\x1b(BA",
         "\x88\x9f"
         "A"},
        {"other designators are text", DecodeISO2022JP, "\x1b(JA\x1b$@", "\x1b(JA\x1b$@"},
        {"blank between kanji", DecodeISO2022JP, "\x1b$B\x30\x21 !!", "\x88\x9f \x81\x40"},
        {"lone byte of kanji", DecodeISO2022JP, "\x1b$B\x30\x21\x30", "\x88\x9f\x30"},
        {"EUC-JP", DecodeEucJP2ShiftJIS,
         "\xb0\xa1\x8e\xb1"
         "A",
         "\x88\x9f\xb1"
         "A"},
        {"cut and odd pairs", DecodeEucJP2ShiftJIS,
         "\x8e"
         "A\xb0"
         "A\x8e\xe0"
         "A\xb0",
         "\x8e"
         "A\xb0"
         "A\x8e\xe0"
         "A\xb0"},
    };
    for (const auto& r : rows) EXPECT_EQ(converted(r.convert, r.text), r.expected) << r.label;
}

TEST(Iso2022, ShiftsJisPairs) {
    const int rows[][4] = {{0x30, 0x21, 0x88, 0x9F}, {0x21, 0x21, 0x81, 0x40},
                           {0x60, 0x7E, 0xE0, 0xFC}, {0x5F, 0x60, 0xE0, 0x80},
                           {0x5E, 0x21, 0x9F, 0x9F}, {0x21, 0x5F, 0x81, 0x7E}};
    for (const auto& r : rows) {
        int c1 = r[0], c2 = r[1];
        jis2sjis(&c1, &c2);
        EXPECT_EQ(c1, r[2]);
        EXPECT_EQ(c2, r[3]);
    }
}

TEST(Iso2022, StreamDecodesFromTheDesignatorOn) {
    kit::File in = kit::fileOf("\x0e\x30\x21\n\x1b$)C\n\x0e\x30\x21\n\x30\x21\nrest\n");
    kit::File out = kit::fileOf("");
    strmDecodeISO2022KR(out.get(), in.get(), 16);
    EXPECT_EQ(kit::contentOf(out.get()), "\x0e\x30\x21\n\n\xb0\xa1\x8a\x30\x21\n");
    EXPECT_EQ(ftell(in.get()), 16);
}

}  // namespace
