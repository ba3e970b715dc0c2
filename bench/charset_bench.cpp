// Conversion through the library against the bare converter of the C library: whole texts, set by
// set, and header-sized texts in a mix of sets. Usage: charset_bench [megabytes]

#include <iconv.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "mail/mail.h"

MailConf conf;
MailAdminPreference admOptions;

namespace {

using std::string;

struct Set {
    const char *name, *bare;  // for the library, for the C library
    unsigned leadFirst, leadLast, trailFirst, trailLast;
    bool lowTrails;  // as many second bytes from 0x40 to 0x7E
};
const Set sets[] = {
    {"EUC-KR", "EUC-KR", 0xB0, 0xC8, 0xA1, 0xFE, false},
    {"SHIFT-JIS", "SJIS", 0x89, 0x97, 0x80, 0xFC, true},
    {"GB2312", "EUC-CN", 0xB0, 0xD6, 0xA1, 0xFE, false},
    {"BIG5", "BIG5", 0xA4, 0xC5, 0xA1, 0xFE, true},
    {"EUC-JP", "EUC-JP", 0xB0, 0xCE, 0xA1, 0xFE, false},
};

/// Processor time, which other programs on the machine disturb least.
double now() {
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

unsigned pick(unsigned first, unsigned last) {
    return first + static_cast<unsigned>(rand()) % (last - first + 1);
}

/// Words of two to five characters, some of them ASCII, in lines.
string textOf(const Set& set, size_t size) {
    string text;
    while (text.size() < size) {
        bool ascii = rand() % 6 == 0;
        for (unsigned n = pick(2, 5); n > 0; n--) {
            text += static_cast<char>(ascii ? pick('a', 'z') : pick(set.leadFirst, set.leadLast));
            bool low = set.lowTrails && rand() % 2;
            if (!ascii)
                text +=
                    static_cast<char>(low ? pick(0x40, 0x7E) : pick(set.trailFirst, set.trailLast));
        }
        text += rand() % 12 ? ' ' : '\n';
    }
    return text;
}

double bareSeconds(const char* target, const char* source, const string& text) {
    double start = now();
    iconv_t cd = iconv_open(target, source);
    size_t left = text.size(), room = 2 * left + 64;
    char *area = static_cast<char*>(malloc(room)), *in = const_cast<char*>(text.data()),
         *out = area;
    if (iconv(cd, &in, &left, &out, &room) == static_cast<size_t>(-1))
        puts("  bare conversion failed");
    iconv_close(cd);
    double seconds = now() - start;
    free(area);
    return seconds;
}

double ownSeconds(const char* target, const char* source, const string& text) {
    double start = now();
    char* result = strConvCharSet(target, source, text.c_str());
    double seconds = now() - start;
    if (!result) puts("  conversion failed");
    free(result);
    return seconds;
}

/// The median of `rounds` ratios of neighbouring runs: noise of the machine strikes both.
void compare(const Set& to, const Set& from, const string& text) {
    std::vector<double> ratios, own;
    for (int i = 0; i < 9; i++) {
        double bare = bareSeconds(to.bare, from.bare, text);
        own.push_back(ownSeconds(to.name, from.name, text));
        ratios.push_back(own.back() / bare);
    }
    std::sort(ratios.begin(), ratios.end());
    std::sort(own.begin(), own.end());
    printf("%-10s to %-10s %7.0f MB/s  %.3f of the bare converter's time\n", from.name, to.name,
           static_cast<double>(text.size()) / own[4] / 1e6, ratios[4]);
}

struct Job {
    const char *target, *source, *bareTarget, *bareSource;
    string text;
};

void headerSized(const std::vector<Job>& jobs) {
    constexpr int rounds = 20000;
    double start = now();
    for (int i = 0; i < rounds; i++)
        for (const Job& job : jobs) free(strConvCharSet(job.target, job.source, job.text.c_str()));
    double each = (now() - start) / rounds / static_cast<double>(jobs.size());
    printf("%zu pairs in turn, 60 bytes each: %.0f ns a conversion\n", jobs.size(), each * 1e9);
    std::vector<iconv_t> kept;
    for (const Job& job : jobs) kept.push_back(iconv_open(job.bareTarget, job.bareSource));
    start = now();
    for (int i = 0; i < rounds; i++)
        for (size_t k = 0; k < jobs.size(); k++) {
            char area[256], *out = area, *in = const_cast<char*>(jobs[k].text.data());
            size_t left = jobs[k].text.size(), room = sizeof area;
            iconv(kept[k], nullptr, nullptr, nullptr, nullptr);
            iconv(kept[k], &in, &left, &out, &room);
            iconv(kept[k], nullptr, nullptr, &out, &room);
        }
    each = (now() - start) / rounds / static_cast<double>(jobs.size());
    printf("  the bare converter with kept handles: %.0f ns\n", each * 1e9);
    for (iconv_t cd : kept) iconv_close(cd);
}

}  // namespace

int main(int argc, char** argv) {
    size_t size = (argc > 1 ? static_cast<size_t>(atoi(argv[1])) : 8) << 20;
    const Set utf = {"UTF-8", "UTF-8", 0, 0, 0, 0, false};
    std::vector<Job> jobs;
    for (const Set& set : sets) {
        string text = textOf(set, size);
        compare(utf, set, text);
        char* unicode = strConvCharSet("UTF-8", set.name, text.c_str());
        if (unicode) compare(set, utf, unicode);
        free(unicode);
        jobs.push_back({"UTF-8", set.name, "UTF-8", set.bare, textOf(set, 60)});
        jobs.push_back({set.name, set.name, set.bare, set.bare, textOf(set, 60)});
    }
    headerSized(jobs);
    const char* words[] = {"=?euc-kr?B?sKGzqrTZtvM=?=",     "=?iso-2022-jp?B?GyRCRnxLXDhsGyhC?=",
                           "=?gb2312?B?1tDOxA==?=",         "=?big5?B?pKSk5Q==?=",
                           "=?utf-8?B?7ZWc6riA?=",          "=?iso-8859-1?Q?Caf=E9_au_lait?=",
                           "Re: plain subject of a message"};
    double start = now();
    for (int i = 0; i < 20000; i++)
        for (const char* word : words) free(mailDecodeSubject(word));
    printf("header values in seven sets: %.0f ns each\n", (now() - start) / 20000 / 7 * 1e9);
}
