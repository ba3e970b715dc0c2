// Address lists and the generators of composed messages.

#include "kit/composed.h"
#include "kit/site.h"

namespace {

class ComposeHeader : public kit::Site {};

struct DateRow {
    const char* zone;
    time_t t;
    const char *date, *fromDate;
};

TEST_F(ComposeHeader, Dates) {
    const DateRow rows[] = {
        {"UTC0", 973520589, "Mon, 6 Nov 2000 14:23:09 +0000", "Mon Nov 06 14:23:09 2000"},
        {"KST-9", 973520589, "Mon, 6 Nov 2000 23:23:09 +0900", "Mon Nov 06 23:23:09 2000"},
        {"NST3:30", 973520589, "Mon, 6 Nov 2000 10:53:09 -0330", "Mon Nov 06 10:53:09 2000"},
        {"WEST0:30", 0, "Wed, 31 Dec 1969 23:30:00 +0030", "Wed Dec 31 23:30:00 1969"},
        {"UTC0", 253402300800, "Sat, 1 Jan 10000 00:00:00 +0000", "Sat Jan 01 00:00:00 10000"},
        {"UTC0", INT64_MAX, "", ""},
    };
    for (const auto& row : rows) {
        setenv("TZ", row.zone, 1);
        tzset();
        EXPECT_STREQ(mailMakeDate(row.t), row.date);
        EXPECT_STREQ(mailGetRFC822FromDate(row.t), row.fromDate);
    }
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
    EXPECT_EQ(mailGetAddrStr(nullptr, "euc-kr"), nullptr);
}

}  // namespace
