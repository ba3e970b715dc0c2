// Body texts: decoding, conversion, page preparation, enriched text.

#include "kit/calls.h"
#include "kit/message.h"

namespace {

using kit::taken;

std::string decoded(int code, int mode, char* charSet, char* subType, std::string_view stored,
                    const char* cidPrefix = "p=") {
    MailBody part = {};
    part.subType = subType;
    part.charSet = charSet;
    part.encoding = code;
    part.bodyOffset = 3;
    part.bodySize = static_cast<int>(stored.size());
    kit::File file = kit::fileOf("###" + std::string(stored) + "beyond");
    return taken(mailDecode(&part, mode, cidPrefix, file.get()));
}

std::string decodedBy(int code, int mode, char* charSet, char* subType, std::string_view stored) {
    return decoded(code, mode, charSet, subType, stored);
}

std::string decodedRange(int offset, int size, std::string_view content) {
    MailBody part = {};
    part.bodyOffset = offset;
    part.bodySize = size;
    return taken(mailDecode(&part, 1, nullptr, kit::fileOf(content).get()));
}

void printEnriched(int size, std::string_view content) {
    kit::File file = kit::fileOf(content);
    FILE* fp = file.get();
    MailBody part = {};
    part.bodySize = size;
    mailTextEnrichedHandler(&part, &fp);
}

TEST(Decode, RowByRow) {
    kit::runTable("display/decode.table",
                  {RESULT(decodedBy), RESULT(decodedRange), PRINTED(printEnriched)});
    char rtf[] = "rtf", html[] = "html";
    EXPECT_EQ(decoded(0, 2, nullptr, rtf, "cid:1<BASE>", nullptr), "cid:1<BASE>");
    // 400,000 references and a prefix of 300 bytes would make 120 MB of 1.6 MB.
    std::string flood;
    for (int i = 0; i < 400000; i++) flood += "cid:";
    EXPECT_EQ(decoded(0, 2, nullptr, html, flood, std::string(300, 'p').c_str()), flood);
}

}  // namespace
