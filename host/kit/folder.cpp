#include "folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <set>
#include <thread>
#include <utility>

#include "delivery.h"
#include "head_mark.h"
#include "host_texts.h"
#include "text.h"

namespace host {

namespace {

constexpr size_t kKeySubject = 200;  // bytes of a subject that count for a key
constexpr int kTries = 100;          // about 10 seconds

struct stat stateOf(const std::string& path) {
    struct stat st = {};
    if (stat(path.c_str(), &st) != 0) st = {};
    return st;
}

bool isSame(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_ctim.tv_sec == b.st_ctim.tv_sec && a.st_ctim.tv_nsec == b.st_ctim.tv_nsec;
}

/// The number that `ref` has now, 0 when its message is gone; not one of `taken`, since copies of a
/// message can be the same to the last byte of the header.
int numberOf(const MessageRef& ref, Fldr* index, MboxScan& folder, const std::set<int>& taken) {
    auto fits = [&](int n) {
        return fldrChkMsgBoundary(n, index) && !taken.contains(n) &&
               isNamed(*index->msgs[n - 1], ref.id, folder);
    };
    if (fits(ref.number)) return ref.number;
    for (int n = 1; !ref.id.empty() && n <= fldrMsgMax(index); n++)
        if (fits(n)) return n;
    return 0;
}

std::vector<int> numbersOf(const std::vector<MessageRef>& messages, Fldr* index) {
    MboxScan folder(fileno(index->fp));
    std::set<int> numbers;
    for (const MessageRef& ref : messages)
        if (int n = numberOf(ref, index, folder, numbers)) numbers.insert(n);
    return {numbers.begin(), numbers.end()};
}

/// Frees the index without a rewrite, and the marker with it, when `change` throws.
class OpenForChange {
  public:
    explicit OpenForChange(const std::string& path) : path_(path), index_(openWaiting(path)) {}
    ~OpenForChange() {
        if (!index_) return;
        fldrMsgAllReset(index_);
        index_->status = 0;
        fldrStatusReset();
        fldrClose(index_);
    }
    OpenForChange(const OpenForChange&) = delete;
    OpenForChange& operator=(const OpenForChange&) = delete;
    Fldr* index() const { return index_; }
    void close() {
        bool changes = fldrStatus() == 1 || (index_->status & FLDR_DELETED);
        struct stat before = stateOf(path_);
        fldrClose(std::exchange(index_, nullptr));
        if (changes && isSame(before, stateOf(path_))) throw PageError(503, kTextFolderBusy);
    }

  private:
    std::string path_;
    Fldr* index_;
};

}  // namespace

Fldr* openWaiting(const std::string& path) {
    for (int n = 0; n < kTries; n++) {
        if (stateOf(path).st_size == 0) return nullptr;
        if (Fldr* index = fldrOpen(path.c_str())) return index;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    throw PageError(503, kTextFolderBusy);
}

const std::vector<FolderName>& folderNames() {
    static const std::vector<FolderName> names = {{"inbox", kTextFolderInbox},
                                                  {"drafts", kTextFolderDrafts},
                                                  {"sent", kTextFolderSent},
                                                  {"trash", kTextFolderTrash}};
    return names;
}

std::string folderPath(const User& user, const std::string& name) {
    bool known = false;
    for (const FolderName& folder : folderNames()) known |= name == folder.name;
    if (!known) throw PageError(404, kTextNoSuchFolder);
    if (name != "inbox") return user.home() + "/" + name;
    if (admOptions.passwdFlag == kSystemAccounts) return "/var/spool/mail/" + user.id;
    return std::string(conf.spoolRootDir) + "/" + mailGetUserSpoolPath(user.id.c_str()) + "/" +
           user.id;
}

std::string messageKey(const FldrMsg& entry) {
    if (*entry.msgId) return messageKey(std::string(entry.msgId));
    auto subject = std::hash<std::string>()(std::string(entry.subject).substr(0, kKeySubject));
    return messageKey("-" + std::to_string(entry.date) + "-" + std::to_string(subject) + "-" +
                      entry.from);
}

std::string messageKey(const std::string& messageId) {
    constexpr size_t kMost = 96;  // an index cuts texts of 8-bit bytes at 99 or 100
    std::string key;
    for (char c : messageId.substr(0, kMost))
        key += c > ' ' && c < '\x7F' ? std::string(1, c) : urlEncoded({&c, 1});
    return key;
}

std::string messageName(const FldrMsg& entry, MboxScan& folder) {
    std::string header(folder.header({entry.offset, entry.size}));
    takeStatus(header);
    return headMark(digestOf(header)) + messageKey(entry);
}

bool isNamed(const FldrMsg& entry, const std::string& id, MboxScan& folder) {
    std::string key = messageKey(entry);
    if (id.empty() || id == key) return true;
    return id.size() == kMarkSize + key.size() && id.ends_with(key) &&
           id == messageName(entry, folder);
}

void changeFolder(const User& user, const std::string& name,
                  const std::vector<MessageRef>& messages,
                  const std::function<void(Fldr*, const std::vector<int>&)>& change) {
    OpenForChange folder(folderPath(user, name));
    if (!folder.index()) return;
    change(folder.index(), numbersOf(messages, folder.index()));
    folder.close();
}

void appendToFolder(const User& user, const std::string& name, FILE* entries, long offset,
                    long size) {
    if (name == "inbox") mailInitSpoolPathName(user.id.c_str());
    deliver(folderPath(user, name), entries, {{offset, size}});
}

size_t moveMessages(const User& user, const std::string& source, const std::string& target,
                    const std::vector<MessageRef>& messages) {
    std::string path = folderPath(user, target);
    if (source == target) return 0;
    if (target == "inbox") mailInitSpoolPathName(user.id.c_str());
    size_t moved = 0;
    changeFolder(user, source, messages, [&](Fldr* index, const std::vector<int>& numbers) {
        std::vector<EntrySpan> entries;
        for (int n : numbers) entries.push_back({fldrMsgEntryPos(n, index), fldrMsgSize(n, index)});
        if (entries.empty()) return;
        deliver(path, index->fp, entries);
        for (int n : numbers) fldrMsgDelete(n, index);
        moved = numbers.size();
    });
    return moved;
}

}  // namespace host
