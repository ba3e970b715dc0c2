// text_part_bench FILE: composes a plain text part of FILE's text, which lies in memory, under the
// data limit of the CGI programs, and encodes FILE alone from stream to stream; interleaved rounds,
// the medians and their ratio.

#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "mail/mail.h"

MailConf conf;
MailAdminPreference admOptions;

namespace {

constexpr int kRounds = 7;

char* textOf(FILE* in) {
    fseek(in, 0, SEEK_END);
    size_t size = static_cast<size_t>(ftell(in));
    rewind(in);
    char* text = static_cast<char*>(malloc(size + 1));
    if (text) text[fread(text, 1, size, in)] = 0;
    return text;
}

/// Milliseconds of `work` with a new file in memory.
template <typename Work>
double timeOf(Work work) {
    FILE* out = fdopen(memfd_create("out", 0), "wb");
    if (!out) exit(1);
    auto start = std::chrono::steady_clock::now();
    work(out);
    bool failed = fflush(out) != 0 || ftell(out) < 1000000;
    std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    fclose(out);
    if (failed) exit(1);
    return time.count();
}

double median(std::vector<double>& times) {
    std::nth_element(times.begin(), times.begin() + kRounds / 2, times.end());
    return times[kRounds / 2];
}

void compare(const char* name, int encoding, char* text, FILE* in) {
    std::vector<double> ours, floor;
    for (int round = 0; round < kRounds; round++) {
        floor.push_back(timeOf([&](FILE* out) {
            rewind(in);
            encoding == 2 ? strmEncodeQP(out, in, INT_MAX)
                          : static_cast<void>(strmEncodeBase64(out, in));
        }));
        ours.push_back(timeOf([&](FILE* out) {
            mailCompose("a@example.org", "b@example.org", "", "", "", 3, 1, "subject", text,
                        nullptr, 3, encoding, 0, "euc-kr", mailGetMsgId(), "", 0, out);
        }));
    }
    double composed = median(ours), encoded = median(floor);
    printf("%-17s composed %6.1f ms   stream form %6.1f ms   ratio %.2f\n", name, composed, encoded,
           composed / encoded);
}

}  // namespace

int main(int argc, char** argv) {
    FILE* in = argc == 2 ? fopen(argv[1], "rb") : nullptr;
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);  // every round as the first one of a process
    struct rlimit limit = {100000000, 100000000};
    setrlimit(RLIMIT_DATA, &limit);
    char* text = in ? textOf(in) : nullptr;
    if (!text) return fprintf(stderr, "text_part_bench FILE\n"), 2;
    compare("quoted-printable", 2, text, in);
    compare("base64", 3, text, in);
}
