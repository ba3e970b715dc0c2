// The line dialogue that SMTP delivery and the short-message gateway share. Survives a peer that
// vanishes, stalls or answers nonsense; the limits on waiting are socket options, ignored where the
// descriptor is no socket.

#include "dialogue.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "mail/base/clock.h"
#include "support/support.h"

namespace attalven {

namespace {

constexpr int kWriteSeconds = 180;  // a block of message text (RFC 5321 section 4.5.3.2.5)
constexpr int kHighestCode = 999;

void setTimeLimit(int fd, int option, int seconds) {
    struct timeval limit = {seconds, 0};
    setsockopt(fd, SOL_SOCKET, option, &limit, sizeof limit);
}

}  // namespace

Dialogue::Dialogue(int fd) {
    int reading = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    if (reading >= 0) {
        in_.reset(fdopen(reading, "r"));
        if (!in_) close(reading);
    }
    out_.reset(fdopen(fd, "w"));
    if (!out_) close(fd);
    if (!isOpen()) {
        lost_ = true;
        return;
    }
    setTimeLimit(fd, SO_SNDTIMEO, kWriteSeconds);
}

void Dialogue::write(string_view bytes) {
    if (lost_ || bytes.empty()) return;
    if (fwrite(bytes.data(), 1, bytes.size(), out_.get()) != bytes.size()) lost_ = true;
}

int Dialogue::reply(int seconds) {
    if (lost_ || fflush(out_.get()) != 0) {
        lost_ = true;
        return 0;
    }
    setTimeLimit(fileno(in_.get()), SO_RCVTIMEO, seconds);
    double end = monotonicSeconds() + seconds;
    int code = sockGetStatCode(in_.get());
    bool isCode = code > 0 && code <= kHighestCode;
    // What comes of a reply that took too long would be read as the next one.
    if (!isCode && (feof(in_.get()) || ferror(in_.get()) || monotonicSeconds() >= end)) {
        lost_ = true;
        return 0;
    }
    return code;
}

int Dialogue::command(std::initializer_list<string_view> parts, int seconds) {
    for (string_view part : parts) write(part);
    return reply(seconds);
}

}  // namespace attalven
