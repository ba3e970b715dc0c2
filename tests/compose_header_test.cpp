// Address lists and the generators of composed messages.

#include "kit/calls.h"
#include "kit/composed.h"

namespace {

class ComposeHeader : public kit::Site {};

template <char* (*kWrite)(time_t)>
std::string inZone(const char* zone, time_t t) {
    setenv("TZ", zone, 1);
    return kWrite(t);
}

TEST_F(ComposeHeader, Dates) {
    kit::runTable("compose_dates.table",
                  {RESULT(inZone<mailMakeDate>), RESULT(inZone<mailGetRFC822FromDate>)});
}

TEST_F(ComposeHeader, MessageIdsCountUp) {
    setenv("TZ", "UTC0", 1);
    time_t before = time(nullptr);
    std::string first = mailGetMsgId(), second = mailGetMsgId();
    time_t after = time(nullptr);
    long a = atol(first.c_str() + 12), b = atol(second.c_str() + 12);
    EXPECT_GE(a, before);
    EXPECT_LE(a, after);
    EXPECT_GE(b, a + 1);
    EXPECT_LE(b, after + 1);
    EXPECT_EQ(kit::masked(first), "MSGID@example.org");
    char day[9];
    strftime(day, sizeof day, "%Y%m%d", gmtime(&before));
    EXPECT_TRUE(first.substr(0, 8) == day || before / 86400 != after / 86400);
}

std::string drawn() {
    std::string text;
    for (int i = 0; i < 24; i++) text += "ABCDEFGHIJKLMNOPQRSTUVWXYZ1234567890"[rand() % 36];
    return text;
}

TEST_F(ComposeHeader, BoundariesReplayTheGenerator) {
    time_t now;
    std::string first, second, third;
    do {  // all within one second
        now = time(nullptr);
        first = mailGenBoundary(), second = mailGenBoundary(), third = mailGenBoundary();
    } while (time(nullptr) != now);
    srand(static_cast<unsigned>(now));
    std::string one = drawn(), two = drawn();
    EXPECT_EQ(second, first == one ? two : one);
    EXPECT_EQ(third, first);
    EXPECT_TRUE(first == one || first == two);
}

TEST_F(ComposeHeader, AddressLists) {
    std::string longName(2990, 'n'), longBox(3001, 'b');
    char b[] = "b", h[] = "h.kr", quoted[] = "a \"b\" \\\nBcc: c", korean[] = "\xB0\xA1";
    MailAddress last = {nullptr, b, nullptr, nullptr},
                tooLong = {nullptr, longBox.data(), h, &last},
                wide = {longName.data(), b, h, &tooLong}, word = {korean, b, h, &wide},
                first = {quoted, b, h, &word};
    EXPECT_EQ(
        kit::taken(mailGetAddrStr(&first, "euc-kr")),
        "\"a \\\"b\\\" \\\\Bcc: c\" <b@h.kr>,\n\t\"=?euc-kr?B?sKE=?=\" <b@h.kr>,\n\tb@h.kr,\n\tb@");
    EXPECT_EQ(kit::taken(mailGetFaxNumStr(&word, "euc-kr")),
              "\"=?euc-kr?B?sKE=?=\" <b>,\n\t\"" + longName + "\" <b>,\n\tb");
    MailAddress noNumber = {nullptr, nullptr, h, &last};
    EXPECT_EQ(kit::taken(mailGetFaxNumStr(&noNumber, "euc-kr")), ",\n\tb");
    EXPECT_EQ(mailGetAddrStr(nullptr, "euc-kr"), nullptr);
}

}  // namespace
