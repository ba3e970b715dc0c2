// Body texts: decoding, conversion, page preparation, enriched text.

#include <sstream>

#include "kit/message.h"
#include "kit/table.h"

namespace {

using kit::taken;

std::string decoded(const std::string& stored, int code, int mode, std::string charSet,
                    std::string subType, const char* cidPrefix = "p=") {
    MailBody part = {};
    part.subType = subType.data();
    part.charSet = charSet == "-" ? nullptr : charSet.data();
    part.encoding = code;
    part.bodyOffset = 3;
    part.bodySize = static_cast<int>(stored.size());
    kit::File file = kit::fileOf("###" + stored + "beyond");
    return taken(mailDecode(&part, mode, cidPrefix, file.get()));
}

TEST(Decode, RowByRow) {
    for (const auto& row : kit::table("display/decode.table")) {
        std::istringstream in(row.input);
        int code, mode;
        std::string charSet, subType;
        in >> code >> mode >> charSet >> subType;
        std::string stored = row.input.substr(static_cast<size_t>(in.tellg()) + 1);
        EXPECT_EQ(decoded(stored, code, mode, charSet, subType), row.expected) << row.input;
    }
    EXPECT_EQ(decoded("cid:1<BASE>", 0, 2, "-", "rtf", nullptr), "cid:1<BASE>");
}

// 400,000 references and a prefix of 300 bytes would make 120 MB of 1.6 MB.
TEST(Decode, ReferencesDoNotMultiplyABody) {
    std::string flood;
    for (int i = 0; i < 400000; i++) flood += "cid:";
    EXPECT_EQ(decoded(flood, 0, 2, "-", "html", std::string(300, 'p').c_str()), flood);
}

TEST(Decode, BodyOutsideTheFile) {
    const struct {
        int offset, size;
        const char* expected;
    } rows[] = {{2, 3, "234"},    {8, INT32_MAX, "89"}, {10, 5, "(null)"}, {99, 5, "(null)"},
                {2, 0, "(null)"}, {2, -1, "(null)"},    {-1, 3, "(null)"}};
    kit::File file = kit::fileOf("0123456789");
    for (const auto& row : rows) {
        MailBody part = {};
        part.bodyOffset = row.offset;
        part.bodySize = row.size;
        EXPECT_EQ(taken(mailDecode(&part, 1, nullptr, file.get())), row.expected) << row.offset;
    }
}

TEST(Enriched, RowByRow) {
    const std::string x(1016, 'x'), cut = x + "<param>a</param>" + x + "<<<b>";
    const struct {
        std::string text, expected;
        int size = 100;
    } rows[] = {
        {"a\nb\n\nc\n\n\n", "a b \nc \n\n"},
        {"x<<y<bold>x</bold>", "x<yx"},
        {"<PaRaM>a\n<</b>\n</PARAM>x</param>", "x"},
        {"a<param>b\nc\n", "a"},
        {"a<bold\nb\n<x>\nc", "ab  c"},
        {"a\nb\nc\n", "a b ", 3},
        {"a", "", 0},
        {cut, x + x + "<", 3000},
    };
    for (const auto& row : rows) {
        kit::File file = kit::fileOf(row.text);
        FILE* fp = file.get();
        MailBody part = {};
        part.bodySize = row.size;
        EXPECT_EQ(kit::outputOf([&] { mailTextEnrichedHandler(&part, &fp); }), row.expected);
    }
}

}  // namespace
