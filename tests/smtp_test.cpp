#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <sstream>

#include "kit/calls.h"
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

// A program with a timer loses no delivery.
TEST_F(Smtp, AReplySurvivesInterruptions) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    static std::atomic<int> ticks;
    struct sigaction onTick = {};
    onTick.sa_handler = [](int) { ticks++; };
    sigaction(SIGALRM, &onTick, nullptr);
    itimerval timer = {{0, 1000}, {0, 1000}};
    setitimer(ITIMER_REAL, &timer, nullptr);
    std::thread server([&] {
        sigset_t alarms;
        sigemptyset(&alarms);
        sigaddset(&alarms, SIGALRM);
        pthread_sigmask(SIG_BLOCK, &alarms, nullptr);
        for (const char* piece : {"2", "50-a\n250", " b\n"}) {
            for (int seen = ticks; ticks < seen + 3;) usleep(500);
            send(ends[1], piece, strlen(piece), MSG_NOSIGNAL);
        }
    });
    kit::File in(fdopen(ends[0], "r"));
    EXPECT_EQ(sockGetStatCode(in.get()), 250);
    timer = {};
    setitimer(ITIMER_REAL, &timer, nullptr);
    server.join();
    close(ends[1]);
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
