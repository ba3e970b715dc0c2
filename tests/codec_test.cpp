#include <random>
#include <vector>

#include "kit/site.h"
#include "mail/codec/base64.h"
#include "mail/codec/quoted_printable.h"

namespace {

using namespace std::literals;

using BufferForm = int (*)(char*, const char*);
using StreamForm = void (*)(FILE*, FILE*, int);

/// The bytes that a buffer form counts; it writes to exactly the room that it may ask for.
std::string counted(BufferForm form, const std::string& text, size_t room) {
    std::unique_ptr<char[]> dst(new char[room]);
    int n = form(dst.get(), text.c_str());
    return {dst.get(), static_cast<size_t>(n)};
}
std::string decoded(BufferForm form, const std::string& text) {
    return counted(form, text, text.size() + 1);
}
/// EncodeQP from line position 0.
std::string encodedQp(const std::string& text) {
    EncodeQP(std::string(8, 0).data(), "\n");
    return counted(EncodeQP, text, 4 * text.size() + 16);
}
/// What a stream form writes for a part of the first `length` bytes, and where it leaves its input.
std::string streamed(StreamForm form, std::string_view content, int length = 1 << 20,
                     long* position = nullptr) {
    kit::File in = kit::fileOf(content), out = kit::fileOf("");
    form(out.get(), in.get(), length);
    if (position) *position = ftell(in.get());
    return kit::contentOf(out.get());
}

TEST(Kernels, GiveTheSameWithAndWithoutVectors) {
    using namespace attalven;
    const std::vector<std::string> tokens[] = {{"a", "e", "hello", " ", "t\n", "E", "\xb0"},
                                               {"Aaz9", "Z+/b", "0123", "\n", "*"},
                                               {"=B0", "=C8=e9", " ", "x", "=\n", "=4", "\xa1"}};
    std::mt19937 rng(1);
    for (int round = 0; round < 3000; round++) {
        std::string text, results[2][3];
        const auto& from = tokens[round % 3];
        for (size_t n = rng() % 200; n > 0; n--) {
            size_t rare = rng() % 8 ? 3 : from.size();
            text += from[rng() % rare];
        }
        for (bool vector : {false, true}) {
            std::string out(4 * text.size() + 512, 0);
            Base64Decoder b{round % 2 == 0, 0, 0, 0, vector};
            results[vector][0].assign(out, 0, base64Decode(b, text, out.data()).written);
            QpDecoder q{QpSoftBreak::kEndsLine, vector};
            results[vector][1].assign(out, 0, qpDecode(q, text, out.data()));
            QpFolding folding = qpStreamFolding();
            folding.vector = vector;
            int at = 0;
            results[vector][2].assign(out, 0, qpEncode(folding, at, text, text.size(), out.data()));
        }
        for (int i = 0; i < 3; i++) ASSERT_EQ(results[0][i], results[1][i]) << i << text;
    }
}

TEST(Base64, EncodesInEveryForm) {
    std::string full(57, 'a'), line;
    for (int i = 0; i < 19; i++) line += "YWFh";
    const struct {
        std::string text, body, mail;
    } rows[] = {
        {"ab", "YWI=", "YWI="},
        {"\xff\xfe\xfd", "//79", "//79"},
        {full + "a", line + "\nYQ==", line.substr(0, 56) + "\n" + line.substr(56) + "YQ=="},
    };
    for (const auto& r : rows) {
        int count = static_cast<int>(r.text.size() + 2) / 3 * 4;
        char dst[128];
        EXPECT_EQ(EncodeBase64(dst, r.text.c_str()), count);
        EXPECT_EQ(dst, r.body);
        EXPECT_EQ(kit::taken(mailEncodeBase64(r.text.c_str())), r.mail);
        kit::File out = kit::fileOf(""), in = kit::fileOf("skipped" + r.text);
        fseek(in.get(), 7, SEEK_SET);
        EXPECT_EQ(strmDestEncodeBase64(out.get(), r.text.c_str()), count);
        EXPECT_EQ(strmEncodeBase64(out.get(), in.get()), count);
        EXPECT_EQ(kit::contentOf(out.get()), r.body + r.body);
    }
    char dst[64] = "kept";
    EXPECT_EQ(EncodeBase64(dst, ""), 0);
    EXPECT_STREQ(dst, "kept");
    EXPECT_EQ(funcEncodeBase64(dst, "abcdefghi", 6, 1), 12);  // 12 is the first common multiple
    EXPECT_STREQ(dst, "YWJjZGVmZ2hp\n");
}

TEST(Base64, Decodes) {
    const struct {
        const char* label;
        std::string text, buffer, mail, stream;
    } rows[] = {
        {"lines", "YWJj\nYQ==", "abca", "abca", "abca"},
        {"CR LF and junk", "YW\r\nJ*j\r\n", "abc", "abc", ""},
        {"groups end with their line", "YW\nJjYQ\nYWJj", "abca\6\26", "abca\6\26", "&6\20abc"},
        {"pads alone", "====", "", "", ""},
        {"text behind pads", "YQ==YWJj", "a\0\0a"s, "aabc", "a\0\0a"s},
        {"NUL bytes", "AGEAYWJj", "\0a\0abc"s, "abc", "\0a\0abc"s},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.label);
        EXPECT_EQ(decoded(DecodeBase64, r.text), r.buffer);
        EXPECT_EQ(kit::taken(mailDecodeBase64(r.text.c_str())), r.mail);
        EXPECT_EQ(streamed(strmDecodeBase64, r.text), r.stream);
    }
}

TEST(QuotedPrintable, Encodes) {
    const std::string z(100, 'z'), digits(100, '5');
    const struct {
        std::string text, encoded;
    } rows[] = {
        {"<=>AGH~\x7f\xe9", "<=3D=3E=41=47H~=7F=E9"},
        {"x \nx\t\r\ny ", "x =\n\nx\t=\n\ny =\n"},
        {z, z.substr(0, 58) + "=\n" + z.substr(58)},
        {digits, digits.substr(0, 76) + "=\n" + digits.substr(76)},
        {z.substr(0, 58) + "11z", z.substr(0, 58) + "11=\nz"},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(encodedQp(r.text), r.encoded);
        encodedQp("\n");
        EXPECT_EQ(streamed(strmEncodeQP, r.text), r.encoded);
        encodedQp("\n");
        kit::File out = kit::fileOf("");
        EXPECT_EQ(strmDestEncodeQP(out.get(), r.text.c_str()), r.encoded.size());
        EXPECT_EQ(kit::contentOf(out.get()), r.encoded);
    }
}

TEST(QuotedPrintable, CountsLinePositionsAcrossCalls) {
    encodedQp(std::string(70, '5'));
    char dst[64];
    EXPECT_EQ(EncodeQP(dst, "z"), 3);
    EXPECT_STREQ(dst, "=\nz");
    const std::string z(60, 'z');
    EXPECT_EQ(kit::taken(mailEncodeQP(z.c_str())), z.substr(0, 56) + "=\n" + z.substr(56));
    EXPECT_EQ(kit::taken(mailEncodeQP(z.c_str())), z.substr(0, 52) + "=\n" + z.substr(52));
}

TEST(QuotedPrintable, Decodes) {
    const struct {
        std::string text, line, mail, old;
    } rows[] = {
        {"=3d=5A=\n", "=Z", "=Z", "\xffZ"},   {"a=\r\nb", "a", "a\nb", "a\nb"},
        {"=0_=4", "(=4", "(=4", "\xff=4"},    {"a_b=00c", "a_b\0c"s, "a_bc", "a b=00c"},
        {"=4\nx", "\x1ax", "\x1ax", "\xffx"}, {"=G1=1G", "\x01\x20", "\x01\x20", "\xf1\xff"},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(decoded(DecodeQP, r.text), r.line);
        EXPECT_EQ(kit::taken(mailDecodeQP(r.text.c_str())), r.mail);
        EXPECT_EQ(decoded(DecodeQP_ORG, r.text), r.old);
        // A text of two lines goes on behind its soft break in a stream.
        EXPECT_EQ(streamed(strmDecodeQP, r.text), r.text == "a=\r\nb" ? "ab" : r.line);
    }
    EXPECT_EQ(streamed(strmDecodeQP, "a=\nb=\r\nc\n=\rx\nd"), "abc\nd");
    std::string same = "=41 b=42=43 c=";
    EXPECT_EQ(DecodeQP(same.data(), same.c_str()), 8);
    EXPECT_STREQ(same.c_str(), "A bBC c=");
}

TEST(Uuencode, Decodes) {
    for (auto [line, expected, announced] : {std::tuple{"\"86)C\n", "ab", 2},
                                             {"`\n", "kept", 0},
                                             {"", "kept", 0},
                                             {"#8", "`", 3},
                                             {"M86)C\r\n", "abc", 45}}) {
        char dst[64] = "kept";
        EXPECT_EQ(DecodeUU(dst, line), announced) << line;
        EXPECT_STREQ(dst, expected) << line;
    }
    EXPECT_EQ(streamed(strmDecodeUU, "begin 644 x\n#86)C\n`\nend\n#86)C\n"), "abc");
    EXPECT_EQ(streamed(strmDecodeUU, "begin 644 x\n#86)C\n#86)C\n", 6), "abc");
    EXPECT_EQ(streamed(strmDecodeUU, "&86)C\n"), "abc\0\0\0"s);
}

TEST(StreamForms, TakeLinesThatBeginInThePart) {
    const std::string line(100, 'x'), lines = line + "\n" + line + "\n" + line;
    for (auto [length, taken] :
         {std::pair{-1, 0}, {0, 0}, {1, 101}, {101, 101}, {102, 202}, {999, 302}}) {
        long position = 0;
        EXPECT_EQ(streamed(strmDecodeQP, lines, length, &position).size(), taken);
        EXPECT_EQ(position, taken) << length;
    }
    const std::string longLine(12000, 'x');
    EXPECT_EQ(streamed(strmDecodeQP, longLine, 1).size(), 5119);
    EXPECT_EQ(streamed(strmDecodeQP, longLine, 5120).size(), 2 * 5119);
    EXPECT_EQ(streamed(strmXBit, "ab\0cd"s, 4), "ab\0c"s);
    EXPECT_EQ(streamed(strmXBit, std::string(200000, 'x'), 300000).size(), 200000);
}

TEST(StreamForms, CarryAcrossPiecesOfOneLine) {
    for (size_t pad : {5117u, 5118u, 5119u}) {
        std::string plain(pad, 'x'), group = "YWJj";
        EXPECT_EQ(streamed(strmDecodeQP, plain + "=41=\ny"), plain + "Ay") << pad;
        EXPECT_EQ(streamed(strmDecodeBase64, std::string(pad, '*') + group + "\n"), "abc") << pad;
    }
    // A piece is a text of its own for the encoder: a blank at its end is protected.
    std::string digits(5118, '5');
    std::string encoded = streamed(strmEncodeQP, digits + " x");
    EXPECT_EQ(encoded.substr(encoded.size() - 4), " =\nx");
}

TEST(StreamForms, StopReadingWhenTheOutputIsFull) {
    kit::File full(fopen("/dev/full", "wb"));
    ASSERT_TRUE(full);
    setvbuf(full.get(), nullptr, _IONBF, 0);
    const std::string content(4 << 20, 'x');
    for (StreamForm form : {strmDecodeQP, strmDecodeBase64, strmEncodeQP, strmXBit}) {
        kit::File in = kit::fileOf(content);
        form(full.get(), in.get(), static_cast<int>(content.size()));
        EXPECT_LT(ftell(in.get()), 1 << 20);
    }
}

}  // namespace
