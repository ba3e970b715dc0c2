// The SMTP adapter: a child process that relays one dialogue between the plain client (lower case,
// LF line ends, bare addresses, dots already doubled) and a strict server (RFC 5321). It goes in
// lock step: a command, its whole reply, the next command; after a 354 the message up to its final
// dot. It ends when either side hangs up or a wait runs out, and holds nothing but its two sockets,
// so that no lock of the calling program lives on in it.

#include "smtp_adapter.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "mail/base/clock.h"
#include "sock.h"
#include "support.h"

namespace {

/// What the relay tells its caller beside the dialogue; shared memory.
volatile int* dataReply;

constexpr size_t kBuffer = 64 * 1024;
constexpr int kWaitSeconds = 600;  // the longest wait of RFC 5321 section 4.5.3.2

/// One side of the relay, with what was read from it ahead and what is to be written to it.
struct Side {
    int fd;
    size_t begin = 0, end = 0, pending = 0;
    char input[kBuffer], output[kBuffer];

    bool waitFor(short event, int seconds = kWaitSeconds) const {
        if (seconds <= 0) return false;
        struct pollfd p = {fd, event, 0};
        int ready;
        do ready = poll(&p, 1, seconds * 1000);
        while (ready < 0 && errno == EINTR);
        return ready == 1;
    }
    bool fill(int seconds = kWaitSeconds) {
        if (begin < end) return true;
        if (!waitFor(POLLIN, seconds)) return false;
        ssize_t got = read(fd, input, kBuffer);
        begin = 0;
        end = got > 0 ? static_cast<size_t>(got) : 0;
        return got > 0;
    }
    bool flush() {
        for (size_t sent = 0; sent < pending;) {
            if (!waitFor(POLLOUT)) return false;
            ssize_t n = write(fd, output + sent, pending - sent);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) return false;
            sent += static_cast<size_t>(n);
        }
        pending = 0;
        return true;
    }
    bool put(char c) {
        if (pending == kBuffer && !flush()) return false;
        output[pending++] = c;
        return true;
    }
    bool put(const char* text) {
        while (*text)
            if (!put(*text++)) return false;
        return true;
    }
    /// One line without its line end, cut to `size` - 1; false when the side hangs up, or the line
    /// is not there in time: a side that drips its bytes must not keep the relay alive.
    bool getLine(char* line, size_t size) {
        size_t n = 0;
        for (double last = attalven::monotonicSeconds() + kWaitSeconds;;) {
            if (!fill(static_cast<int>(last - attalven::monotonicSeconds()))) return false;
            char c = input[begin++];
            if (c == '\n') break;
            if (n < size - 1) line[n++] = c;
        }
        if (n && line[n - 1] == '\r') n--;
        line[n] = 0;
        return true;
    }
};

struct Relay {
    Side client, server;
    const char* heloName;

    /// Passes one whole reply on; its code, 0 when the server hangs up. The caller can read the
    /// code in `told` as soon as it has the reply.
    int reply(volatile int* told = nullptr) {
        char line[2048];
        do {
            if (!server.getLine(line, sizeof line) || !client.put(line) || !client.put("\n"))
                return 0;
        } while (strlen(line) > 3 && line[3] == '-');
        if (told) *told = atoi(line);
        return client.flush() ? atoi(line) : 0;
    }

    bool passAddress(const char* line, const char* keyword) {
        const char* address = line + strlen(keyword);
        address += strspn(address, " ");
        bool isBare = *address != '<';
        return server.put(keyword) && (!isBare || server.put('<')) && server.put(address) &&
               (!isBare || server.put('>'));
    }

    bool passCommand(const char* line) {
        bool ok = strcmp(line, "helo") == 0 ? server.put("helo ") && server.put(heloName)
                  : strncmp(line, "mail from:", 10) == 0 ? passAddress(line, "mail from:")
                  : strncmp(line, "rcpt to:", 8) == 0    ? passAddress(line, "rcpt to:")
                                                         : server.put(line);
        return ok && server.put("\r\n") && server.flush();
    }

    /// Leaves the From_ line out, if the message starts with one: the bytes read of it that belong
    /// to another line are passed on.
    bool skipFromLine(bool& atLineStart) {
        static const char from[] = "From ";
        size_t n = 0;
        for (; n < 5; n++) {
            if (!client.fill()) return false;
            if (client.input[client.begin] != from[n]) break;
            client.begin++;
        }
        if (n == 5) {
            char rest[8];
            return client.getLine(rest, sizeof rest);
        }
        atLineStart = n == 0;
        for (size_t i = 0; i < n; i++)
            if (!server.put(from[i])) return false;
        return true;
    }

    /// Passes the message on up to and with the line that holds one dot alone; bare CRs, which
    /// strict servers refuse, go with the CRs of the line ends.
    bool passMessage() {
        bool atLineStart = true, isDot = false;
        if (!skipFromLine(atLineStart)) return false;
        for (;;) {
            if (!client.fill()) return false;
            char c = client.input[client.begin++];
            if (c == '\r') continue;
            if (c == '\n') {
                if (!server.put("\r\n")) return false;
                if (isDot) return server.flush();
            } else if (!server.put(c)) {
                return false;
            }
            isDot = atLineStart && c == '.';
            atLineStart = c == '\n';
        }
    }

    void run() {
        char line[2048];
        if (!reply()) return;
        while (client.getLine(line, sizeof line)) {
            bool isData = strcmp(line, "data") == 0;
            if (!passCommand(line)) return;
            int code = reply(isData ? dataReply : nullptr);
            if (code == 0) return;
            if (!isData || code != 354) continue;
            *dataReply = 0;
            if (!passMessage() || !reply(dataReply)) return;
        }
    }
};

/// The relaying process; never returns.
[[noreturn]] void relay(int client, int server, const char* heloName) {
    // A second fork: the caller waits for the first child at once and leaves no zombie behind.
    if (fork() != 0) _exit(0);
    // The standard streams go too: a web server waits until the last copy of its CGI program's
    // output is closed, and the relay may outlive the program.
    dup2(client, 0);
    dup2(server, 1);
    close_range(2, ~0U, 0);
    signal(SIGPIPE, SIG_IGN);
    for (int s : {SIGTERM, SIGINT, SIGHUP}) signal(s, SIG_DFL);
    static Relay r;
    r.client.fd = 0;
    r.server.fd = 1;
    r.heloName = heloName;
    r.run();
    _exit(0);
}

/// Descriptors that dup2() onto 0 and 1 cannot overwrite before they are used.
int movedUp(int fd) {
    int high = fcntl(fd, F_DUPFD_CLOEXEC, 16);
    close(fd);
    return high;
}

}  // namespace

int sockSmtpDataReply(void) {
    return dataReply ? *dataReply : 0;
}

int adaptSmtp(int server, const char* heloName) {
    if (!dataReply) {
        void* page = mmap(nullptr, sizeof *dataReply, PROT_READ | PROT_WRITE,
                          MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        dataReply = page == MAP_FAILED ? nullptr : static_cast<volatile int*>(page);
    }
    if (dataReply) *dataReply = 0;
    int pair[2];
    if (!dataReply || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) {
        close(server);
        return -1;
    }
    int client = movedUp(pair[1]);
    server = movedUp(server);
    pid_t child = client >= 0 && server >= 0 ? fork() : -1;
    if (child == 0) relay(client, server, heloName);
    if (child > 0) {
        int status;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
    }
    if (client >= 0) close(client);
    if (server >= 0) close(server);
    if (child > 0) return pair[0];
    close(pair[0]);
    return -1;
}
