// Transfer codecs, encoded words and ISO-2022, row by row, and what no row can say.

#include <random>

#include "kit/calls.h"
#include "mail/codec/base64.h"
#include "mail/codec/quoted_printable.h"

namespace {

using kit::Arguments, kit::Call, kit::result;
using BufferForm = int (*)(char*, const char*);
using StreamForm = void (*)(FILE*, FILE*, int);

/// The bytes that a decoder counts; it writes to exactly the room that it may ask for.
Call counted(BufferForm form) {
    return [form](Arguments& a) {
        const std::string text(static_cast<std::string_view>(a[0]));
        std::unique_ptr<char[]> dst(new char[text.size() + 1]);
        auto n = static_cast<size_t>(form(dst.get(), a[0]));
        return std::string(dst.get(), n);
    };
}

/// The result, and the text in an area that held another one.
template <typename Form, typename... Rest>
std::string numbered(Form form, const char* text, Rest... rest) {
    char area[512] = "kept";
    int n = form(area, text, rest...);
    return std::to_string(n) + " " + area;
}
Call numbered(BufferForm form) {
    return [form](Arguments& a) { return numbered(form, a[0]); };
}

std::string encodedQp(const char* text) {
    std::string area(4 * strlen(text) + 16, 0);
    area.resize(static_cast<size_t>(EncodeQP(area.data(), text)));
    return area;
}
std::string encodedQpOfALine(const char* text) {
    encodedQp("\n");
    return encodedQp(text);
}

std::string streamed(StreamForm form, std::string_view content, int length = 1 << 20,
                     long* position = nullptr) {
    kit::File in = kit::fileOf(content), out = kit::fileOf("");
    form(out.get(), in.get(), length);
    if (position) *position = ftell(in.get());
    return kit::contentOf(out.get());
}
/// With a length as second argument, the place where the stream stands follows.
Call streamed(StreamForm form) {
    return [form](Arguments& a) {
        long position = 0;
        if (a.size() == 1) return streamed(form, a[0]);
        std::string text = streamed(form, a[0], a[1], &position);
        return text + "@" + std::to_string(position);
    };
}
template <typename Form>
Call written(Form form) {
    return [form](Arguments& a) {
        kit::File out = kit::fileOf("");
        auto n = form(out.get(), a[0]);
        return std::to_string(n) + " " + kit::contentOf(out.get());
    };
}

TEST(Transfer, RowByRow) {
    kit::runTable("codec/transfer.table",
                  {{"EncodeBase64", numbered(EncodeBase64)},
                   {"strmDestEncodeBase64", written(strmDestEncodeBase64)},
                   {"strmEncodeBase64", written([](FILE* out, const char* text) {
                        kit::File in = kit::fileOf(std::string("skipped") + text);
                        fseek(in.get(), 7, SEEK_SET);
                        return strmEncodeBase64(out, in.get());
                    })},
                   HEAP(mailEncodeBase64),
                   {"funcEncodeBase64", result(+[](const char* text, int width, int hasEnd) {
                        return numbered(funcEncodeBase64, text, width, hasEnd);
                    })},
                   {"DecodeBase64", counted(DecodeBase64)},
                   HEAP(mailDecodeBase64),
                   {"strmDecodeBase64", streamed(strmDecodeBase64)},
                   {"EncodeQP", result(encodedQpOfALine)},
                   {"EncodeQP behind the last text", result(encodedQp)},
                   {"strmEncodeQP",
                    [](Arguments& a) { return encodedQp("\n"), streamed(strmEncodeQP, a[0]); }},
                   {"strmDestEncodeQP",
                    [](Arguments& a) { return encodedQp("\n"), written(strmDestEncodeQP)(a); }},
                   HEAP(mailEncodeQP),
                   {"DecodeQP", counted(DecodeQP)},
                   {"strmDecodeQP", streamed(strmDecodeQP)},
                   HEAP(mailDecodeQP),
                   {"DecodeQP_ORG", counted(DecodeQP_ORG)},
                   {"strmXBit", streamed(strmXBit)},
                   {"DecodeUU", numbered(DecodeUU)},
                   {"strmDecodeUU", streamed(strmDecodeUU)}});
    std::string same = "=41 b=42=43 c=";
    EXPECT_EQ(DecodeQP(same.data(), same.c_str()), 8);
    EXPECT_STREQ(same.c_str(), "A bBC c=");
    // A piece of a line is a text of its own for the encoder: a blank at its end is protected.
    std::string encoded = streamed(strmEncodeQP, std::string(5118, '5') + " x");
    EXPECT_EQ(encoded.substr(encoded.size() - 4), " =\nx");
}

TEST(Iso2022, RowByRow) {
    kit::runTable("codec/iso2022.table", {RESULT(SearchISO2022KRDesignator),
                                          RESULT(SearchISO2022JPDesignator),
                                          {"DecodeISO2022KR", counted(DecodeISO2022KR)},
                                          {"DecodeISO2022JP", counted(DecodeISO2022JP)},
                                          {"DecodeEucJP2ShiftJIS", counted(DecodeEucJP2ShiftJIS)},
                                          {"strmDecodeISO2022KR", streamed(strmDecodeISO2022KR)}});
}

TEST(EncodedWords, RowByRow) {
    kit::runTable("codec/encoded_words.table",
                  {HEAP(mailDecodeSubject), HEAP(mailEncodeSubjectBase64),
                   HEAP(mailEncodeSubjectQP), HEAP(mailEncodeSubject)});
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
    EXPECT_GT(strmDestEncodeQP(full.get(), content.c_str()), 4 << 20) << "the length of a text";
}

}  // namespace
