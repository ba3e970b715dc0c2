// What the worst mail costs: each case runs in a process of its own under limits on memory, stack
// and processor time, so that a quadratic scanner, a recursion without bound or a copy of the whole
// mail ends it. Prints a table of processor time and peak memory; large parts have 1 GiB. With the
// argument "check" (and 64 MiB) any case that its limits ended, or whose result is wrong, makes the
// program fail; the limit on time is then five times the goal. Any other argument: a word of the
// cases to run.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "endless.h"
#include "mail/mail.h"
#include "support/support.h"

MailConf conf;
MailAdminPreference admOptions;

namespace {

using std::string;
constexpr size_t kMega = 1'000'000;
constexpr rlim_t kMiB = 1 << 20;

/// A check leaves the disk alone and takes less of what grows with its input anyway.
bool isCheck;

/// The processor time so far is the preparation's.
double prepared;

double secondsUsed() {
    rusage use;
    getrusage(RUSAGE_SELF, &use);
    return static_cast<double>(use.ru_utime.tv_sec + use.ru_stime.tv_sec) +
           1e-6 * static_cast<double>(use.ru_utime.tv_usec + use.ru_stime.tv_usec);
}
void start() {
    prepared = secondsUsed();
}

FILE* file() {
    FILE* f = tmpfile();
    if (!f) abort();
    return f;
}
/// A file of `head` and `count` times `piece`, of which "#" becomes the number.
FILE* repeated(const char* head, const char* piece, size_t count) {
    FILE* f = file();
    fputs(head, f);
    const char* mark = strchr(piece, '#');
    for (size_t i = 0; i < count; i++)
        mark ? fprintf(f, "%.*s%zu%s", static_cast<int>(mark - piece), piece, i, mark + 1)
             : fputs(piece, f);
    rewind(f);
    return f;
}
int sizeOf(FILE* f) {
    return static_cast<int>(fileStrmGetSize(f));
}
string text(const char* piece, size_t count) {
    string all;
    all.reserve(strlen(piece) * count);
    for (size_t i = 0; i < count; i++) all += piece;
    return all;
}

template <typename Node>
size_t length(const Node* n) {
    size_t count = 0;
    for (; n; n = n->next) count++;
    return count;
}
int depth(const MailBody* b) {
    int deepest = 0;
    for (; b; b = b->next) deepest = std::max(deepest, 1 + depth(b->child));
    return deepest;
}

bool nestedMultiparts() {
    FILE* f = repeated("", "Content-Type: multipart/mixed; boundary=b\n\n--b\n", 200'000);
    start();
    MailInfo* m = mailProcessing(0, sizeOf(f), "", f);
    return m && depth(m->body) == 101;
}

bool forwardedChain() {
    FILE* f = repeated("", "Message-ID: <#>\nContent-Type: message/rfc822\n\n", 10'000);
    start();
    MailInfo* m = mailProcessing(0, sizeOf(f), "none", f);
    return m && strcmp(m->messageId, "0") == 0;
}

bool continuationLines() {
    FILE* f = repeated("Subject: a\n", " x\n", 10 * kMega / 3);
    fseek(f, 0, SEEK_END);
    fputs("\nbody\n", f);
    rewind(f);
    start();
    MailInfo* m = mailGetHeaderInfo(0, sizeOf(f), f);
    return m && strlen(m->subject) == 10 * kMega / 3 + 1;
}

bool addresses() {
    string list = text("\"Kim\" <kim@x.org>, ", kMega);
    start();
    return length(mailGetAddrList(list.c_str())) == kMega;
}

bool addressesWithinSiteLimit() {
    string list = text("\"Kim\" <kim@x.org>, ", kMega);
    start();
    size_t count = length(mailGetAddrList(list.c_str()));
    return count > kMega / 10 && count < kMega;
}

bool addressText() {
    MailAddress* list = mailGetAddrList(text("\"Kim\" <kim@x.org>, ", kMega).c_str());
    start();
    return strlen(mailGetAddrStr(list, "euc-kr")) > 10 * kMega &&
           strlen(mailGetStrHTMLAddr(list)) > 10 * kMega;
}

bool encodedWords() {
    string words = text("=?utf-8?B?7ZWc?= ", kMega);
    start();
    return strlen(mailDecodeSubject(words.c_str())) == 3 * kMega;
}

bool rawWords() {
    string words = text("\xB0\xA1 <x>; ", kMega);
    start();
    return mailEncodeSubject(words.c_str(), "kor-utf-8", 2) &&
           mailEncodeSubject(words.c_str(), "euc-kr", 3);
}

bool parameters() {
    string params = text("name=\"value\"; ", kMega);
    start();
    MailParam* list = mailParseParams(params.data());
    return length(list) == kMega && mailGetParam("name", list);
}

/// Texts that lead a scanner of pages to look far ahead, again and again.
bool pageTexts() {
    start();
    for (const char* piece : {"<", "http://", "@", "a@", "<a ", "<!--", "~{a", "<http://a",
                              "<script><!--", "<A HREF=\"http://a", "\"'=<x ", ".@a.-"}) {
        string all = text(piece, kMega / strlen(piece));
        char* links = strToHyperLink(all.c_str());
        char* page = strConvHTMLStr(links, "\n");
        char* plain = strStripHTMLTag(all.c_str());
        if (!links || !page || !plain) return false;
        for (char* made : {links, page, plain}) free(made);
    }
    return true;
}

/// A forwarded message that holds each boundary that the clock can give.
bool foreseenBoundaries() {
    string path = "/tmp/attalven-limits-" + std::to_string(getpid());
    FILE* f = fopen(path.c_str(), "w");
    fputs("From x\n", f);
    for (unsigned second = 0; second < 5; second++) {
        srand(static_cast<unsigned>(time(nullptr)) + second);
        for (int n = 0; n < 100'000; n++) {
            fputs("----=_NextPart_", f);
            for (int i = 0; i < 24; i++)
                putc("ABCDEFGHIJKLMNOPQRSTUVWXYZ1234567890"[rand() % 36], f);
            putc('\n', f);
        }
    }
    fclose(f);
    start();
    string entry = "forward@" + path;
    char* list[] = {entry.data(), nullptr};
    FILE* out = file();
    mailCompose("a@b", "c@d", "", "", nullptr, 3, 1, "s", "text", list, 3, 3, 0, "euc-kr", "id", "",
                0, out);
    unlink(path.c_str());
    MailInfo* m = (rewind(out), mailProcessing(0, sizeOf(out), "id", out));
    return m && length(m->body->child) == 2;
}

/// 3 GiB, of which all but the ends is a hole: the messages behind 2 GiB are not indexed and stay.
bool sparseFolder() {
    string path = "/tmp/attalven-limits-" + std::to_string(getpid());
    const string first = "From a@b Mon Jan  5 00:00:00 2004\nSubject: one\n\nx\n",
                 last = "\nFrom a@b Mon Jan  5 00:00:00 2004\nSubject: two\n\n";
    int fd = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
    off_t end = off_t{3} << 30;
    auto put = [fd](const string& s, off_t at) {
        if (pwrite(fd, s.data(), s.size(), at) != static_cast<ssize_t>(s.size())) abort();
    };
    put(first + first, 0);
    put(last, end);
    start();
    Fldr* f = fldrOpen(path.c_str());
    bool isRight = f && fldrMsgMax(f) >= 1 && fldrMsgDelete(1, f);
    fldrClose(f);
    struct stat st;
    isRight = isRight && stat(path.c_str(), &st) == 0 &&
              st.st_size == end + static_cast<off_t>(last.size() - first.size());
    close(fd);
    unlink(path.c_str());
    return isRight;
}

bool stream(const char* line, void (*copy)(FILE* out, FILE* in, int length)) {
    Endless endless = {line, isCheck ? 64 << 20 : 1 << 30};
    FILE* in = openEndless(endless);
    FILE* out = fopen("/dev/null", "w");
    start();
    copy(out, in, static_cast<int>(endless.size));
    return endless.at == endless.size;
}

constexpr double kDiskGoal = 60;
struct Case {
    const char* name;
    bool (*run)();
    double goal;    // seconds
    rlim_t memory;  // MiB of data
} const kCases[] = {
    {"10 MB of nested multiparts", nestedMultiparts, 1, 16},
    {"10,000 forwarded in each other", forwardedChain, 1, 16},
    {"10 MB of three-byte continuation lines", continuationLines, 1, 64},
    {"1,000,000 addresses", addresses, 1, 400},
    {"1,000,000 addresses, data limit 100 MB", addressesWithinSiteLimit, 1, 95},
    {"1,000,000 addresses as two texts", addressText, 1, 600},
    {"1,000,000 encoded words", encodedWords, 1, 95},
    {"1,000,000 words to encode", rawWords, 1, 200},
    {"1,000,000 parameters", parameters, 1, 200},
    {"12 hostile page texts of 1 MB", pageTexts, 1, 300},
    {"500,000 foreseen boundaries", foreseenBoundaries, 1, 16},
    {"folder of 3 GiB, one message deleted", sparseFolder, kDiskGoal, 16},
    {"large part: strmEncodeBase64",
     [] { return stream("text\n", [](FILE* out, FILE* in, int) { strmEncodeBase64(out, in); }); },
     10, 16},
    {"large part: strmDecodeBase64", [] { return stream("QUJDREVGR0hJSktM\n", strmDecodeBase64); },
     10, 16},
    {"large part: strmEncodeQP", [] { return stream("text = \xB0\xA1\n", strmEncodeQP); }, 10, 16},
    {"large part: strmDecodeQP", [] { return stream("text =3D =B0=\n", strmDecodeQP); }, 10, 16},
    {"large part: strmDecodeUU", [] { return stream("#86)C\n", strmDecodeUU); }, 20, 16},
    {"large part: strmXBit", [] { return stream("text\n", strmXBit); }, 10, 16},
    {"large part: strmDecodeISO2022KR",
     [] { return stream("\x1B$)C\x0E!!\x0F\n", strmDecodeISO2022KR); }, 20, 16},
};

void limit(__rlimit_resource_t what, rlim_t most) {
    struct rlimit l = {most, most};
    if (setrlimit(what, &l) != 0) abort();
}

bool runCase(const Case& c) {
    fflush(stdout);
    pid_t child = fork();
    if (child == 0) {
        limit(RLIMIT_STACK, kMiB);
        limit(RLIMIT_DATA, c.memory * kMiB);
        limit(RLIMIT_CPU, static_cast<rlim_t>(5 * c.goal) + 10);  // and what the input takes
        limit(RLIMIT_CORE, 0);
        bool isRight = c.run();
        double seconds = secondsUsed() - prepared;
        rusage use;
        getrusage(RUSAGE_SELF, &use);
        printf("%-42s %8.2f s %8ld KiB  %s\n", c.name, seconds, use.ru_maxrss,
               !isRight               ? "WRONG"
               : seconds > 5 * c.goal ? "TOO SLOW"
               : seconds > c.goal     ? "over its goal"
                                      : "");
        fflush(stdout);
        _exit(!isRight || seconds > 5 * c.goal);
    }
    int status;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) printf("%-42s ended by signal %d\n", c.name, WTERMSIG(status));
    return status == 0;
}

}  // namespace

int main(int argc, char** argv) {
    isCheck = argc > 1 && strcmp(argv[1], "check") == 0;
    int bad = 0;
    for (const Case& c : kCases)
        if (isCheck ? c.goal < kDiskGoal : argc < 2 || strstr(c.name, argv[1])) bad += !runCase(c);
    return isCheck && bad;
}
