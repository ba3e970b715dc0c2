// The settings files: their whole content, their modes, and what a write that
// fails leaves.

#include <sys/stat.h>

#include <filesystem>

#include "kit/calls.h"

namespace {

namespace fs = std::filesystem;
using kit::filesIn, kit::modeOf, kit::readFile, kit::writeFile;

class Settings : public kit::Site {
  protected:
    std::string mbox(const char* name) { return dir + "/mbox/" + name; }
    std::string user(const char* name) { return dir + "/mbox/k/i/kim/" + name; }
    static std::string defaults(const char* name) {
        return readFile(std::string(TEST_DATA "/settings/") + name);
    }
};

TEST_F(Settings, UserPreferencesStartFromTheDefaults) {
    MailPreference pref;
    memset(&pref, 'x', sizeof pref);
    mailGetPreference("kim", "example.org", &pref);
    EXPECT_EQ(readFile(user("preference.ini")), defaults("preference.ini"));
    EXPECT_EQ(modeOf(user("preference.ini")), 0600);
    EXPECT_EQ(modeOf(user("")), 0700);
    EXPECT_EQ(umask(022), 0177U);
    EXPECT_STREQ(pref.charSet, "iso-8859-1");

    // A first save keeps five of the caller's values and resets the other twelve,
    // in the record too.
    mailSetPreference(
        "lee", "",
        &(pref = MailPreference{7, 7, "n", "c", "r", "f", 7, 7, 7, 8, 8, 8, 8, 8, "s", 7, 7}));
    std::string expected = defaults("preference.ini");
    size_t five = expected.find("NEW_"), rest = expected.find("SMTP_");
    EXPECT_EQ(readFile(dir + "/mbox/l/e/lee/preference.ini"),
              expected.substr(0, five) +
                  "NEW_MAIL_CHECK_TIME = 8\nATTACH_FILE_DEFAULT_NUM = 8\nREGISTERED_MAIL_FLAG = 8\n"
                  "EDITOR = 8\nVIEW_TYPE = 8\n" +
                  expected.substr(rest));
    EXPECT_STREQ(pref.smtpServer, "mail.example.org");
    EXPECT_EQ(pref.pageSize, 10);
}

TEST_F(Settings, UserPreferencesReadBackWhatWasWritten) {
    MailPreference pref;
    mailGetPreference("kim", "", &pref);
    snprintf(pref.emailName, sizeof pref.emailName, "Kim\r\nFORWARDING = thief@example.com");
    pref.pageSize = -5;
    mailSetPreference("kim", "", &pref);
    mailGetPreference("kim", "", &pref);
    EXPECT_STREQ(pref.emailName, "Kim");
    EXPECT_STREQ(pref.forwarding, "");
    EXPECT_EQ(pref.pageSize, -5);

    writeFile(user("preference.ini"),
              "copy_forwarding_flag=1\nPAGE_SIZE = 0\n#EDITOR = 9\n"
              "EDITORIAL = 4\nVIEW_TYPE = 99999999999\nEMAIL_NAME = " +
                  std::string(49, 'a') + "\xb1\xb1\n");
    mailGetPreference("kim", "", &pref);
    EXPECT_EQ(pref.copyForwardingFlag * 100 + pref.pageSize * 10 + pref.editor, 104);
    EXPECT_EQ(pref.viewType, 2147483647);
    EXPECT_EQ(pref.emailName, std::string(49, 'a')) << "no half of a character";
    EXPECT_EQ(filesIn(user("")), 1);
}

TEST_F(Settings, AFileThatDoesNotOpenEndsTheProcess) {
    fs::create_directories(dir + "/mbox/a/</a</preference.ini");
    MailPreference pref;
    std::string page = kit::outputOf(
        [&] { EXPECT_EXIT(mailGetPreference("a<", "", &pref), testing::ExitedWithCode(255), ""); });
    EXPECT_EQ(page, "Content-Type: text/html\n\n" + dir +
                        "/mbox/a/&lt;/a&lt;/preference.ini file open error!!!");
}

TEST_F(Settings, AdminPreferencesOfAFreshSite) {
    fs::remove_all(dir + "/mbox");
    MailAdminPreference rec = {};
    mailGetAdminPreference(&rec);
    EXPECT_EQ(readFile(mbox("admin_preference.ini")), defaults("admin_preference.ini"));
    EXPECT_EQ(readFile(mbox("adm_mail_subject.txt")) + readFile(mbox("adm_mail.txt")), "");
    EXPECT_EQ(readFile(mbox("adm_sign.txt")), rec.admSign);
    EXPECT_NE(strstr(rec.admSign, "Attalven"), nullptr);
    EXPECT_EQ(rec.passwdFlag, 1);
    mailFreeAdminPreference(&rec);
    EXPECT_EQ(rec.admMail, nullptr);
}

TEST_F(Settings, AdminPreferencesKeepWhatTheFilesDoNotSet) {
    writeFile(mbox("admin_preference.ini"),
              "POP3 = 7\nSPOOL_SIZE = 10\nadm_mail_subject = from here\nPOP3_FLAG = 2\n"
              "ADM_MAIL_AND_SIGN_INDIVIDUAL_FLAG = 4\n");
    MailAdminPreference rec = {};
    rec.quota = 99;
    rec.spoolSizeMailWarnFlag = 98;
    rec.admMailFlag = 97;
    mailGetAdminPreference(&rec);
    EXPECT_EQ(rec.pop3 * 10 + rec.pop3Flag, 72);
    EXPECT_EQ(rec.spoolSize * 100 + rec.spoolSizeMailWarnFlag, 1098);
    EXPECT_EQ(rec.quota * 1000 + rec.admMailFlag * 10 + rec.admMailAndSignIndividualFlag, 99974);
    EXPECT_STREQ(rec.admMailSubject, "from here");
    EXPECT_STREQ(rec.admSign, "");
    mailFreeAdminPreference(&rec);

    std::string mail = "one\n" + std::string(40000, 'm') + "\nthree\n";
    writeFile(mbox("adm_mail.txt"), mail);
    writeFile(mbox("adm_mail_subject.txt"), "Notice\nsecond\n");
    mailGetAdminPreference(&rec);
    EXPECT_EQ(rec.admMail, mail);
    EXPECT_STREQ(rec.admMailSubject, "Notice\n");
    free(rec.admSign);
    rec.admSign = nullptr;
    mailSetAdminPreference(&rec);
    EXPECT_EQ(readFile(mbox("adm_mail_subject.txt")), "Notice\n");
    EXPECT_EQ(readFile(mbox("adm_mail.txt")), mail);
    EXPECT_EQ(readFile(mbox("admin_preference.ini")).find("SUBJECT"), std::string::npos);
    writeFile(mbox("adm_mail_subject.txt"), "");
    mailFreeAdminPreference(&rec);
    mailGetAdminPreference(&rec);
    EXPECT_STREQ(rec.admMailSubject, "");
    mailFreeAdminPreference(&rec);
}

TEST_F(Settings, VacationStartsWithToday) {
    time_t now = time(nullptr);
    auto at = [now](int hour, int minute) {
        return std::to_string(
            getTs(getYear(now), getMonth(now), getDay(now), hour, minute, minute));
    };
    MailVacationPref vac = {9, 9, 9, "old", nullptr, 9, 9};
    mailGetVacationPref("kim", "", &vac);
    EXPECT_EQ(readFile(user("vacation.ini")), "FLAG = 0\nSTART_TS = " + at(0, 0) +
                                                  "\nEND_TS = " + at(23, 59) +
                                                  "\nSTYLE = 1\nSIGN_FLAG = 1\nSUBJECT = \n");
    EXPECT_STREQ(vac.replyText, "");
    mailFreeVacationPref(&vac);

    vac = {1, -2, 3, "Away\nFLAG = 7", const_cast<char*>("back\nsoon\n"), 4, 5};
    mailSetVacationPref("kim", "", &vac);
    EXPECT_EQ(readFile(user("vacation.ini")),
              "FLAG = 1\nSTART_TS = -2\nEND_TS = 3\nSTYLE = 4\nSIGN_FLAG = 5\nSUBJECT = Away\n");
    writeFile(user("vacation.ini"),
              "START_TS = soon\nsubject=" + std::string(400, 's') + "\n flag = 8\n");
    vac = {6, 6, 6, "", nullptr, 6, 6};
    mailGetVacationPref("kim", "", &vac);
    EXPECT_EQ(vac.flag * 100 + vac.startTs * 10 + vac.endTs, 606);
    EXPECT_EQ(strlen(vac.subject), 300U);
    EXPECT_STREQ(vac.replyText, "back\nsoon\n");
    mailFreeVacationPref(&vac);
    EXPECT_EQ(vac.replyText, nullptr);
}

TEST_F(Settings, AutoReplyRecordHoldsOnePair) {
    auto check = [](const char* name, const char* first, const char* second) {
        return mailChkAutoSubmittedInfo(name, "kim", "", first, second);
    };
    kit::runTable("settings/auto_reply.table",
                  {{"check", kit::result(+check)},
                   {"save",
                    [](kit::Arguments& a) {
                        return mailSaveAutoSubmittedInfo(a[0], "kim", "", a[1], a[2]), "";
                    }},
                   RESULT(mailInitMBoxPathName),
                   {"content", [this](kit::Arguments& a) { return readFile(user(a[0])); }},
                   {"ids with case",
                    [](kit::Arguments& a) { return admOptions.allowCaseUserIdFlag = a[0], ""; }}});
    EXPECT_EQ(modeOf(user("auto")), 0600);
    EXPECT_EQ(filesIn(user("")), 1);
    EXPECT_FALSE(fs::exists(dir + "/mbox/k/i/auto"));
}

}  // namespace
