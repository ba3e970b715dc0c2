// Body texts: decoding, conversion, page preparation, enriched text.

#include <cstring>

#include "kit/message.h"

namespace {

using kit::taken;

struct Row {
    const char* label;
    int code, mode;
    const char *charSet, *subType, *stored;
    std::string expected;
};

std::string decoded(const Row& row, const char* cidPrefix = "p=") {
    std::string subType = row.subType, charSet = row.charSet;
    MailBody part = {};
    part.subType = subType.data();
    part.charSet = charSet.empty() ? nullptr : charSet.data();
    part.encoding = row.code;
    part.bodyOffset = 3;
    part.bodySize = static_cast<int>(strlen(row.stored));
    kit::File file = kit::fileOf("###" + std::string(row.stored) + "beyond");
    return taken(mailDecode(&part, row.mode, cidPrefix, file.get()));
}

std::string linked(const char* text) {
    return taken(strToHyperLink(text));
}
std::string pageText(const char* text) {
    return taken(strConvHTMLStr(linked(text).c_str(), "\n"));
}

TEST(Decode, RowByRow) {
    const char *kTags = "<META x><BASE y>", *kLink = "<i>http://a.example/";
    const char *kJapanese = "a\n\x1B$B0!\x1B(B<META x>",
               *kKorean = "\x1B$)C\x0E\x30\x21\x0F<META x>";
    const Row rows[] = {
        {"base64", 3, 1, "euc-kr", "plain", "sKE8Yj4=\n", "\xB0\xA1<b>"},
        {"base64 on a page", 3, 2, "EUC-KR", "Plain", "sKE8Yj4=\n", pageText("\xB0\xA1<b>")},
        {"quoted-printable", 2, 1, "", "plain", "a=3Db=\nc\n", "a=bc\n"},
        {"enriched", 0, 2, "", "enriched", kLink, pageText(kLink)},
        {"html", 0, 2, "", "HTML", kLink, linked(kLink)},
        {"other subtype", 0, 2, "", "rtf", kLink, kLink},
        {"mode 1", 0, 1, "", "html", "cid:1<BASE>http://a.b/", "cid:1<BASE>http://a.b/"},
        {"converted", 0, 1, "iso-2022-jp", "html", kJapanese, "a\n\x88\x9F<!-META x>"},
        {"unknown charset", 0, 1, "x-none", "html", kTags, kTags},
        {"invalid in its charset", 1, 1, "euc-kr", "plain", "\xFF<META x>", "\xFF<META x>"},
        {"raw ISO-2022-JP", 0, 1, "", "plain", kJapanese, "a\n\x88\x9F<META x>"},
        {"raw ISO-2022-KR", 0, 1, "", "plain", kKorean, "\xB0\xA1<META x>"},
        {"inline part", 0, 2, "us-ascii", "html", "'cid:1'<BASE x><META y>http://a.b/",
         "'p=1'<!-BASE x><!-META y>http://a.b/"},
        {"inline part in plain text", 0, 2, "", "plain", "<b>cid:1", "<b>p=1"},
        {"nothing in base64", 3, 1, "", "plain", "====", "(null)"},
        {"nothing in quoted-printable", 2, 1, "", "plain", "=\n", "(null)"},
    };
    for (const Row& row : rows) EXPECT_EQ(decoded(row), row.expected) << row.label;
    EXPECT_EQ(decoded({"", 0, 2, "", "rtf", "cid:1<BASE>", ""}, nullptr), "cid:1<BASE>");
}

// 400,000 references and a prefix of 300 bytes would make 120 MB of 1.6 MB.
TEST(Decode, ReferencesDoNotMultiplyABody) {
    std::string flood;
    for (int i = 0; i < 400000; i++) flood += "cid:";
    const Row row = {"", 0, 2, "", "html", flood.c_str(), ""};
    EXPECT_EQ(decoded(row, std::string(300, 'p').c_str()), flood);
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
    const struct {
        const char *text, *expected;
        int size = 100;
    } rows[] = {
        {"a\nb\n\nc\n\n\n", "a b \nc \n\n"},
        {"x<<y<bold>x</bold>", "x<yx"},
        {"<PaRaM>a\n<</b>\n</PARAM>x</param>", "x"},
        {"a<param>b\nc\n", "a"},
        {"a<bold\nb\n<x>\nc", "ab  c"},
        {"a\nb\nc\n", "a b ", 3},
        {"a", "", 0},
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
