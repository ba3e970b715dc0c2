// compose_bench attach FILE OUT: composes a message with an attachment to a file.
// compose_bench qp|b64 FILE OUT: composes a plain text part of FILE's text, under the data limit of
// the CGI programs; compose_bench qp-floor|b64-floor FILE OUT: its encoding alone, from stream to
// stream.
// Prints seconds (a text is read before) and the highest resident size in KiB.

#include <sys/resource.h>

#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "mail/mail.h"

MailConf conf;
MailAdminPreference admOptions;

namespace {

void compose(FILE* out, char* body, char** attachments, int bodyEncoding) {
    mailCompose("a@example.org", "b@example.org", "", "", "", 3, 1, "subject", body, attachments, 3,
                bodyEncoding, 0, "euc-kr", mailGetMsgId(), "", 0, out);
}

char* textOf(FILE* in) {
    fseek(in, 0, SEEK_END);
    size_t size = static_cast<size_t>(ftell(in));
    rewind(in);
    char* text = static_cast<char*>(malloc(size + 1));
    if (text) text[fread(text, 1, size, in)] = 0;
    return text;
}

void run(const std::string& task, char* path, char* text, FILE* in, FILE* out) {
    char empty[] = "", *attachments[] = {path, nullptr};
    if (task == "attach") return compose(out, empty, attachments, 3);
    if (task == "qp-floor") return strmEncodeQP(out, in, INT_MAX);
    if (task == "b64-floor") return static_cast<void>(strmEncodeBase64(out, in));
    compose(out, text, nullptr, task == "qp" ? 2 : 3);
}

}  // namespace

int main(int argc, char** argv) {
    FILE* in = argc == 4 ? fopen(argv[2], "rb") : nullptr;
    FILE* out = in ? fopen(argv[3], "wb") : nullptr;
    if (!out) return fprintf(stderr, "compose_bench TASK FILE OUT\n"), 2;
    struct rlimit limit = {100000000, 100000000};
    setrlimit(RLIMIT_DATA, &limit);
    std::string task = argv[1];
    char* text = task == "qp" || task == "b64" ? textOf(in) : nullptr;
    auto start = std::chrono::steady_clock::now();
    run(task, argv[2], text, in, out);
    bool failed = fclose(out) != 0;
    std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    printf("%s %.4f s %ld KiB\n", argv[1], seconds.count(), usage.ru_maxrss);
    return failed;
}
