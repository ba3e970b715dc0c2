// Reads and writes of one user's preferences against a plain fopen loop that does the same. Rounds
// are interleaved, the best of each counts. argv[1]: how many of each (10000); argv[2]: a folder to
// work in (/dev/shm, so that the disk's sync time does not hide everything else).

#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "mail/mail.h"

MailConf conf;
MailAdminPreference admOptions;

namespace {

struct Row {
    const char* key;
    int* number;
    char* text;
};

/// The plain way: a key per comparison, a line per fgets.
struct PlainFile {
    MailPreference p = {};
    Row rows[17] = {
        {"FETCH_MAIL", &p.fetchMail, nullptr},
        {"SPOOL_MAIL", &p.spoolMail, nullptr},
        {"EMAIL_NAME", nullptr, p.emailName},
        {"CHAR_SET", nullptr, p.charSet},
        {"REPLY_TO", nullptr, p.replyTo},
        {"FORWARDING", nullptr, p.forwarding},
        {"COPY_FORWARDING_FLAG", &p.copyForwardingFlag, nullptr},
        {"MAIL_DEL_OPTION", &p.mailDelOption, nullptr},
        {"PAGE_SIZE", &p.pageSize, nullptr},
        {"NEW_MAIL_CHECK_TIME", &p.newMailCheckTime, nullptr},
        {"ATTACH_FILE_DEFAULT_NUM", &p.attachFileDefaultNum, nullptr},
        {"REGISTERED_MAIL_FLAG", &p.registeredMailFlag, nullptr},
        {"EDITOR", &p.editor, nullptr},
        {"VIEW_TYPE", &p.viewType, nullptr},
        {"SMTP_SERVER", nullptr, p.smtpServer},
        {"HEADER_ENCODING", &p.headerEncoding, nullptr},
        {"BODY_ENCODING", &p.bodyEncoding, nullptr},
    };

    void read(const char* path) {
        FILE* f = fopen(path, "r");
        if (!f) abort();
        for (char line[1000]; fgets(line, sizeof line, f);) {
            char* value = strchr(line, '=');
            if (!value) continue;
            value += 1 + strspn(value + 1, " \t");
            value[strcspn(value, "\r\n")] = 0;
            for (const Row& row : rows) {
                if (strncasecmp(line, row.key, strlen(row.key)) != 0) continue;
                if (row.number)
                    *row.number = static_cast<int>(strtol(value, nullptr, 10));
                else
                    snprintf(row.text, 31, "%s", value);
                break;
            }
        }
        fclose(f);
    }
    void write(const char* path) const {
        FILE* f = fopen(path, "w");
        if (!f) abort();
        for (const Row& row : rows) {
            if (row.number)
                fprintf(f, "%s = %d\n", row.key, *row.number);
            else
                fprintf(f, "%s = %s\n", row.key, row.text);
        }
        fclose(f);
    }
};

template <typename Work>
double microseconds(int count, Work work) {
    auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < count; i++) work();
    std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - start;
    return took.count() / count;
}

template <typename Ours, typename Plain>
void compare(const char* what, int count, Ours ours, Plain plain) {
    constexpr int kRounds = 5;
    double a = 1e9, b = 1e9;
    for (int i = 0; i < kRounds; i++) {
        a = std::min(a, microseconds(count / kRounds, ours));
        b = std::min(b, microseconds(count / kRounds, plain));
    }
    printf("%-6s library %7.2f us   plain %7.2f us   ratio %.2f\n", what, a, b, a / b);
}

}  // namespace

int main(int argc, char** argv) {
    int count = argc > 1 ? atoi(argv[1]) : 10000;
    std::string folder = std::string(argc > 2 ? argv[2] : "/dev/shm") + "/attalven-bench-XXXXXX";
    if (count < 5 || !mkdtemp(folder.data())) return 2;
    snprintf(conf.mboxRootDir, sizeof conf.mboxRootDir, "%s", folder.c_str());
    snprintf(conf.serverName, sizeof conf.serverName, "mail.example.org");
    MailPreference pref = {};
    mailGetPreference("kim", "", &pref);
    PlainFile plain;
    std::string path = folder + "/k/i/kim/preference.ini";
    plain.read(path.c_str());
    compare(
        "read", count, [&] { mailGetPreference("kim", "", &pref); },
        [&] { plain.read(path.c_str()); });
    compare(
        "write", count, [&] { mailSetPreference("kim", "", &pref); },
        [&] { plain.write(path.c_str()); });
    std::filesystem::remove_all(folder);
}
