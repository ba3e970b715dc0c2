// Values of header fields: parameters, media types, dates, addresses, and the records they fill.

#include <ctime>

#include "kit/table.h"
#include "kit/tree.h"
#include "mail/parse/mail_addr.h"

namespace {

using attalven::OwnedAddress;
using attalven::OwnedBody;
using attalven::OwnedParam;

using kit::shown;

/// Runs a parser on an exact-size heap copy, so that a sanitizer sees the first byte too far.
template <typename Call>
auto onCopy(const std::string& text, Call call) {
    std::unique_ptr<char[]> copy(new char[text.size() + 1]);
    memcpy(copy.get(), text.c_str(), text.size() + 1);
    return call(copy.get());
}

std::string paramsOf(const std::string& text) {
    OwnedParam list(onCopy(text, mailParseParams));
    std::string dump;
    for (MailParam* p = list.get(); p; p = p->next)
        dump += shown(p->name) + "=" + shown(p->value) + "|";
    return dump;
}

std::string typeOf(const std::string& text) {
    OwnedBody node(mailNewBody());
    onCopy(text, [&node](char* value) { return mailParseMimeType(value, node.get()), 0; });
    std::string dump = std::to_string(node->type) + " " + shown(node->subType);
    for (MailParam* p = node->params; p; p = p->next)
        dump += std::string(" ") + p->name + "=" + p->value;
    return dump;
}

std::string addressesOf(const std::string& text) {
    OwnedAddress list(onCopy(text, mailGetAddrList));
    std::string dump;
    for (MailAddress* a = list.get(); a; a = a->next)
        dump += shown(a->name) + " " + shown(a->mailbox) + " " + shown(a->host) + "|";
    return dump;
}

struct Row {
    const char *input, *expected;
};

TEST(MimeFields, ReadsParameters) {
    for (const auto& r : kit::table("parse/params.table"))
        EXPECT_EQ(paramsOf(r.input), r.expected) << r.input;
    EXPECT_EQ(mailParseParams(nullptr), nullptr);
    OwnedParam list(onCopy("charset=euc-kr; x=1; CharSet=no", mailParseParams));
    EXPECT_STREQ(mailGetParam("CHARSET", list.get()), "euc-kr");
    EXPECT_EQ(mailGetParam("char", list.get()), nullptr);
    EXPECT_EQ(mailGetParam(nullptr, list.get()), nullptr);
}

TEST(MimeFields, ReadsTypesAndEncodings) {
    for (const auto& r : kit::table("parse/types.table"))
        EXPECT_EQ(typeOf(r.input), r.expected) << r.input;
    OwnedBody node(mailNewBody());
    mailParseMimeType(nullptr, node.get());
    EXPECT_STREQ(node->subType, "octet-stream");
    EXPECT_EQ(node->type, 2);

    for (const auto& r : kit::table("parse/encodings.table"))
        EXPECT_EQ(std::to_string(mailGetEncType(r.input.c_str())), r.expected) << r.input;
    EXPECT_EQ(mailGetEncType(nullptr), 5);
    EXPECT_STREQ(encoding[5], mime_types[0]);
    EXPECT_EQ(mime_types[8], nullptr);
}

class TypeLookup : public kit::Site {};

TEST_F(TypeLookup, ReadsTheInstallationsFile) {
    EXPECT_STREQ(mimeGetType("photo.gif"), "application/octet-stream");
    kit::writeFile(dir + "/root/conf/mime.types",
                   "image/gif\tgif\r\n\ntext/html\t html  htm\nimage/png png\n  a/b\tgz x\n" +
                       std::string(120, 'l') + "/t\tlong\n");
    const Row rows[] = {{"photo.gif", "image/gif"},
                        {"photo.GIF", "application/octet-stream"},
                        {"a.tar.gz", "a/b"},
                        {"x.png", "application/octet-stream"},
                        {"dir.d/page.h t m", "text/html"},
                        {"noext", "application/octet-stream"},
                        {"dot.", "application/octet-stream"}};
    for (const Row& r : rows) EXPECT_STREQ(mimeGetType(r.input), r.expected) << r.input;
    EXPECT_EQ(mimeGetType("a.long"), std::string(100, 'l'));
    EXPECT_STREQ(mimeGetType(("a." + std::string(5000, 'x')).c_str()), "application/octet-stream");

    EXPECT_EQ(mimeGetMajorType("IMAGE/gif"), 3);
    for (const char* other : {"chemical/x-pdb", "text", static_cast<const char*>(nullptr)})
        EXPECT_EQ(mimeGetMajorType(other), 2);
    EXPECT_STREQ(mimeGetSubType("image/svg/xml"), "svg/xml");
    EXPECT_STREQ(mimeGetSubType("text/"), "octet-stream");
    EXPECT_EQ(mimeGetSubType(("a/" + std::string(200, 'b')).c_str()), std::string(98, 'b'));
}

/// The result as its definition gives it.
time_t byDefinition(int day, int month, int year, int hour, int zoneHours, bool known) {
    struct tm written = {};
    written.tm_mday = day, written.tm_mon = month - 1, written.tm_year = year - 1900;
    written.tm_hour = hour, written.tm_isdst = -1;
    time_t t = mktime(&written);
    if (!known) return t;
    struct tm local = *localtime(&t), greenwich = *gmtime(&t);
    return t + mktime(&local) - mktime(&greenwich) - zoneHours * 3600;
}

TEST(Dates, ReadsWordsByPosition) {
    setenv("TZ", "Asia/Seoul", 1);
    for (const auto& r : kit::table("parse/dates.table"))
        EXPECT_EQ(std::to_string(onCopy(r.input, mailParseDate)), r.expected) << r.input;
    EXPECT_EQ(mailParseDate(nullptr), 0);
}

TEST(Dates, EqualTheirDefinitionInEveryZone) {
    for (const char* zone : {"UTC", "Asia/Seoul", "America/New_York", "Australia/Lord_Howe", ""}) {
        *zone ? setenv("TZ", zone, 1) : unsetenv("TZ");
        for (int year : {1950, 1988, 2004, 2037})
            for (int month = 1; month <= 12; month++)
                for (int day : {1, 15, 28}) {
                    static const char* const kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
                    std::string text = std::to_string(day) + " " + kMonths[month - 1] + " " +
                                       std::to_string(year) + " 12:00:00 ";
                    EXPECT_EQ(onCopy(text + "+0900", mailParseDate),
                              byDefinition(day, month, year, 12, 9, true))
                        << zone << text;
                    EXPECT_EQ(onCopy(text + "GMT", mailParseDate),
                              byDefinition(day, month, year, 12, 0, false))
                        << zone << text;
                }
    }
}

class Addresses : public kit::Site {};

TEST_F(Addresses, AreReadInOnePass) {
    for (const auto& r : kit::table("parse/addresses.table"))
        EXPECT_EQ(addressesOf(r.input), r.expected) << r.input;
    EXPECT_EQ(addressesOf(""), "");
    std::string lo(400, 'm');
    EXPECT_EQ(addressesOf("\"" + lo + "\"" + lo + "@h"),
              std::string(300, 'm') + " " + std::string(300, 'm') + " example.org|");
}

TEST_F(Addresses, AreWritten) {
    OwnedAddress list(mailGetAddrList("\"A <&> B\" <a@x>, b@y"));
    EXPECT_EQ(kit::taken(mailGetStrAddr(list.get())), "\"A <&> B\" <a@x>,b@y");
    EXPECT_EQ(kit::taken(mailGetStrHTMLAddr(list.get())),
              "&quot;A &lt;&amp;&gt; B&quot; &lt;a@x&gt;,b@y");
    EXPECT_EQ(mailGetStrAddr(nullptr), nullptr);
    EXPECT_EQ(mailGetStrHTMLAddr(nullptr), nullptr);
    EXPECT_STREQ(mailGetStrOneAddr(list->next), "b@y");
    EXPECT_STREQ(mailGetStrOneAddr(nullptr), "");
    free(list->host);
    list->host = strdup(std::string(2000, 'h').c_str());
    EXPECT_EQ(mailGetStrOneAddr(list.get()), "a@" + std::string(998, 'h'));

    const Row names[] = {{"abc|Kim", "Kim"}, {"abc|", "abc"},     {"Kim", "Kim"},
                         {"|", ""},          {"|Kim|x", "Kim|x"}, {"", ""}};
    for (const Row& r : names) EXPECT_STREQ(mailGetUserName(r.input), r.expected) << r.input;
    EXPECT_STREQ(mailGetUserName(nullptr), "");
    EXPECT_EQ(mailGetUserName(std::string(200, 'n').c_str()), std::string(100, 'n'));
}

TEST(Records, IndexTheLeavesDepthFirst) {
    auto node = [](int type, MailBody* child, MailBody* next) {
        MailBody* b = mailNewBody();
        b->type = type, b->child = child, b->next = next;
        return b;
    };
    MailBody* empty = node(5, nullptr, node(3, nullptr, nullptr));
    MailBody* inner = node(5, node(1, nullptr, node(4, node(7, nullptr, nullptr), nullptr)), empty);
    OwnedBody tree(node(5, node(6, nullptr, inner), nullptr));
    std::string types;
    for (const MailBody& leaf : attalven::LeafParts(tree.get())) types += std::to_string(leaf.type);
    EXPECT_EQ(types, "6143");
    MailBodyList** none = mailGetBody(nullptr);
    EXPECT_EQ(*none, nullptr);
    mailFreeBodyIdx(none);

    MailInfo* m = mailNewHeader();
    EXPECT_EQ(m->priority, 3);
    m->faxNum = mailGetAddrList("a@b,c@d");
    m->body = mailNewBody();
    EXPECT_EQ(m->body->isAttachment, 1);
    mailFree(&m);
    EXPECT_EQ(m, nullptr);
    MailState *state = mailNewState(), *kept = state;
    EXPECT_EQ(state->word[0] + state->word[1], 0);
    mailFreeState(&state);
    EXPECT_EQ(state, kept);
    mailFree(nullptr), mailFreeBody(nullptr), mailFreeBodyIdx(nullptr), mailFreeState(nullptr);
}

}  // namespace
