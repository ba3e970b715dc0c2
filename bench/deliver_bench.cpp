// deliver_bench FILE: delivers the message in FILE to a discarding SMTP server on loopback, and
// sends the same bytes with nc to a discarding listener; interleaved rounds, the medians and their
// ratio.

#include <arpa/inet.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "mail/mail.h"

MailConf conf;
MailAdminPreference admOptions;

namespace {

using Clock = std::chrono::steady_clock;

/// Answers 250 to each line, 354 to DATA and 250 to the dot behind it.
void answer(int fd) {
    std::vector<char> block(256 * 1024);
    std::string tail;  // the end of what was read: a command, or where the dot must stand
    auto say = [fd](const char* reply) { return write(fd, reply, strlen(reply)) > 0; };
    bool open = say("220 ready\r\n"), data = false;
    for (ssize_t n; open && (n = read(fd, block.data(), block.size())) > 0;) {
        tail.append(block.data(), static_cast<size_t>(n));
        if (data && !tail.ends_with("\n.\n") && !tail.ends_with("\n.\r\n")) {
            tail.erase(0, tail.size() - std::min<size_t>(tail.size(), 4));
            continue;
        }
        if (!tail.ends_with('\n')) continue;
        bool starts = !data && strncasecmp(tail.c_str(), "data", 4) == 0;
        data = starts;
        open = say(starts ? "354 go on\r\n" : "250 fine\r\n");
        tail.clear();
    }
}

void discard(int fd) {
    std::vector<char> block(256 * 1024);
    while (read(fd, block.data(), block.size()) > 0) continue;
}

/// A child that serves one connection after another; its port.
int serve(void (*work)(int), pid_t& child) {
    int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        listen(listener, 8) != 0)
        exit(2);
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    if ((child = fork()) == 0) {
        for (int fd; (fd = accept(listener, nullptr, nullptr)) >= 0; close(fd)) work(fd);
        _exit(0);
    }
    close(listener);
    return ntohs(address.sin_port);
}

bool deliver(FILE* message, int port) {
    std::string server = "127.0.0.1:" + std::to_string(port);
    MailSendResult* results =
        mailRFC822MsgSender("kim@example.org", "lee@example.org", "", server.c_str(), message);
    bool taken = results && results->address && results->code == 250;
    mailComposeSendResultFree(results);
    return taken;
}

bool sendWithNc(const char* path, int port) {
    std::string text = std::to_string(port);
    char name[] = "nc", option[] = "-N", host[] = "127.0.0.1";
    char* argv[] = {name, option, host, text.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, path, O_RDONLY, 0);
    pid_t child = 0;
    int status = posix_spawnp(&child, name, &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (status == 0) waitpid(child, &status, 0);
    return status == 0;
}

template <typename Work>
double seconds(Work work) {
    auto start = Clock::now();
    if (!work()) exit(fprintf(stderr, "a delivery failed\n") > 0);
    return std::chrono::duration<double>(Clock::now() - start).count();
}

}  // namespace

int main(int argc, char** argv) {
    FILE* message = argc == 2 ? fopen(argv[1], "rb") : nullptr;
    if (!message) return fprintf(stderr, "usage: deliver_bench FILE\n"), 2;
    pid_t servers[2];
    int smtp = serve(answer, servers[0]), sink = serve(discard, servers[1]);
    constexpr size_t kRounds = 11;
    std::vector<double> ours, theirs;
    for (size_t i = 0; i < kRounds; i++) {
        ours.push_back(seconds([&] { return deliver(message, smtp); }));
        theirs.push_back(seconds([&] { return sendWithNc(argv[1], sink); }));
    }
    for (pid_t server : servers) kill(server, SIGTERM), waitpid(server, nullptr, 0);
    std::sort(ours.begin(), ours.end());
    std::sort(theirs.begin(), theirs.end());
    double a = ours[kRounds / 2], b = theirs[kRounds / 2];
    printf("delivery %.4f s   nc %.4f s   ratio %.2f\n", a, b, a / b);
}
