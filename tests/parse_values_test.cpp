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
    OwnedParam list(onCopy("charset=euc-kr; x=1; CharSet=no", mailParseParams));
    EXPECT_STREQ(mailGetParam("CHARSET", list.get()), "euc-kr");
    EXPECT_EQ(mailGetParam("char", list.get()), nullptr);
}

TEST(MimeFields, ReadsTypesAndEncodings) {
    for (const auto& r : kit::table("parse/types.table"))
        EXPECT_EQ(typeOf(r.input), r.expected) << r.input;
    for (const auto& r : kit::table("parse/encodings.table"))
        EXPECT_EQ(std::to_string(mailGetEncType(r.input.c_str())), r.expected) << r.input;
}

class TypeLookup : public kit::Site {};

TEST_F(TypeLookup, ReadsTheInstallationsFile) {
    kit::writeFile(dir + "/root/conf/mime.types",
                   "image/gif\tgif\r\n\ntext/html\t html  htm\nimage/png png\n  a/b\tgz x\n" +
                       std::string(120, 'l') + "/t\tlong\n");
    const Row rows[] = {
        {"a.gif", "image/gif"}, {"a.tar.gz", "a/b"}, {"dir.d/page.h t m", "text/html"}};
    for (const Row& r : rows) EXPECT_STREQ(mimeGetType(r.input), r.expected) << r.input;
    EXPECT_EQ(mimeGetType("a.long"), std::string(100, 'l'));
    for (std::string other : {"a.GIF", "x.png", "noext", "dot."})
        EXPECT_STREQ(mimeGetType(other.c_str()), "application/octet-stream") << other;

    EXPECT_EQ(mimeGetMajorType("IMAGE/gif"), 3);
    EXPECT_EQ(mimeGetMajorType("chemical/x-pdb"), 2);
    EXPECT_STREQ(mimeGetSubType("image/svg/xml"), "svg/xml");
    EXPECT_EQ(mimeGetSubType(("a/" + std::string(200, 'b')).c_str()), std::string(98, 'b'));
}

/// The result as its definition gives it.
time_t byDefinition(int day, int month, int year, bool isNineEast) {
    struct tm written = {};
    written.tm_mday = day, written.tm_mon = month - 1, written.tm_year = year - 1900;
    written.tm_hour = 12, written.tm_isdst = -1;
    time_t t = mktime(&written);
    if (!isNineEast) return t;
    struct tm local = *localtime(&t), greenwich = *gmtime(&t);
    return t + mktime(&local) - mktime(&greenwich) - 9 * 3600;
}

TEST(Dates, ReadsWordsByPosition) {
    setenv("TZ", "Asia/Seoul", 1);
    for (const auto& r : kit::table("parse/dates.table"))
        EXPECT_EQ(std::to_string(onCopy(r.input, mailParseDate)), r.expected) << r.input;
}

TEST(Dates, EqualTheirDefinitionInEveryZone) {
    for (const char* zone : {"UTC", "Asia/Seoul", "America/New_York", "Australia/Lord_Howe", ""}) {
        *zone ? setenv("TZ", zone, 1) : unsetenv("TZ");
        for (int year : {1950, 1988, 2004, 2037})
            for (int month = 1; month <= 12; month++)
                for (int day : {1, 15, 28}) {
                    std::string text = std::to_string(day) + " " + month_eng[month - 1] + " " +
                                       std::to_string(year) + " 12:00:00 ";
                    EXPECT_EQ(mailParseDate((text + "+0900").data()),
                              byDefinition(day, month, year, true))
                        << zone << text;
                    EXPECT_EQ(mailParseDate((text + "GMT").data()),
                              byDefinition(day, month, year, false))
                        << zone << text;
                }
    }
}

class Addresses : public kit::Site {};

TEST_F(Addresses, AreReadInOnePass) {
    for (const auto& r : kit::table("parse/addresses.table"))
        EXPECT_EQ(addressesOf(r.input), r.expected) << r.input;
    std::string lo(400, 'm');
    EXPECT_EQ(addressesOf("\"" + lo + "\"" + lo + "@h"),
              std::string(300, 'm') + " " + std::string(300, 'm') + " example.org|");
}

TEST_F(Addresses, AreWritten) {
    OwnedAddress list(mailGetAddrList("\"A <&> B\" <a@x>, b@y"));
    EXPECT_EQ(kit::taken(mailGetStrAddr(list.get())), "\"A <&> B\" <a@x>,b@y");
    EXPECT_EQ(kit::taken(mailGetStrHTMLAddr(list.get())),
              "&quot;A &lt;&amp;&gt; B&quot; &lt;a@x&gt;,b@y");
    free(list->host);
    list->host = strdup(std::string(2000, 'h').c_str());
    EXPECT_EQ(mailGetStrOneAddr(list.get()), "a@" + std::string(998, 'h'));

    const Row names[] = {{"abc|Kim", "Kim"}, {"abc|", "abc"}, {"|", ""}, {"|Kim|x", "Kim|x"}};
    for (const Row& r : names) EXPECT_STREQ(mailGetUserName(r.input), r.expected) << r.input;
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
}

TEST(Values, OfNothing) {
    EXPECT_EQ(mailParseParams(nullptr), nullptr);
    EXPECT_EQ(mailGetParam(nullptr, nullptr), nullptr);
    EXPECT_EQ(mailGetStrAddr(nullptr), nullptr);
    EXPECT_EQ(mailGetStrHTMLAddr(nullptr), nullptr);
    EXPECT_EQ(mailGetStrOneAddr(nullptr) + std::string(mailGetUserName(nullptr)), "");
    EXPECT_EQ(mailParseDate(nullptr), 0);
    EXPECT_EQ(mailGetEncType(nullptr), 5);
    EXPECT_EQ(mimeGetMajorType(nullptr), 2);
    MailBodyList** none = mailGetBody(nullptr);
    EXPECT_EQ(*none, nullptr);
    mailFreeBodyIdx(none);
    mailFree(nullptr), mailFreeBody(nullptr), mailFreeBodyIdx(nullptr), mailFreeState(nullptr);
}

}  // namespace
