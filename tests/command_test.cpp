// The commands for sites, users and settings, and those that write mail, as an operator runs them
// (roundtrip.py reads back what is composed).

#include <cstdlib>

#include "kit/script_server.h"
#include "kit/site.h"

namespace {

class Command : public kit::Site {
  protected:
    Command() { setenv("ATTALVEN_SITE", site().c_str(), 1); }
    ~Command() override { unsetenv("ATTALVEN_SITE"); }
    std::string site() const { return dir + "/site"; }
    /// Exit code and output, both streams, of "attalven <arguments>".
    static std::string run(const std::string& arguments) {
        return kit::outputOfShell(BIN_DIR "/attalven " + arguments + " 2>&1");
    }
};

TEST_F(Command, MakesASiteThatTheLibraryReads) {
    EXPECT_EQ(
        run("site init " + site() + " --host web.example.org --domain example.org --lang kor"),
        "0 " + site() +
            ": a site for mail of example.org\nuse it:  export ATTALVEN_SITE=" + site() + "\n");
    std::string text = kit::readFile(site() + "/conf/attalven.conf");
    EXPECT_NE(text.find("HOST_NAME = web\nDOMAIN_NAME = example.org\n"), std::string::npos);
    snprintf(conf.rootDir, sizeof conf.rootDir, "%s", site().c_str());
    setenv("HTTP_COOKIE", "lang=kor", 1);
    EXPECT_STREQ(mailGetMsg(83), "\xba\xb8\xc5\xeb");  // "normal" in EUC-KR
    EXPECT_STREQ(mimeGetType("a.jpg"), "image/jpeg");
    EXPECT_EQ(run("site init " + site()), "1 attalven site: " + site() + " is not empty\n");
}

TEST_F(Command, UsersAndTheirSettings) {
    ASSERT_EQ(run("site init " + site() + " --host mail.example.org").substr(0, 1), "0");
    const struct {
        const char* label;
        std::string command, expected;
    } rows[] = {
        {"nobody yet", "user show kim",
         "1 attalven user: no user \"kim\" of example.org: " + site() +
             "/mbox/k/i/kim does not exist (attalven user add)\n"},
        {"made", "user add kim",
         "0 kim@example.org: mail arrives in " + site() + "/spool/k/i/kim\n"},
        {"of another domain", "user add kim --domain b.example",
         "0 kim@b.example: mail arrives in " + site() + "/spool/b.example/k/i/kim\n"},
        {"bad id", "user add ../k",
         "1 attalven user: \"../k\" is no user id here: 2 to 15 small letters, digits, dots, "
         "hyphens, underscores\n"},
        {"set", "prefs set kim 'email_name=Kim Lee'", "0 "},
        {"a key is whole", "prefs set kim PAGE_SIZES=1",
         "1 attalven prefs: no setting \"PAGE_SIZES\"; \"attalven prefs show\" lists them\n"},
        {"site", "prefs set QUOTA=9", "0 "},
    };
    for (const auto& r : rows) EXPECT_EQ(run(r.command), r.expected) << r.label;
    std::string settings = kit::readFile(site() + "/mbox/k/i/kim/preference.ini");
    EXPECT_EQ(run("prefs show kim"), "0 " + settings);
    EXPECT_NE(settings.find("EMAIL_NAME = Kim Lee\n"), std::string::npos);
    EXPECT_EQ(run("prefs show").substr(0, 12), "0 QUOTA = 9\n");
    kit::writeFile(site() + "/spool/k/i/kim", "From a@example.org\nSubject: x\n\nbody\n");
    EXPECT_EQ(run("user show kim"), "0 user     kim@example.org\nmailbox  " + site() +
                                        "/mbox/k/i/kim\nspool    " + site() +
                                        "/spool/k/i/kim, 36 bytes\nnew      1\n");
    EXPECT_EQ(run("prefs set kim").substr(0, 2), "2 ");
    setenv("ATTALVEN_SITE", dir.c_str(), 1);
    EXPECT_EQ(run("prefs show").substr(0, 26), "1 attalven prefs: no site:");
}

TEST_F(Command, RefusesWhatItCannotWrite) {
    unsetenv("ATTALVEN_SITE");
    const std::string compose = "compose --from '\"김철수\" <kim@a.kr>' < /dev/null ";
    EXPECT_EQ(run(compose).substr(0, 2), "2 ") << "to nobody";
    for (const char* rest : {"--charset gb2312", "forward@/dev/null"})
        EXPECT_EQ(run(compose + "--to b@c.kr " + rest).substr(0, 2), "1 ") << rest;
}

TEST_F(Command, SendsToEveryRecipient) {
    unsetenv("ATTALVEN_SITE");
    kit::ScriptServer server(
        {"220 hi\n", "250 ok\n", "250 ok\n", "250 ok\n", "550 no\n", "354 go\n"});
    EXPECT_EQ(run("send --from kim@a.kr --to b@c.kr --cc d@e.kr < /dev/null --server " +
                  server.address()),
              "1 b@c.kr 250\nd@e.kr 550\n");
    EXPECT_NE(server.received().find("rcpt to: d@e.kr\ndata\nFrom kim@a.kr "), std::string::npos);
    kit::ScriptServer gateway({"1\n1\n", "1\n", "1\n", "1\n", "-"});
    EXPECT_EQ(run("sms 127.0.0.1 " + std::to_string(gateway.port()) + " 011 kim 'a b'"), "0 ");
    EXPECT_EQ(gateway.received(), "callnum 011\nreqnum NIL\nreqname kim\nmsg a+b\n");
}

}  // namespace
