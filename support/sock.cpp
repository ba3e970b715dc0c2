// Sockets: connections with a time limit over both address families, and the reading of SMTP
// replies. Survives hosts that do not answer, peers that vanish, and replies that drip or never
// end.

#include "sock.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "mail/base/clock.h"
#include "smtp_adapter.h"
#include "support.h"

namespace {

constexpr int kConnectSeconds = 30;
constexpr int kHostMax = 255;  // RFC 1035 section 2.3.4
constexpr int kDefaultSmtpPort = 25;
constexpr int kReplyLineMax = 1024;  // RFC 5321 section 4.5.3.1.5 asks for 512 bytes
constexpr int kReplyLines = 200;
constexpr int kReplySeconds = 600;  // the longest wait of RFC 5321 section 4.5.3.2

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

/// The time limit on a whole reply: as long as the socket may wait for its next byte (SO_RCVTIMEO),
/// or kReplySeconds. Each byte shortens the wait for the next one, so that a peer that drips its
/// bytes gains nothing; the socket then gets its own limit back.
class ReplyTime {
  public:
    explicit ReplyTime(FILE* stream) : fd_(fileno(stream)) {
        socklen_t size = sizeof before_;
        isLimited_ = getsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &before_, &size) == 0;
        double seconds =
            static_cast<double>(before_.tv_sec) + 1e-6 * static_cast<double>(before_.tv_usec);
        end_ = attalven::monotonicSeconds() + (seconds > 0 ? seconds : kReplySeconds);
    }
    ~ReplyTime() {
        if (isLimited_) setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &before_, sizeof before_);
    }
    ReplyTime(const ReplyTime&) = delete;
    ReplyTime& operator=(const ReplyTime&) = delete;

    /// Whether another byte may be waited for.
    bool goesOn() {
        double left = end_ - attalven::monotonicSeconds();
        if (left < 1e-5) return false;  // a limit of 0 would be none
        if (!isLimited_ || left > lastLeft_ - kStep) return true;
        lastLeft_ = left;
        auto whole = static_cast<time_t>(left);
        auto part = static_cast<suseconds_t>(1e6 * (left - static_cast<double>(whole)));
        struct timeval limit = {whole, part};
        return setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit) == 0;
    }

  private:
    static constexpr double kStep = 0.1;  // seconds; a call for every byte would cost too much
    int fd_;
    bool isLimited_;
    struct timeval before_ = {};
    double end_ = 0, lastLeft_ = 1e9;
};

/// One line of at most kReplyLineMax bytes; the rest of a longer one is read over. False at the end
/// of the stream, or when the time is over.
bool readReplyLine(FILE* stream, ReplyTime& time, char (&line)[kReplyLineMax]) {
    size_t length = 0;
    for (int budget = 64 * kReplyLineMax, c = 0; c != '\n'; budget--) {
        if (budget == 0 || !time.goesOn()) return false;
        if ((c = getc(stream)) == EOF) {
            if (!ferror(stream) || errno != EINTR) return false;
            clearerr(stream);  // a timer of the calling program
            continue;
        }
        if (length < kReplyLineMax - 1) line[length++] = static_cast<char>(c);
    }
    line[length] = 0;
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
    ReplyTime time(stream);
    for (int n = 0; n < kReplyLines; n++) {
        if (!readReplyLine(stream, time, line)) return 0;
        if (!isDigit(line[0]) || !isDigit(line[1]) || !isDigit(line[2])) return 0;
        if (line[3] != '-') return (line[0] - '0') * 100 + (line[1] - '0') * 10 + (line[2] - '0');
    }
    return 0;
}

void sockClose(int fd) {
    if (fd >= 0) close(fd);
}
