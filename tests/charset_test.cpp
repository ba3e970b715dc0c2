// Conversion between character sets: families, choices of source and target, and the converter of
// the support library: names, wider tables, HZ, positions after a failure, kept handles.

#include <cstring>

#include "kit/calls.h"
#include "kit/conversion.h"

namespace {

using kit::Outcome;
using std::string;

std::string family(const char* name) {
    std::string lower = name, page = getDefaultCharSet(name);
    for (char& c : lower) c = static_cast<char>(tolower(c));
    EXPECT_EQ(getDefaultCharSet(lower.c_str()), page);
    EXPECT_EQ(kit::taken(strConvCharSet(page.c_str(), lower.c_str(), "Hello")), "Hello") << name;
    EXPECT_NE(kit::taken(strConvCharSet(name, page.c_str(), "Hello")), "(null)") << name;
    return page;
}

TEST(Charset, RowByRow) {
    kit::runTable("codec/charset.table",
                  {RESULT(family), RESULT(getDefaultCharSet), RESULT(mailGetLangCharSet),
                   HEAP(mailDecodeCharSet), HEAP(mailEncodeCharSet), RESULT(mailGetSrcCharSet),
                   HEAP(strConvCharSet)});
    char* last = getDefaultCharSet("big-five");
    EXPECT_STREQ(getDefaultCharSet(last), "BIG5") << "its own result is a name, too";
}

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

std::string converted(const char* target, const char* source, const char* text) {
    Outcome whole = run(target, source, text);
    // However small the pieces of output, the text, the error and its place are the same.
    for (size_t step : {8u, 9u, 11u, 64u})
        EXPECT_EQ(run(target, source, text, step), whole) << text << step;
    string place = std::to_string(whole.consumed);
    return whole.text + ", " +
           (whole.error ? strerrorname_np(whole.error) + (" at " + place) : place + " bytes");
}

TEST(Converter, RowByRow) {
    kit::runTable("codec/converter.table", {RESULT(converted)});
}

TEST(Converter, ConvertsLongTexts) {
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
