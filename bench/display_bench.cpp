// Display: a 10 MB text of each character set from stored body to page text against iconv of the
// same bytes, and the download of a 25 MB part against cp. Prints ratios; interleaved runs, best
// of five.

#include <fcntl.h>
#include <iconv.h>
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
        pid_t child = fork();
        if (child == 0) {
            execvp(argv[0], const_cast<char* const*>(argv));
            _exit(127);
        }
        waitpid(child, nullptr, 0);
    });
}

/// The download in a process of its own, as the web server runs it, to a file as cp writes it.
double downloadTime(const char* path, MailInfo* msg, const char* target) {
    return timeOf([&] {
        pid_t child = fork();
        if (child == 0) {
            FILE* in = fopen(path, "r");
            if (in && freopen(target, "w", stdout)) mailSaveAttachFile(msg, 0, "f", 0, in);
            exit(0);
        }
        waitpid(child, nullptr, 0);
    });
}

void benchDownload(const char* label, int code, const std::string& content) {
    char path[] = "/tmp/display-bench-XXXXXX";
    std::string target = std::string(mkdtemp(path)) + "/out", source = std::string(path) + "/in";
    FILE* file = fopen(source.c_str(), "w");
    fwrite(content.data(), 1, content.size(), file);
    fclose(file);
    MailInfo* msg = mailNewHeader();
    msg->body = mailNewBody();
    msg->body->type = 2;
    msg->body->encoding = code;
    msg->body->fileName = strdup("f");
    msg->body->bodySize = static_cast<int>(content.size());
    const char* copy[] = {"cp", source.c_str(), target.c_str(), nullptr};
    double mine = 1e9, bare = 1e9;
    for (int run = 0; run < kRuns; run++) {
        mine = std::min(mine, downloadTime(source.c_str(), msg, target.c_str()));
        bare = std::min(bare, runOf(copy));
    }
    printf("download of 25 MB %-16s %6.1f ms  cp %6.1f ms  ratio %.2f\n", label, mine * 1e3,
           bare * 1e3, mine / bare);
    mailFree(&msg);
    unlink(source.c_str());
    unlink(target.c_str());
    rmdir(path);
}

}  // namespace

int main() {
    setvbuf(stdout, nullptr, _IOLBF, 0);
    for (const Set& set : kSets) benchText(set);
    std::string bytes(kPartSize, 'x');
    benchDownload("binary", 4, bytes);
    std::string base64 = repeated(std::string(76, 'Q') + "\n", kPartSize / 57 * 77);
    benchDownload("base64", 3, base64);
    return 0;
}
