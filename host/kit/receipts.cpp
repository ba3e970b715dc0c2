#include "receipts.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "accounts.h"
#include "file.h"
#include "folder.h"
#include "summary.h"
#include "support/host.h"

namespace host {

namespace {

constexpr size_t kFileMax = 256 << 10, kIdMax = 250;

std::string fileOf(const std::string& home) {
    return home + "/receipts";
}

/// The id between its brackets; "" for what is none that a line can hold.
std::string plainId(const std::string& messageId) {
    std::string id = messageId;
    if (id.size() > 1 && id.front() == '<' && id.back() == '>') id = id.substr(1, id.size() - 2);
    bool good = id.size() <= kIdMax && id.find('@') != std::string::npos;
    for (char c : id) good &= c > ' ' && c < '\x7F';
    return good ? id : "";
}

/// The time that a line of the file notes for the id; 0 without one.
time_t noted(const std::string& lines, const std::string& id) {
    std::string wanted = " " + id + "\n";
    size_t at = lines.find(wanted);
    if (id.empty() || at == std::string::npos) return 0;
    size_t start = lines.rfind('\n', at);
    return strtol(lines.c_str() + (start == std::string::npos ? 0 : start + 1), nullptr, 10);
}

bool hasSent(const std::string& userId, const std::string& id) {
    // The list's summary: strangers may ask as often as they like.
    std::string key = messageKey(id);
    Summary sent({userId, false}, "sent");
    return std::any_of(sent.rows().begin(), sent.rows().end(),
                       [&](const Summary::Row& row) { return row.key == key; });
}

}  // namespace

std::string receiptOf(const User& user, const std::string& messageId) {
    time_t when = noted(readFile(fileOf(user.home()), kFileMax).value_or(""), plainId(messageId));
    struct tm local;
    char text[32];
    if (when <= 0 || !localtime_r(&when, &local)) return "";
    return {text, strftime(text, sizeof text, "%Y-%m-%d %H:%M", &local)};
}

void noteReceipt(const std::string& userId, const std::string& messageId, time_t now) {
    std::string id = plainId(messageId), home = existingHome(userId);
    if (admOptions.mailRcptInfoFlag != 1 || id.empty() || home.empty()) return;
    std::string path = fileOf(home);
    if (noted(readFile(path, kFileMax).value_or(""), id) || !hasSent(userId, id)) return;

    int fd = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) return;
    std::string line = std::to_string(now) + " " + id + "\n";
    struct stat st;
    if (flock(fd, LOCK_EX | LOCK_NB) == 0 && fstat(fd, &st) == 0 && S_ISREG(st.st_mode) &&
        static_cast<size_t>(st.st_size) + line.size() <= kFileMax &&
        !noted(readFile(path, kFileMax).value_or(""), id)) {
        ssize_t written = write(fd, line.data(), line.size());
        // Half a line would spoil the next one.
        if (written >= 0 && static_cast<size_t>(written) < line.size())
            (void)!ftruncate(fd, st.st_size);
    }
    close(fd);
}

}  // namespace host
