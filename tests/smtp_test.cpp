#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>

#include "kit/script_server.h"
#include "kit/site.h"
#include "support/sock.h"

namespace {

using Replies = std::vector<std::string>;

class Smtp : public kit::Site {
  protected:
    /// "address code" of every result.
    static std::string deliver(const std::string& server, const char* from, const char* to,
                               std::string_view message) {
        kit::File f = kit::fileOf(message);
        MailSendResult* results = mailRFC822MsgSender(from, to, nullptr, server.c_str(), f.get());
        std::string dump;
        for (MailSendResult* r = results; r && r->address; r++)
            dump += r->address + (" " + std::to_string(r->code) + ";");
        EXPECT_TRUE(results);
        EXPECT_EQ(ftell(f.get()), 0) << "the stream is at its start again";
        mailComposeSendResultFree(results);
        return dump;
    }
};

TEST_F(Smtp, SpeaksTheDocumentedDialogue) {
    const struct {
        Replies replies;
        const char *from, *to, *message, *results, *received;
    } rows[] = {{{"220-hi\r\n220 there\r\n", "250\n", "250\n", "250\n", "550 no\n", "354\n"},
                 "me",
                 "kim@x, \"Lee\" <lee@y>",
                 "From me\nA: x\n\n.\n..a\nb\n",
                 "kim@x 250;lee@y 550;",
                 "helo\nmail from: me@example.org\nrcpt to: kim@x\nrcpt to: lee@y\ndata\nFrom "
                 "me\nA: x\n\n..\n...a\nb\n.\nquit\n"},
                // helo wants a name; no sender, no recipient; a last line without end
                {{"220 hi\n", "501 name?\n", "250\n", "354\n"},
                 "",
                 "",
                 "x",
                 "",
                 "helo\nhelo mail.example.org\ndata\nx\n.\nquit\n"},
                // Refused data still ends with a dot.
                {{"220\n", "250\n", "250\n", "250\n", "451 later\n", "500\n"},
                 "me",
                 "a@b",
                 "text\n",
                 "a@b 250;",
                 "helo\nmail from: me@example.org\nrcpt to: a@b\ndata\n.\n"},
                // The server hangs up between two recipients.
                {{"220\n", "250\n", "250\n", "250\n", ""},
                 "me",
                 "a@x,b@x,c",
                 "text\n",
                 "a@x 250;b@x 590;c@example.org 590;",
                 "helo\nmail from: me@example.org\nrcpt to: a@x\nrcpt to: b@x\n"},
                // An address cannot bring in a command.
                {{"220\n"},
                 "me",
                 "\"x\" <a\tdata@b>",
                 "",
                 "a\tdata@b 250;",
                 "helo\nmail from: me@example.org\nrcpt to: adata@b\ndata\n.\nquit\n"}};
    for (const auto& r : rows) {
        kit::ScriptServer server(r.replies);
        EXPECT_EQ(deliver(server.address(), r.from, r.to, r.message), r.results);
        EXPECT_EQ(server.received(), r.received);
    }
}

TEST_F(Smtp, DoublesDotsOnlyAtLineStarts) {
    std::string message;
    std::string expected;
    for (size_t i = 0; i < 20000; i++) {
        std::string line = "." + std::string(i % 1000, i % 2 ? '.' : 'x') + ".\n";
        message += "a." + line.substr(1) + line;
        expected += "a." + line.substr(1) + "." + line;
    }
    kit::ScriptServer server({"220\n", "250\n", "354\n"});
    EXPECT_EQ(deliver(server.address(), "", "", message), "");
    EXPECT_TRUE(server.received().substr(10) == expected + ".\nquit\n");
}

TEST_F(Smtp, GivesEveryRecipientOfAnUnreachableServer590) {
    std::string nobody = kit::ScriptServer({""}).address();
    EXPECT_EQ(deliver(nobody, "me", "a,b@x", "text"), "a@example.org 590;b@x 590;");
}

TEST_F(Smtp, PicksAServerFromTheList) {
    std::string list = dir + "/mbox/smtp_server_list.ini";
    kit::ScriptServer server({"220\n"});
    for (std::string name :
         {std::string(), std::string("127.0.0.1:1"), std::string(101, 'a'), server.address()}) {
        EXPECT_STREQ(mailGetFastestSmtpServer(), "mail.example.org") << "before " << name;
        kit::writeFile(list, name + "\n");
    }
    EXPECT_EQ(mailGetFastestSmtpServer(), server.address());
}

TEST_F(Smtp, TheAdapterSpeaksAsStrictServersWant) {
    kit::ScriptServer server({"220 hi\r\n", "250\r\n", "250\r\n", "250\r\n", "354 go\r\n"});
    sockUseSmtpAdapter("client.org");
    const char* message = "From me Mon Jan 5\nA: b\r\n\n.\nFrom x\n";
    EXPECT_EQ(deliver(server.address(), "me@x", "kim@y", message), "kim@y 250;");
    EXPECT_EQ(server.received(),
              "helo client.org\r\nmail from:<me@x>\r\nrcpt to:<kim@y>\r\ndata\r\n"
              "A: b\r\n\r\n..\r\nFrom x\r\n.\r\nquit\r\n");
    sockUseSmtpAdapter(nullptr);
}

TEST_F(Smtp, SocketsRefuseWhatIsNoHost) {
    for (const char* host : {"", "[::1", "127.0.0.1:0", "127.0.0.1:99999", "127.0.0.1:x"})
        EXPECT_LT(sockConnect(host, 25), 0) << host;
    kit::ScriptServer server({""});
    for (const char* host : {"[127.0.0.1]x", "[127.0.0.1]:25:1"})
        EXPECT_LT(sockConnect(host, server.port()), 0) << host;
}

// Byte by byte, each in time: without a bound on the whole reply it would go on for an hour.
TEST_F(Smtp, AReplyThatDripsIsGivenUp) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    struct timeval limit = {0, 300'000}, after = {};
    setsockopt(ends[0], SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    std::atomic<bool> isOver = false;
    std::thread server([&] {
        while (!isOver && send(ends[1], "2", 1, MSG_NOSIGNAL) == 1) usleep(50'000);
    });
    kit::File in(fdopen(ends[0], "r"));
    EXPECT_EQ(sockGetStatCode(in.get()), 0);
    socklen_t size = sizeof after;
    getsockopt(ends[0], SOL_SOCKET, SO_RCVTIMEO, &after, &size);
    EXPECT_NEAR(static_cast<double>(after.tv_usec), 3e5, 5e3) << "the caller's limit is back";
    isOver = true;
    server.join();
    close(ends[1]);
}

}  // namespace
