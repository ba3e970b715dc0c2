// Display: a 10 MB text of each character set from stored body to page text against iconv of the
// same bytes; the download of a 25 MB part against cp, and the memory that 1 GiB takes; one message
// view, from process start to last byte, against an empty program. Interleaved runs, the best of
// each.

#include <fcntl.h>
#include <iconv.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "mail/mail.h"

MailConf conf;
MailAdminPreference admOptions;

namespace {

constexpr int kRuns = 5;
constexpr size_t kTextSize = 10'000'000, kPartSize = 25'000'000;

double seconds() {
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

template <typename Call>
double timeOf(Call call) {
    double start = seconds();
    call();
    return seconds() - start;
}

/// `sample`, UTF-8, in `charset`.
std::string inCharset(const char* charset, std::string sample) {
    std::string out(sample.size() * 3, 0);
    iconv_t cd = iconv_open(charset, "UTF-8");
    char *from = sample.data(), *to = out.data();
    size_t left = sample.size(), room = out.size();
    iconv(cd, &from, &left, &to, &room);
    iconv(cd, nullptr, nullptr, &to, &room);
    iconv_close(cd);
    out.resize(out.size() - room);
    return out;
}

std::string repeated(const std::string& line, size_t size) {
    std::string all;
    while (all.size() < size) all += line;
    return all;
}

double iconvTime(const char* from, const char* to, std::string& text, std::string& out) {
    return timeOf([&] {
        iconv_t cd = iconv_open(to, from);
        char *in = text.data(), *dst = out.data();
        size_t left = text.size(), room = out.size();
        if (iconv(cd, &in, &left, &dst, &room) == static_cast<size_t>(-1)) perror(from);
        iconv_close(cd);
    });
}

struct Set {
    const char *name, *page;
    const char* sample;
};
constexpr Set kSets[] = {
    {"us-ascii", "us-ascii",
     "The quick brown fox jumps over the lazy dog, see http://a.example/ now.\n"},
    {"euc-kr", "euc-kr", "안녕하세요. 오늘 회의 자료를 보내 드립니다. kim@example.org\n"},
    {"iso-2022-kr", "euc-kr", "안녕하세요. 오늘 회의 자료를 보내 드립니다.\n"},
    {"iso-2022-jp", "shift-jis", "お世話になっております。会議の資料をお送りします。\n"},
    {"euc-jp", "shift-jis", "お世話になっております。会議の資料をお送りします。\n"},
    {"shift-jis", "shift-jis", "お世話になっております。会議の資料をお送りします。\n"},
    {"gb2312", "gb2312", "您好，现将今天的会议资料发送给您。 http://a.example/\n"},
    {"big5", "big5", "您好，現將今天的會議資料寄給您。 http://a.example/\n"},
    {"utf-8", "euc-kr", "안녕하세요. 오늘 회의 자료를 보내 드립니다. kim@example.org\n"},
};

void benchText(const Set& set) {
    std::string line = inCharset(set.name, set.sample), text = repeated(line, kTextSize);
    std::string out(text.size() * 3, 0);
    FILE* file = tmpfile();
    fwrite(text.data(), 1, text.size(), file);
    std::string name = set.name;
    char plain[] = "plain";
    MailBody part = {};
    part.type = 6;
    part.subType = plain;
    part.charSet = name.data();
    part.bodySize = static_cast<int>(text.size());
    double mine = 1e9, bare = 1e9;
    for (int run = 0; run < kRuns; run++) {
        mine = std::min(mine, timeOf([&] {
                            fflush(file);
                            free(mailDecode(&part, 2, "http://x/", file));
                        }));
        bare = std::min(bare, iconvTime(set.name, set.page, text, out));
    }
    printf("page text of 10 MB %-12s %7.1f ms  iconv %7.1f ms  ratio %.2f\n", set.name, mine * 1e3,
           bare * 1e3, mine / bare);
    fclose(file);
}

double runOf(const char* const* argv) {
    return timeOf([argv] {
        pid_t child;
        if (posix_spawnp(&child, argv[0], nullptr, nullptr, const_cast<char* const*>(argv),
                         environ) == 0)
            waitpid(child, nullptr, 0);
    });
}

/// A message of one part, as the parser would leave it.
MailInfo* messageOf(int code, int size) {
    MailInfo* msg = mailNewHeader();
    msg->body = mailNewBody();
    msg->body->type = 2;
    msg->body->encoding = code;
    msg->body->fileName = strdup("f");
    msg->body->bodySize = size;
    return msg;
}

/// The download in a process of its own, as the web server runs it, to a file as cp writes it.
int saveFile(const char* path, int code, int size, const char* target) {
    FILE* in = fopen(path, "r");
    if (!in || !freopen(target, "w", stdout)) return 1;
    mailSaveAttachFile(messageOf(code, size), 0, "f", 0, in);
    return 0;
}

void benchDownload(const char* self, const char* label, int code, const std::string& content) {
    char path[] = "/tmp/display-bench-XXXXXX";
    std::string target = std::string(mkdtemp(path)) + "/out", source = std::string(path) + "/in";
    std::string coding = std::to_string(code), size = std::to_string(content.size());
    FILE* file = fopen(source.c_str(), "w");
    fwrite(content.data(), 1, content.size(), file);
    fclose(file);
    const char* copy[] = {"cp", source.c_str(), target.c_str(), nullptr};
    const char* save[] = {self,         "save",         source.c_str(), coding.c_str(),
                          size.c_str(), target.c_str(), nullptr};
    double mine = 1e9, bare = 1e9;
    for (int run = 0; run < 3 * kRuns; run++) {
        mine = std::min(mine, runOf(save));
        bare = std::min(bare, runOf(copy));
    }
    printf("download of 25 MB %-16s %6.1f ms  cp %6.1f ms  ratio %.2f\n", label, mine * 1e3,
           bare * 1e3, mine / bare);
    unlink(source.c_str());
    unlink(target.c_str());
    rmdir(path);
}

/// Peak memory of a process that downloads `size` bytes of a sparse file, in KiB.
long downloadPeak(FILE* file, int size) {
    pid_t child = fork();
    if (child == 0) {
        MailBody part = {};
        part.bodySize = size;
        FILE* out = fopen("/dev/null", "w");
        mailDecodeAttachFile(&part, file, out);
        _exit(0);
    }
    rusage usage = {};
    wait4(child, nullptr, 0, &usage);
    return usage.ru_maxrss;
}

void benchMemory() {
    constexpr int kGiB = 1 << 30;
    FILE* file = tmpfile();
    if (ftruncate(fileno(file), kGiB) != 0) return;
    long small = downloadPeak(file, 1 << 20), large = downloadPeak(file, kGiB);
    printf("download of 1 GiB: %ld KiB more than 1 MiB takes\n", large - small);
    fclose(file);
}

/// What a page program does: open the folder, parse the message there, print its body.
int viewMessage(const char* path, int offset, int size) {
    FILE* file = fopen(path, "r");
    if (!file) return 1;
    MailInfo* msg = mailProcessing(offset, size, "", file);
    char id[] = "id";
    MailView view = {0, msg->body, &file, 1, id, "inbox"};
    void* slot = &view;
    pfnMailBody(nullptr, &slot);
    return 0;
}

void benchView(const char* self) {
    char path[] = "/tmp/display-bench-XXXXXX";
    FILE* file = fdopen(mkstemp(path), "w");
    const std::string message = repeated(
        "From a@b Mon Jan  1 00:00:00 2024\nSubject: =?euc-kr?B?sKE=?=\nFrom: a@b\n"
        "Content-Type: text/plain; charset=euc-kr\n\n" +
            repeated(inCharset("euc-kr", kSets[1].sample), 3000) + "\n",
        60'000'000);
    fwrite(message.data(), 1, message.size(), file);
    fclose(file);
    size_t size = message.find("\nFrom a@b") + 1, offset = size * 15'000;
    std::string at = std::to_string(offset), length = std::to_string(size);
    const char* view[] = {self, "view", path, at.c_str(), length.c_str(), nullptr};
    const char* empty[] = {self, "empty", nullptr};
    double mine = 1e9, bare = 1e9;
    for (int run = 0; run < 40; run++) {
        mine = std::min(mine, runOf(view));
        bare = std::min(bare, runOf(empty));
    }
    printf("message view %.2f ms  empty program %.2f ms  difference %.2f ms\n", mine * 1e3,
           bare * 1e3, (mine - bare) * 1e3);
    unlink(path);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2) return 0;
    if (argc == 5) {
        if (!freopen("/dev/null", "w", stdout)) return 1;
        return viewMessage(argv[2], atoi(argv[3]), atoi(argv[4]));
    }
    if (argc == 6) return saveFile(argv[2], atoi(argv[3]), atoi(argv[4]), argv[5]);
    setvbuf(stdout, nullptr, _IOLBF, 0);
    for (const Set& set : kSets) benchText(set);
    std::string bytes(kPartSize, 'x');
    benchDownload(argv[0], "binary", 4, bytes);
    std::string base64 = repeated(std::string(76, 'Q') + "\n", kPartSize / 57 * 77);
    benchDownload(argv[0], "base64", 3, base64);
    benchMemory();
    benchView(argv[0]);
    return 0;
}
