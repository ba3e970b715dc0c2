// Values of header fields: parameters, media types, dates, addresses, and the records they fill.

#include <ctime>

#include "kit/calls.h"
#include "kit/tree.h"
#include "mail/parse/mail_addr.h"

namespace {

using attalven::OwnedAddress, attalven::OwnedBody, attalven::OwnedParam;
using kit::shown;

std::string dump(const MailParam* p) {
    std::string all;
    for (; p; p = p->next) all += shown(p->name) + "=" + shown(p->value) + "|";
    return all;
}

std::string parametersOf(char* text) {
    return dump(OwnedParam(mailParseParams(text)).get());
}

std::string parameterOf(const char* name, char* text) {
    return shown(mailGetParam(name, OwnedParam(mailParseParams(text)).get()));
}

std::string typeOf(char* text) {
    OwnedBody node(mailNewBody());
    mailParseMimeType(text, node.get());
    std::string all = std::to_string(node->type) + " " + shown(node->subType),
                p = dump(node->params);
    return p.empty() ? all : all + " " + p;
}

std::string addressesOf(char* text) {
    OwnedAddress list(mailGetAddrList(text));
    std::string all;
    for (MailAddress* a = list.get(); a; a = a->next)
        all += shown(a->name) + " " + shown(a->mailbox) + " " + shown(a->host) + "|";
    return all;
}

template <char* (*kWrite)(MailAddress*)>
std::string written(char* text) {
    return kit::taken(kWrite(OwnedAddress(mailGetAddrList(text)).get()));
}

using Values = kit::Site;

TEST_F(Values, RowByRow) {
    kit::runTable(
        "parse/values.table",
        {RESULT(parametersOf), RESULT(parameterOf), RESULT(typeOf), RESULT(mailGetEncType),
         RESULT(mimeGetType), RESULT(mimeGetMajorType), RESULT(mimeGetSubType),
         RESULT(mailParseDate), RESULT(addressesOf), RESULT(written<mailGetStrAddr>),
         RESULT(written<mailGetStrHTMLAddr>), RESULT(mailGetUserName)},
        dir);
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

TEST_F(Values, OfNothing) {
    OwnedAddress list(mailGetAddrList("a"));
    free(list->host);
    list->host = strdup(std::string(2000, 'h').c_str());
    EXPECT_EQ(mailGetStrOneAddr(list.get()), "a@" + std::string(998, 'h'));
    EXPECT_STREQ(mailGetStrOneAddr(nullptr), "");
    MailBodyList** none = mailGetBody(nullptr);
    EXPECT_EQ(*none, nullptr);
    mailFreeBodyIdx(none);
    mailFree(nullptr), mailFreeBody(nullptr), mailFreeBodyIdx(nullptr), mailFreeState(nullptr);
}

}  // namespace
