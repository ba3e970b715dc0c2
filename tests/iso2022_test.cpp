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
    for (auto [text, korean, japanese] : {std::tuple{"A\x1b$)C\n", 1, 0},
                                          {"A\n\x1b$)C", 0, 0},
                                          {"\x1b$)\x1b$)C", 1, 0},
                                          {"A\n\x1b$B0!", 0, 3},
                                          {"\x1b(I\x1b$@", 0, 2},
                                          {"\x1b(J\x1b$)C", 1, 1},
                                          {"\x1b$", 0, 0}}) {
        EXPECT_EQ(SearchISO2022KRDesignator(text), korean) << text;
        EXPECT_EQ(SearchISO2022JPDesignator(text), japanese) << text;
    }
}

TEST(Iso2022, Converts) {
    const struct {
        const char* label;
        Converter convert;
        std::string text, expected;
    } rows[] = {
        {"Korean", DecodeISO2022KR, "\x1b$)C\x0e\x30\x21\x0fZ", "\xb0\xa1Z"},
        {"blanks and line ends in Korean", DecodeISO2022KR, "\x0e\x30 \t\n0", "\xb0 \t\x8a\xb0"},
        {"other escapes stay", DecodeISO2022KR, "\x1b$)\xa1", "\x1b$)\xa1"},
        {"Japanese", DecodeISO2022JP, "\x1b$B\x30\x21\x1b(BZ", "\x88\x9fZ"},
        {"edges of rows", DecodeISO2022JP, "\x1b$B`~_`^!!_", "\xe0\xfc\xe0\x80\x9f\x9f\x81\x7e"},
        {"other designators are text", DecodeISO2022JP, "\x1b(JA\x1b$@", "\x1b(JA\x1b$@"},
        {"blank, lone byte", DecodeISO2022JP, "\x1b$B\x30\x21 !!0", "\x88\x9f \x81\x40\x30"},
        {"EUC-JP", DecodeEucJP2ShiftJIS, "\xb0\xa1\x8e\xb1Z", "\x88\x9f\xb1Z"},
        {"odd pairs", DecodeEucJP2ShiftJIS, "\x8eZ\xb0Z\x8e\xe0Z\xb0", "\x8eZ\xb0Z\x8e\xe0Z\xb0"},
    };
    for (const auto& r : rows) EXPECT_EQ(converted(r.convert, r.text), r.expected) << r.label;
}

TEST(Iso2022, StreamDecodesFromTheDesignatorOn) {
    kit::File in = kit::fileOf("\x0e\x30\x21\n\x1b$)C\n\x0e\x30\x21\n\x30\x21\nrest\n");
    kit::File out = kit::fileOf("");
    strmDecodeISO2022KR(out.get(), in.get(), 16);
    EXPECT_EQ(kit::contentOf(out.get()), "\x0e\x30\x21\n\n\xb0\xa1\x8a\x30\x21\n");
    EXPECT_EQ(ftell(in.get()), 16);
}

}  // namespace
