// The send drivers against scripted servers: what reaches the server, what the caller is told.

#include <sys/resource.h>

#include "kit/calls.h"
#include "kit/composed.h"
#include "kit/script_server.h"

namespace {

using Replies = std::vector<std::string>;

class Send : public kit::Site {
  protected:
    Send() {
        setenv("TZ", "UTC0", 1);
        admOptions.admSign = sign_;
        conf.defaultTemplateNum = 1;
        kit::writeFile(dir + "/doc/template/eng1/notice", "Dear [%NAME%]");
    }
    static void setServer(const std::string& address) {
        snprintf(conf.serverName, sizeof conf.serverName, "%s", address.c_str());
    }
    char sign_[8] = "-- \nadm";
};

const char
    kHead[] =
        "helo\nmail from: me@example.org\nrcpt to: kim@b\ndata\nFrom me@example.org DATE\n"
        "Message-Id: <MSGID@example.org>\nFrom: me@example.org\nTo: kim@b\n",
    kMail[] =
        "Date: DATE\nMIME-Version: 1.0\nX-Priority: 2\nX-Mailer: @TALVEN-5.0.0905.1.2400 (Linux)\n"
        "Content-Type: text/plain;\n\tcharset=\"euc-kr\"\nContent-Transfer-Encoding: base64\n\n";

TEST_F(Send, ComposesSignsAndDelivers) {
    const Replies replies = {"220 hi\n", "250 ok\n", "250 ok\n", "550 no\n", "354 go\n"};
    const struct {
        const char *subject, *subjectLine, *body;
        bool isTemplate;
    } rows[] = {
        {"\xB0\xA1", "Subject: =?euc-kr?B?sKE=?=\n", "aGkKLS0gCmFkbQoK",
         false},  // "hi\n-- \nadm\n\n"
        {nullptr, "Subject: \n", "RGVhciBbJU5BTUUlXQotLSAKYWRtCgo=", true},
    };
    for (const auto& r : rows) {
        kit::ScriptServer server(replies);
        setServer(server.address());
        int sent = r.isTemplate
                       ? mailSendDirectiveMsg("me", "kim@b", 2, 1, r.subject, "notice", 0, "euc-kr",
                                              "", "eng")
                       : mailSendMsg("me", "kim@b", 2, 1, r.subject, "hi", 0, "euc-kr", "");
        ASSERT_EQ(sent, 1);
        EXPECT_EQ(kit::masked(server.received()),
                  std::string(kHead) + r.subjectLine + kMail + r.body + "\n\n\n\n.\nquit\n");
    }
}

TEST_F(Send, NothingIsSentOfWhatCannotBeMade) {
    kit::ScriptServer server({"220 hi\n220 you\n"});
    setServer(server.address());
    EXPECT_EQ(mailSendDirectiveMsg("me", "kim@b", 2, 1, "s", "missing", 0, "euc-kr", "", "eng"), 0);
    struct rlimit tight = {100, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &tight);
    EXPECT_EQ(mailSendMsg("me", "kim@b", 2, 1, "s", "hi", 0, "euc-kr", ""), 0);
    struct rlimit wide = {RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &wide);
    ASSERT_EQ(mailSendShortMessage("1", "me", "last", "127.0.0.1",
                                   static_cast<unsigned short>(server.port())),
              1);
    EXPECT_EQ(server.received(), "callnum 1\nreqnum NIL\nreqname me\nmsg last\n");
}

std::string shortMessage(const char* number, const char* name, const char* text) {
    kit::ScriptServer server({"100 hi\n100 ready\n", "200\n", "200\n", "200\n", "-"});
    auto port = static_cast<unsigned short>(server.port());
    int sent = mailSendShortMessage(number, name, text, "127.0.0.1", port);
    return std::to_string(sent) + " " + server.received();
}

TEST_F(Send, ShortMessages) {
    kit::runTable("smtp/short_messages.table", {RESULT(shortMessage)});
    EXPECT_EQ(mailSendShortMessage("1", "a", "b", "127.0.0.1", 1), 0);
}

}  // namespace
