#include <fstream>

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
            dump +=
                std::string(dump.empty() ? "" : " ") + r->address + " " + std::to_string(r->code);
        EXPECT_TRUE(results);
        EXPECT_EQ(ftell(f.get()), 0) << "the stream is at its start again";
        mailComposeSendResultFree(results);
        return dump;
    }
};

TEST_F(Smtp, SpeaksTheDocumentedDialogue) {
    const char* to = "kim@example.org, \"Lee\" <lee@example.com>";
    const struct {
        const char* label;
        Replies replies;
        const char *from, *to, *message, *results, *received;
    } rows[] = {
        {"two recipients, one refused, a reply of several lines",
         {"220-hi\r\n220 there\r\n", "250 ok\n", "250 ok\n", "250 ok\n", "550 no\n", "354 go\n"},
         "me",
         to,
         "From me\nSubject: x\n\n.\n..a\nb\n",
         "kim@example.org 250 lee@example.com 550",
         "helo\nmail from: me@example.org\nrcpt to: kim@example.org\nrcpt to: "
         "lee@example.com\ndata\n"
         "From me\nSubject: x\n\n..\n...a\nb\n.\nquit\n"},
        {"helo wants a name; no sender; no recipient; last line without end",
         {"220 hi\n", "501 name?\n", "250 ok\n", "354 go\n"},
         "",
         "",
         "x",
         "",
         "helo\nhelo mail.example.org\ndata\nx\n.\nquit\n"},
        {"refused data still ends with a dot",
         {"220 hi\n", "250 ok\n", "250 ok\n", "250 ok\n", "451 later\n", "500 what\n"},
         "me",
         "a",
         "text\n",
         "a@example.org 250",
         "helo\nmail from: me@example.org\nrcpt to: a@example.org\ndata\n.\n"},
        {"the server hangs up between two recipients",
         {"220 hi\n", "250 ok\n", "250 ok\n", "250 ok\n", ""},
         "me",
         "a,b,c",
         "text\n",
         "a@example.org 250 b@example.org 590 c@example.org 590",
         "helo\nmail from: me@example.org\nrcpt to: a@example.org\nrcpt to: b@example.org\n"},
        {"an address cannot bring in a command",
         {"220 hi\n"},
         "me",
         "\"x\" <a\tdata@b>",
         "",
         "a\tdata@b 250",
         "helo\nmail from: me@example.org\nrcpt to: adata@b\ndata\n.\nquit\n"},
    };
    for (const auto& r : rows) {
        kit::ScriptServer server(r.replies);
        EXPECT_EQ(deliver(server.address(), r.from, r.to, r.message), r.results) << r.label;
        EXPECT_EQ(server.received(), r.received) << r.label;
    }
}

TEST_F(Smtp, DoublesDotsOnlyAtLineStarts) {
    std::string message;
    for (int i = 0; i < 40000; i++)
        message += i % 3 ? ".a.b\n" : std::string(29999, 'x').substr(0, 700) + ".\n";
    message += std::string(300000, '.') + "\n";
    std::string expected;
    for (size_t i = 0; i < message.size(); i++) {
        if (message[i] == '.' && (i == 0 || message[i - 1] == '\n')) expected += '.';
        expected += message[i];
    }
    kit::ScriptServer server({"220\n", "250\n", "354\n"});
    EXPECT_EQ(deliver(server.address(), "", "", message), "");
    std::string received = server.received();
    EXPECT_EQ(received.substr(10), expected + ".\nquit\n");
}

TEST_F(Smtp, GivesEveryRecipientOfAnUnreachableServer590) {
    int port = kit::ScriptServer({""}).port();
    EXPECT_EQ(deliver("127.0.0.1:" + std::to_string(port), "me", "a,b@x", "text"),
              "a@example.org 590 b@x 590");
}

TEST_F(Smtp, PicksAServerFromTheList) {
    std::string list = dir + "/mbox/smtp_server_list.ini";
    EXPECT_STREQ(mailGetFastestSmtpServer(), "mail.example.org") << "no list";
    kit::ScriptServer server({"220\n"});
    for (const auto& [content, expected] : std::vector<std::pair<std::string, std::string>>{
             {"", "mail.example.org"},
             {"127.0.0.1:1\n", "mail.example.org"},
             {std::string(101, 'a') + "\n", "mail.example.org"},
             {server.address() + "\n", server.address()}}) {
        kit::writeFile(list, content);
        EXPECT_EQ(mailGetFastestSmtpServer(), expected) << content;
    }
}

TEST_F(Smtp, TheAdapterSpeaksAsStrictServersWant) {
    kit::ScriptServer server(
        {"220 hi\r\n", "250 ok\r\n", "250 ok\r\n", "250 ok\r\n", "354 go\r\n"});
    sockUseSmtpAdapter("client.example.org");
    EXPECT_EQ(deliver(server.address(), "me", "kim@example.com",
                      "From me Mon Jan 5\nA: b\r\n\n.\nFrom x\n"),
              "kim@example.com 250");
    EXPECT_EQ(server.received(),
              "helo client.example.org\r\nmail from:<me@example.org>\r\nrcpt "
              "to:<kim@example.com>\r\ndata\r\n"
              "A: b\r\n\r\n..\r\nFrom x\r\n.\r\nquit\r\n");
    sockUseSmtpAdapter(nullptr);
}

TEST_F(Smtp, SocketsRefuseWhatIsNoHost) {
    for (const char* host : {"", "[::1", "127.0.0.1:0", "127.0.0.1:99999", "127.0.0.1:x"})
        EXPECT_LT(sockConnect(host, 25), 0) << host;
    kit::ScriptServer server({""});
    for (const char* host : {"[127.0.0.1]x", "[127.0.0.1]:25:1"})
        EXPECT_LT(sockConnect(host, server.port()), 0) << host;
    EXPECT_LT(sockConnect("127.0.0.1:2525", 80), 0)
        << "a port in the text is only for the default one";
}

}  // namespace
