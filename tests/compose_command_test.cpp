// The commands that write mail, as an operator runs them: what they compose is read back by the
// commands that read.

#include <cstdlib>

#include "kit/script_server.h"
#include "kit/site.h"

namespace {

class ComposeCommand : public kit::Site {
  protected:
    ComposeCommand() { unsetenv("ATTALVEN_SITE"); }
    /// Exit code and standard output of a shell line in which A stands for the program.
    std::string run(std::string line) {
        for (size_t at; (at = line.find("A ")) != std::string::npos;)
            line.replace(at, 1, BIN_DIR "/attalven");
        return kit::outputOfShell("cd " + dir + "; " + line + " 2>/dev/null");
    }
};

const char kFields[] =
    " --from '\"김철수\" <kim@a.kr>' --to b@c.kr --cc d@e.kr --subject '긴 제목' ";

TEST_F(ComposeCommand, ReadsBackWhatItComposed) {
    std::string bytes("\0\xFF\n--x", 6);
    kit::writeFile(dir + "/그림.gif", bytes);
    for (const char* set : {"", "--charset euc-kr", "--charset iso-2022-kr --encoding qp",
                            "--charset kor-utf-8 --type html"}) {
        SCOPED_TRACE(set);
        EXPECT_EQ(run("echo 본문 글 | A compose" + std::string(kFields) + set +
                      " 그림.gif forward@/dev/null > box"),
                  "1 ");
        EXPECT_EQ(run("echo 본문 글 | A compose" + std::string(kFields) + set + " 그림.gif > box"),
                  "0 ");
        std::string list = run("A list box"), show = run("A show box 1");
        EXPECT_NE(list.find("김철수"), std::string::npos) << list;
        EXPECT_NE(list.find("긴 제목"), std::string::npos) << list;
        EXPECT_NE(show.find("그림.gif"), std::string::npos) << show;
        bool html = strstr(set, "html");
        EXPECT_EQ(run("rm -f out; A extract box 1 " + std::string(html ? "2" : "1") + " out"),
                  "0 ");
        EXPECT_EQ(kit::readFile(dir + "/out"), bytes);
    }
    EXPECT_EQ(run("echo x | A compose --from a").substr(0, 1), "2");
    EXPECT_EQ(run("echo x | A compose" + std::string(kFields) + "--charset gb2312"), "1 ");
}

TEST_F(ComposeCommand, SendsToEveryRecipient) {
    kit::ScriptServer server(
        {"220 hi\n", "250 ok\n", "250 ok\n", "250 ok\n", "550 no\n", "354 go\n"});
    EXPECT_EQ(run("echo x | A send --server " + server.address() + kFields),
              "1 b@c.kr 250\nd@e.kr 550\n");
    EXPECT_NE(server.received().find("rcpt to: d@e.kr\ndata\nFrom kim@a.kr "), std::string::npos);
    kit::ScriptServer gateway({"1\n1\n", "1\n", "1\n", "1\n", "-"});
    EXPECT_EQ(run("A sms 127.0.0.1 " + std::to_string(gateway.port()) + " 011 kim 'a b'"), "0 ");
    EXPECT_EQ(gateway.received(), "callnum 011\nreqnum NIL\nreqname kim\nmsg a+b\n");
}

}  // namespace
