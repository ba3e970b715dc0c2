#include "script_server.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace kit {

ScriptServer::ScriptServer(std::vector<std::string> replies) {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* a = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener_, a, size) != 0 || listen(listener_, 1) != 0 ||
        getsockname(listener_, a, &size) != 0)
        abort();
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this, replies = std::move(replies)] { play(replies); });
}

ScriptServer::~ScriptServer() {
    shutdown(listener_, SHUT_RDWR);
    if (thread_.joinable()) thread_.join();
    close(listener_);
}

const std::string& ScriptServer::received() {
    if (thread_.joinable()) thread_.join();
    return received_;
}

void ScriptServer::play(std::vector<std::string> replies) {
    int fd = accept(listener_, nullptr, nullptr);
    if (fd < 0) return;
    FILE* in = fdopen(fd, "r");
    char* line = nullptr;
    size_t capacity = 0;
    bool inMessage = false;
    for (size_t n = 0;; n++) {
        std::string reply = n < replies.size() ? replies[n] : "250 ok\r\n";
        if (reply.empty()) break;
        if (reply != "-" && send(fd, reply.data(), reply.size(), MSG_NOSIGNAL) < 0) break;
        inMessage = reply.starts_with("354");
        ssize_t got;
        do {
            got = getline(&line, &capacity, in);
            if (got > 0) received_.append(line, static_cast<size_t>(got));
        } while (got > 0 && inMessage && std::string(line) != ".\n" &&
                 std::string(line) != ".\r\n");
        if (got <= 0) break;
    }
    free(line);
    fclose(in);
}

}  // namespace kit
