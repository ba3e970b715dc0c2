// Delivery and the send drivers against scripted servers: what reaches the server, what the caller
// is told.

#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <sstream>

#include "kit/calls.h"
#include "kit/composed.h"
#include "kit/script_server.h"
#include "support/sock.h"

namespace {

using Replies = std::vector<std::string>;

using Smtp = kit::Site;

/// "address code" of every result.
std::string deliver(const std::string& server, const char* from, const char* to,
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

/// The results, and below them what the server received; `replies` between "&".
std::string dialogue(const char* replies, const char* from, const char* to,
                     std::string_view message) {
    Replies all;
    std::istringstream in(replies);
    for (std::string reply; std::getline(in, reply, '&');) all.push_back(reply);
    kit::ScriptServer server(all);
    std::string results = deliver(server.address(), from, to, message);
    return results + "\n" + server.received();
}

TEST_F(Smtp, SpeaksTheDocumentedDialogue) {
    kit::runTable("smtp/dialogues.table", {RESULT(dialogue)});
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

/// A connected stream: what `server` does with the other end, while `client` reads.
void converse(const std::function<void(int)>& server, const std::function<void(FILE*)>& client) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    std::thread other([&] { server(ends[1]); });
    client(kit::File(fdopen(ends[0], "r")).get());
    other.join();
    close(ends[1]);
}

// A program with a timer loses no delivery.
TEST_F(Smtp, AReplySurvivesInterruptions) {
    static std::atomic<int> ticks;
    struct sigaction onTick = {};
    onTick.sa_handler = [](int) { ticks++; };
    sigaction(SIGALRM, &onTick, nullptr);
    itimerval timer = {{0, 1000}, {0, 1000}};
    setitimer(ITIMER_REAL, &timer, nullptr);
    converse(
        [](int end) {
            sigset_t alarms;
            sigemptyset(&alarms);
            sigaddset(&alarms, SIGALRM);
            pthread_sigmask(SIG_BLOCK, &alarms, nullptr);
            for (const char* piece : {"2", "50-a\n250", " b\n"}) {
                for (int seen = ticks; ticks < seen + 3;) usleep(500);
                send(end, piece, strlen(piece), MSG_NOSIGNAL);
            }
        },
        [](FILE* in) { EXPECT_EQ(sockGetStatCode(in), 250); });
    timer = {};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

// Byte by byte, each in time: without a bound on the whole reply it would go on for an hour.
TEST_F(Smtp, AReplyThatDripsIsGivenUp) {
    std::atomic<bool> isOver = false;
    converse(
        [&isOver](int end) {
            while (!isOver && send(end, "2", 1, MSG_NOSIGNAL) == 1) usleep(50'000);
        },
        [&isOver](FILE* in) {
            struct timeval limit = {0, 300'000}, after = {};
            setsockopt(fileno(in), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
            EXPECT_EQ(sockGetStatCode(in), 0);
            socklen_t size = sizeof after;
            getsockopt(fileno(in), SOL_SOCKET, SO_RCVTIMEO, &after, &size);
            EXPECT_NEAR(static_cast<double>(after.tv_usec), 3e5, 5e3)
                << "the caller's limit is back";
            isOver = true;
        });
}

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
