#include <sys/stat.h>

#include "kit/site.h"
#include "mail/storage/mail_sm.h"

namespace {

using Storage = kit::Site;
using kit::modeOf;

TEST_F(Storage, PathsNeverLeaveTheTree) {
    const struct {
        const char *id, *domain, *expected;
    } rows[] = {
        {"kim", "Example.ORG", "k/i k k/i/kim k/i"},
        {"Kim", "b.example", "b.example/K/i b.example/K b.example/K/i/Kim b.example/K/i"},
        {"kim", "other", "k/i k k/i/kim k/i"},
        {"k", "", "k/= k k/=/k k/="},
        {nullptr, nullptr, "=/= = =/=/= =/="},
        {"..", "..", "==/=/= ==/= ==/=/=/== ==/=/="},
        {"a/../b", "../x.y", "..=x.y/a/= ..=x.y/a ..=x.y/a/=/a=..=b ..=x.y/a/="},
    };
    for (const auto& r : rows)
        EXPECT_EQ(std::string(smGetUserLogicalSpoolPath(r.id, r.domain)) + " " +
                      smGetUserLogicalSymLinkSpoolPath(r.id, r.domain) + " " +
                      smGetUserLogicalMBoxPath(r.id, r.domain) + " " +
                      smGetUserLogicalSymLinkMBoxPath(r.id, r.domain),
                  r.expected);
    std::string wide(252, 'w');
    EXPECT_STREQ(smGetUserLogicalMBoxPath(wide.c_str(), ""), "=") << "a cut path is another user's";
    EXPECT_EQ(smGetUserLogicalMBoxPath(wide.substr(1).c_str(), ""), "w/w/" + wide.substr(1));

    // Each function has a buffer of its own.
    std::string dump;
    for (char* path :
         {smGetUserPhysicalSpoolPath("ab", "x.y"), smGetUserLogicalSpoolPath("cd", ""),
          smGetUserLogicalSymLinkSpoolPath("ef", ""), smGetUserPhysicalMBoxPath("gh", "x.y"),
          mailGetUserMBoxPath("ij"), smGetUserLogicalSymLinkMBoxPath("kl", "")})
        dump += std::string(path) + " ";
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

TEST_F(Storage, ChoosesAPartition) {
    std::string gone = dir + "/gone";
    std::string a = dir + "/spool", b = dir + "/mbox";  // one file system: equal free space
    kit::writeFile(dir + "/mbox/storage.ini",
                   "SPOOL = " + b + "\n[one]\nOTHER = " + a + "\nspool1 = " + gone +
                       "\n SPOOL = " + a + " \r\nSPOOL = " + b + "\nSPOOL " + b + "\nMAILBOX=" + b +
                       "\nSPOOL = /" + std::string(300, 'w') + "\n[ T W O ]\nSPOOL = " + b +
                       "\n[one]\nMAILBOX = " + a + "\n[none]\nSPOOL = " + gone + "\n");
    const struct {
        const char* label;
        int type;
        const char* section;
        std::string expected;
    } rows[] = {
        {"first section, first of equals", 1, nullptr, a},
        {"empty name", 2, "", b},
        {"by name, ignoring case", 1, "Two", b},
        {"no line of the kind", 2, "two", "(null)"},
        {"no free space", 1, "none", "(null)"},
        {"no such section", 1, "three", "(null)"},
    };
    for (const auto& r : rows) {
        const char* path = smGetAvailablePartition(r.type, r.section);
        EXPECT_EQ(path ? path : "(null)", r.expected) << r.label;
    }
    EXPECT_EQ(smGetAvailablePartition(3, nullptr), nullptr);
    remove((dir + "/mbox/storage.ini").c_str());
    EXPECT_EQ(smGetAvailablePartition(1, nullptr), nullptr);
}

TEST_F(Storage, ChecksDomainsAndIds) {
    std::string list = dir + "/sendmail.cw";
    kit::writeFile(list, "# b.example\nexample.org\n  Mail.Example.ORG \r\n#c.example");
    std::string listed;
    for (const char* d : {"EXAMPLE.org", "mail.example.org", "b.example", "#c.example", ""})
        listed += attalven::listsDomain(list.c_str(), d) ? '1' : '0';
    EXPECT_EQ(listed, "11000");
    EXPECT_EQ(smChkValidMailDomainName(nullptr), 0);

    const struct {
        const char* id;
        int plain, withCase, systemAccount;
    } ids[] = {{"kim.lee-k_2", 1, 1, 1},
               {"Kim", 0, 1, 1},
               {"1kim", 1, 1, 0},
               {"", 1, 1, 1},
               {"abcdefghijklmno", 1, 1, 1},
               {"abcdefghijklmnop", 0, 0, 0}};
    for (const auto& r : ids) {
        admOptions = {};
        EXPECT_EQ(mailChkValidUserId(r.id), r.plain) << r.id;
        admOptions.allowCaseUserIdFlag = 2;
        EXPECT_EQ(mailChkValidUserId(r.id), r.withCase) << r.id;
        admOptions.passwdFlag = 1;
        EXPECT_EQ(mailChkValidUserId(r.id), r.systemAccount) << r.id;
    }
    admOptions = {};
    for (char c : std::string_view("\"+<>#%{}|\\^~[]';/?:@=&$ \xC0\x80"))
        EXPECT_EQ(mailChkValidUserId((std::string("k") + c).c_str()), 0) << c;
    EXPECT_EQ(mailChkValidUserId(nullptr), 0);
}

}  // namespace
