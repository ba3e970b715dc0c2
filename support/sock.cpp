// Sockets: connections with a time limit over both address families, and the reading of SMTP
// replies. Survives hosts that do not answer, peers that vanish and replies without end.

#include "sock.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "smtp_adapter.h"
#include "support.h"

namespace {

constexpr int kConnectSeconds = 30;
constexpr int kHostMax = 255;  // RFC 1035 section 2.3.4
constexpr int kDefaultSmtpPort = 25;
constexpr int kReplyLineMax = 1024;  // RFC 5321 section 4.5.3.1.5 asks for 512 bytes
constexpr int kReplyLines = 200;

char heloName[kHostMax + 1];

struct Target {
    char host[kHostMax + 1];
    char port[16];
};

/// Splits "host", "host:port" and "[v6]:port"; a port in the text counts only where the caller's is
/// the default one.
bool readTarget(const char* text, int port, Target& target) {
    const char* end = text + strlen(text);
    const char* colon = strrchr(text, ':');
    bool isBracketed = text[0] == '[';
    const char* close = isBracketed ? strchr(text, ']') : nullptr;
    if (isBracketed && !close) return false;
    bool hasPort = isBracketed ? colon == close + 1 : colon && strchr(text, ':') == colon;
    if (isBracketed && close[1] && !hasPort) return false;
    const char* hostEnd = isBracketed ? close : hasPort ? colon : end;
    if (isBracketed) text++;
    size_t length = static_cast<size_t>(hostEnd - text);
    if (length == 0 || length > kHostMax) return false;
    memcpy(target.host, text, length);
    target.host[length] = 0;
    if (hasPort && port == kDefaultSmtpPort) {
        char* rest = nullptr;
        long named = strtol(colon + 1, &rest, 10);
        if (colon[1] < '0' || colon[1] > '9' || *rest || named < 1 || named > 65535) return false;
        port = static_cast<int>(named);
    } else if (hasPort) {
        return false;
    }
    snprintf(target.port, sizeof target.port, "%d", port);
    return true;
}

/// Waits for a connection that was started on the non-blocking `fd`.
bool isConnected(int fd) {
    struct pollfd wait = {fd, POLLOUT, 0};
    int ready;
    do ready = poll(&wait, 1, kConnectSeconds * 1000);
    while (ready < 0 && errno == EINTR);
    int error = 0;
    socklen_t size = sizeof error;
    return ready == 1 && getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}

int connectTo(const struct addrinfo* a) {
    int fd = socket(a->ai_family, a->ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, a->ai_protocol);
    if (fd < 0) return -1;
    if (connect(fd, a->ai_addr, a->ai_addrlen) != 0 && (errno != EINPROGRESS || !isConnected(fd))) {
        close(fd);
        return -1;
    }
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    // The final dot follows the message in a small packet of its own, which would wait for an
    // acknowledgement.
    int on = 1;
    setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return fd;
}

/// One line of at most kReplyLineMax bytes; the rest of a longer one is read over. False at the end
/// of the stream.
bool readReplyLine(FILE* stream, char (&line)[kReplyLineMax]) {
    if (!fgets(line, sizeof line, stream)) return false;
    bool isWhole = strchr(line, '\n') != nullptr;
    for (int budget = 64 * kReplyLineMax, c = 0; !isWhole; isWhole = c == '\n')
        if ((c = getc(stream)) == EOF || --budget == 0) return false;
    return true;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

void sockUseSmtpAdapter(const char* name) {
    snprintf(heloName, sizeof heloName, "%s", name ? name : "");
}

int sockConnect(const char* host, int port) {
    Target target;
    if (!host || port < 1 || port > 65535 || !readTarget(host, port, target)) return -1;
    struct addrinfo hints = {}, *found = nullptr;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    if (getaddrinfo(target.host, target.port, &hints, &found) != 0) return -1;
    int fd = -1;
    for (const struct addrinfo* a = found; a && fd < 0; a = a->ai_next) fd = connectTo(a);
    freeaddrinfo(found);
    bool isSmtp = port == kDefaultSmtpPort || port == 587;
    return fd >= 0 && isSmtp && heloName[0] ? adaptSmtp(fd, heloName) : fd;
}

int sockGetStatCode(FILE* stream) {
    if (!stream) return 0;
    char line[kReplyLineMax];
    for (int n = 0; n < kReplyLines; n++) {
        if (!readReplyLine(stream, line)) return 0;
        if (!isDigit(line[0]) || !isDigit(line[1]) || !isDigit(line[2])) return 0;
        if (line[3] != '-') return (line[0] - '0') * 100 + (line[1] - '0') * 10 + (line[2] - '0');
    }
    return 0;
}

void sockClose(int fd) {
    if (fd >= 0) close(fd);
}
