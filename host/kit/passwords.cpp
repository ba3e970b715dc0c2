#include "passwords.h"

#include <crypt.h>
#include <fcntl.h>
#include <sodium.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>
#include <vector>

#include "file.h"
#include "mail/mail.h"
#include "session.h"

namespace host {

namespace {

constexpr time_t kWindow = 15 * 60;
constexpr long kUserFailures = 5, kAddressFailures = 20;
constexpr size_t kFileMax = 64 << 20, kFailuresMax = 20000;

std::string passwordFile() {
    return *admOptions.authDbFilePath ? admOptions.authDbFilePath
                                      : std::string(conf.mboxRootDir) + "/auth.db";
}
std::string failureFile() {
    return std::string(conf.mboxRootDir) + "/login_failures";
}

/// One process at a time changes a file; readers need no lock, since files are replaced.
class ChangeLock {
  public:
    explicit ChangeLock(const std::string& path)
        : fd_(open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600)) {
        held_ = fd_ >= 0 && flock(fd_, LOCK_EX) == 0;
    }
    ~ChangeLock() {
        if (fd_ >= 0) close(fd_);
    }
    ChangeLock(const ChangeLock&) = delete;
    ChangeLock& operator=(const ChangeLock&) = delete;
    bool held() const { return held_; }

  private:
    int fd_;
    bool held_;
};

std::vector<std::string> linesOf(const std::string& path) {
    std::istringstream in(readFile(path, kFileMax).value_or(""));
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
}

/// Whether somebody can log in with it.
bool isOpen(const std::string& hash) {
    return !hash.empty() && !hash.starts_with('!') && !hash.starts_with('*');
}

/// The hash of a user who can log in, else "". The last line of a user counts.
std::string hashOf(const std::string& id) {
    std::string text = "\n" + readFile(passwordFile(), kFileMax).value_or("");
    size_t at = id.empty() ? text.npos : text.rfind("\n" + id + ":");
    if (at == text.npos) return "";
    at += id.size() + 2;
    std::string hash = text.substr(at, std::min(text.find('\n', at), text.size()) - at);
    return isOpen(hash) ? hash : "";
}

std::string newHash(const std::string& password) {
    char salt[CRYPT_GENSALT_OUTPUT_SIZE];
    crypt_data data = {};
    if (!crypt_gensalt_rn("$y$", 0, nullptr, 0, salt, sizeof salt)) return "";
    const char* hash = crypt_rn(password.c_str(), salt, &data, sizeof data);
    std::string result = hash ? hash : "";
    sodium_memzero(&data, sizeof data);
    return result;
}

bool fits(const std::string& password, const std::string& hash) {
    crypt_data data = {};
    const char* made = crypt_rn(password.c_str(), hash.c_str(), &data, sizeof data);
    std::string result = made ? made : "";
    sodium_memzero(&data, sizeof data);
    return result.size() == hash.size() && !hash.empty() &&
           sodium_memcmp(result.data(), hash.data(), hash.size()) == 0;
}

/// A line of the failures: "u" or "a", the id or address, failures, time of the last one.
struct Failures {
    char kind = 'u';
    std::string name;
    long count = 0;
    time_t last = 0;
};

/// Those that count, the latest last; no more than the file may hold.
std::vector<Failures> readFailures(time_t now) {
    std::vector<Failures> all;
    for (const std::string& line : linesOf(failureFile())) {
        std::istringstream in(line);
        Failures f;
        if (in >> f.kind >> f.name >> f.count >> f.last && now - f.last < kWindow && f.last <= now)
            all.push_back(f);
    }
    if (all.size() > kFailuresMax)
        all.erase(all.begin(), all.end() - static_cast<ptrdiff_t>(kFailuresMax));
    return all;
}

bool writeFailures(const std::vector<Failures>& all) {
    std::ostringstream out;
    for (const Failures& f : all)
        out << f.kind << ' ' << f.name << ' ' << f.count << ' ' << f.last << '\n';
    return replaceFile(failureFile(), out.str(), false);
}

/// What stands in the file for an id or an address: no blanks, not empty, of one length.
std::string nameInFile(const std::string& text) {
    unsigned char hash[16];
    crypto_generichash(hash, sizeof hash, reinterpret_cast<const unsigned char*>(text.data()),
                       text.size(), nullptr, 0);
    char hex[2 * sizeof hash + 1];
    return sodium_bin2hex(hex, sizeof hex, hash, sizeof hash);
}

/// Takes the entry of a name out of the list, an empty one when it has none.
Failures take(std::vector<Failures>& all, char kind, const std::string& text) {
    std::string name = nameInFile(text);
    auto found = std::find_if(all.begin(), all.end(),
                              [&](const Failures& f) { return f.kind == kind && f.name == name; });
    if (found == all.end()) return {kind, name, 0, 0};
    Failures entry = *found;
    all.erase(found);
    return entry;
}

}  // namespace

bool setPassword(const std::string& id, const std::string& password) {
    ChangeLock lock(passwordFile());
    if (!lock.held() || !mailChkValidUserId(id.c_str()) || id.empty()) return false;
    if (!endSessions(User{id, false}, time(nullptr))) return false;
    std::vector<std::string> lines = linesOf(passwordFile());
    std::erase_if(lines, [&](const std::string& line) { return line.starts_with(id + ":"); });
    if (!password.empty()) {
        std::string hash = password.size() <= kPasswordMax ? newHash(password) : "";
        if (hash.empty()) return false;
        lines.push_back(id + ":" + hash);
    }
    return replaceFile(passwordFile(), joined(lines));
}

bool checkPassword(const std::string& id, const std::string& password) {
    // A hash of nobody's password, so that an unknown name takes as long as a known one.
    constexpr const char* kNobody =
        "$y$j9T$qUYy8MxJzsU1jtJ5hGqqo1$7pD1s0FJ6F4sZ0cXkV0xkV2oYZ9mVZ0n1uQ5cB0dH52";
    std::string hash = hashOf(id);
    bool right = fits(password, hash.empty() ? kNobody : hash);
    return password.size() <= kPasswordMax && right && !hash.empty();
}

bool hasPassword(const std::string& id) {
    return !hashOf(id).empty();
}

std::set<std::string> usersWithPassword() {
    std::set<std::string> users;
    for (const std::string& line : linesOf(passwordFile())) {
        size_t colon = line.find(':');
        if (colon == line.npos) continue;
        std::string id = line.substr(0, colon);
        if (isOpen(line.substr(colon + 1)))
            users.insert(id);
        else
            users.erase(id);
    }
    return users;
}

bool beginAttempt(const std::string& id, const std::string& address, time_t now) {
    ChangeLock lock(failureFile());
    if (!lock.held()) return false;
    std::vector<Failures> all = readFailures(now);
    Failures user = take(all, 'u', id), host = take(all, 'a', address);
    if (user.count >= kUserFailures || host.count >= kAddressFailures) return false;
    for (Failures* f : {&user, &host}) {
        f->count++;
        f->last = now;
        all.push_back(*f);
    }
    return writeFailures(all);
}

void attemptSucceeded(const std::string& id, const std::string& address, time_t now) {
    ChangeLock lock(failureFile());
    if (!lock.held()) return;
    std::vector<Failures> all = readFailures(now);
    take(all, 'u', id);
    Failures host = take(all, 'a', address);
    if (--host.count > 0) all.push_back(host);
    writeFailures(all);
}

}  // namespace host
