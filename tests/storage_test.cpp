// Users' paths, directories, partitions, what is a domain or an id of this site; message texts,
// dates, login checks and notices.

#include <sys/stat.h>

#include "kit/calls.h"
#include "mail/storage/format_filter.h"
#include "mail/storage/mail_sm.h"
#include "support/auth_code.h"

namespace {

using attalven::listsDomain;
using Storage = kit::Site;
using kit::modeOf;
using std::string;

string paths(const char* id, const char* domain) {
    return string(smGetUserLogicalSpoolPath(id, domain)) + " " +
           smGetUserLogicalSymLinkSpoolPath(id, domain) + " " +
           smGetUserLogicalMBoxPath(id, domain) + " " + smGetUserLogicalSymLinkMBoxPath(id, domain);
}

string idChecks(const char* id) {
    string all;
    for (auto [withCase, isAccount] : {std::pair{0, 0}, {2, 0}, {2, 1}}) {
        admOptions.allowCaseUserIdFlag = withCase;
        admOptions.passwdFlag = isAccount;
        all += (all.empty() ? "" : " ") + std::to_string(mailChkValidUserId(id));
    }
    return all;
}

TEST_F(Storage, RowByRow) {
    kit::runTable("storage/paths.table",
                  {RESULT(paths), RESULT(smGetUserLogicalMBoxPath), RESULT(smGetAvailablePartition),
                   RESULT(listsDomain), RESULT(smChkValidMailDomainName), RESULT(idChecks)},
                  dir);
    for (char c : std::string_view("\"+<>#%{}|\\^~[]';/?:@=&$ \xC0\x80"))
        EXPECT_EQ(idChecks((string("k") + c).c_str()), "0 0 0") << c;
}

TEST_F(Storage, EachPathHasAnAreaOfItsOwn) {
    string dump;
    for (char* path :
         {smGetUserPhysicalSpoolPath("ab", "x.y"), smGetUserLogicalSpoolPath("cd", ""),
          smGetUserLogicalSymLinkSpoolPath("ef", ""), smGetUserPhysicalMBoxPath("gh", "x.y"),
          mailGetUserMBoxPath("ij"), smGetUserLogicalSymLinkMBoxPath("kl", "")})
        dump += string(path) + " ";
    EXPECT_EQ(dump, "x.y/a/b c/d e x.y/g/h/gh i/j/ij k/l ");
}

TEST_F(Storage, MakesMissingDirectoriesOnly) {
    umask(0177);  // as the settings writers leave it: a directory made under it could not be used
    chmod((dir + "/mbox").c_str(), 0755);
    EXPECT_EQ(mailInitMBoxPathName("kim"), 1);
    EXPECT_EQ(umask(077), 022U);
    EXPECT_EQ(mailInitSpoolPathName("kim"), 1);
    // The physical tree knows no domains.
    EXPECT_EQ(smUserMBoxMakeAndLink("lee", conf.mboxRootDir, "sysop", "b.example"), 1);
    mailInitPathName((dir + "/x/y/").c_str());
    mailMakeDir((dir + "/a/b").c_str());
    for (const char* made : {"/mbox/k", "/mbox/k/i/kim", "/spool/k/i", "/mbox/l/e/lee", "/x/y"})
        EXPECT_EQ(modeOf(dir + made), 0700) << made;
    EXPECT_EQ(modeOf(dir + "/mbox"), 0755);
    EXPECT_EQ(modeOf(dir + "/spool/k/i/kim"), -1);
    EXPECT_EQ(modeOf(dir + "/a"), -1) << "no parents";
    std::string wide = dir + "/" + std::string(256, 'w');
    EXPECT_EQ(mailInitPathName(wide.c_str()), 1);
    EXPECT_EQ(smUserMBoxMakeAndLink(std::string(255, 'w').c_str(), conf.mboxRootDir, "", ""), 1);
    EXPECT_EQ(modeOf(dir + "/mbox/="), -1);
}

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
