// Message texts, dates, login checks and notices.

#include "kit/calls.h"
#include "mail/storage/format_filter.h"
#include "support/auth_code.h"

namespace {

using Login = kit::Site;

std::string filtered(int arguments, int areNumbers, const char* text) {
    attalven::Text out;
    attalven::filterFormat(text, {arguments, areNumbers != 0}, out);
    return std::string(out.view());
}

void setTemplateNumber(int n) {
    conf.defaultTemplateNum = n;
}

int isAuthenticated(const char* id, const char* carried, const char* key) {
    snprintf(conf.adminKey, sizeof conf.adminKey, "key");
    return mailAuthUserId(id, kit::taken(authCodeMake(carried, key, time(nullptr) + 100)).c_str());
}

TEST_F(Login, RowByRow) {
    kit::runTable("storage/login.table",
                  {RESULT(filtered), RESULT(mailGetLoginErrMsg), PRINTED(setTemplateNumber),
                   PRINTED(mailLoginFail), RESULT(isAuthenticated), RESULT(mailUserLevel),
                   PRINTED(mailChkMemo), RESULT(mailNewMailChk), RESULT(mailGetDate)},
                  dir);
    EXPECT_EQ(mailAuthUserId("", "no code"), 0);
}

TEST_F(Login, LooksForNewMailWithoutMarks) {
    kit::writeFile(dir + "/spool/k/i/kim", "From a\nSubject: x\n\nbody\n");
    ASSERT_EQ(mailNewMailChk("kim", "", 1), 1);
    EXPECT_EQ(kit::readFile(dir + "/spool/k/i/kim"), "From a\nSubject: x\n\nbody\n");
}

TEST_F(Login, MessagesTakeFiveSlotsInTurn) {
    kit::writeFile(dir + "/root/conf/msg.eng", "1\tone %d\n2\t%s and %s\n3\t" +
                                                   std::string(299, 'x') + "\xb0\xa1\n4\t%n100%\n");
    char* first = mailGetMsg(1, 11);
    EXPECT_STREQ(first, "one 11");
    EXPECT_STREQ(mailGetMsg(2, "a", "b"), "a and b");
    EXPECT_EQ(mailGetMsg(3), std::string(299, 'x')) << "no half of a character";
    EXPECT_STREQ(mailGetMsg(4), "%n100%");
    EXPECT_STREQ(mailGetMsg(99, 1), "");
    EXPECT_STREQ(first, "one 11");
    EXPECT_EQ(mailGetMsg(1, 12), first);
}

}  // namespace
