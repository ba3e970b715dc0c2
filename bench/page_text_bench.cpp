// Linking and escaping 10 MB of text against a memcpy of the same bytes: ordinary mail text, mail
// text with many addresses, HTML, Korean text, and texts made to be slow. Prints MB/s of input and
// the ratio to the copy.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "support/host.h"
#include "support/support.h"

MailConf conf;
MailAdminPreference admOptions;

namespace {

constexpr size_t kSize = 10'000'000;

std::string repeat(std::string_view piece) {
    std::string text;
    text.reserve(kSize + piece.size());
    while (text.size() < kSize) text += piece;
    return text;
}

/// Processor time, so that other work on the machine does not count.
double processorSeconds() {
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

/// Best of five, in MB/s of input.
template <typename Call>
double speed(const std::string& text, Call call) {
    double best = 1e9;
    for (int i = 0; i < 5; i++) {
        double start = processorSeconds();
        char* result = call(text.c_str());
        double seconds = processorSeconds() - start;
        if (!result) abort();
        free(result);
        if (seconds < best) best = seconds;
    }
    return static_cast<double>(text.size()) / best / 1e6;
}

char* linkAndEscape(const char* text) {
    char* links = strToHyperLink(text);
    char* page = strConvHTMLStr(links, "\n");
    free(links);
    return page;
}

}  // namespace

int main() {
    const struct {
        const char* name;
        std::string text;
    } rows[] = {
        {"ordinary mail",
         repeat("The meeting about the new mail server takes place on Tuesday at ten "
                "o'clock; bring last\nmonth's figures: they are needed, I think.\n"
                "> Quoted text of the mail before, with some more words in it.\n\n")},
        {"many addresses",
         repeat("Kim <kim.lee@mail.example.org> wrote: see http://example.org/a?b=1"
                "&c=2 and more text\nof an ordinary kind between the addresses.\n")},
        {"HTML", repeat("<p class=\"x\"><a href=\"http://example.org/\">text</a> and some words "
                        "that stand between tags<br></p>\n")},
        {"Korean", repeat("\xC8\xB8\xC0\xC7\xB4\xC2 \xC8\xAD\xBF\xE4\xC0\xCF\xBF\xA1 "
                          "\xC0\xD6\xBD\xC0\xB4\xCF\xB4\xD9.\n")},
        {"<<<<", repeat("<")},
        {"http://", repeat("http://")},
        {"@@@@", repeat("@")},
        {"&&&&", repeat("&")},
        {"blanks", repeat(" ")},
        {"a@b.cc ", repeat("a@b.cc ")},
    };
    printf("%-16s %10s %10s %10s %10s  %s\n", "MB/s", "memcpy", "link", "escape", "both", "ratio");
    for (const auto& row : rows) {
        double copy = speed(row.text, [&](const char* t) {
            auto* to = static_cast<char*>(malloc(row.text.size() + 1));
            return to ? static_cast<char*>(memcpy(to, t, row.text.size() + 1)) : to;
        });
        double both = speed(row.text, linkAndEscape);
        printf("%-16s %10.0f %10.0f %10.0f %10.0f  %.1f\n", row.name, copy,
               speed(row.text, strToHyperLink),
               speed(row.text, [](const char* t) { return strConvHTMLStr(t, "\n"); }), both,
               copy / both);
    }
}
