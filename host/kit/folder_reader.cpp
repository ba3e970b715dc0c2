// Reading a folder for one page.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "folder.h"
#include "host_texts.h"

namespace host {

namespace {

[[noreturn]] void unreadable() {
    throw PageError(503, kTextFolderBusy);
}

/// The folder at `path`; NULL when it is missing.
FILE* openStream(const std::string& path) {
    int fd = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0 && errno == ENOENT) return nullptr;
    struct stat st;
    bool regular = fd >= 0 && fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
    FILE* stream = regular ? fdopen(fd, "r") : nullptr;
    if (stream) return stream;
    if (fd >= 0) ::close(fd);
    unreadable();
}

}  // namespace

Folder::Folder(const User& user, const std::string& name) : name_(name) {
    std::string path = folderPath(user, name);
    opened_ = admOptions.passwdFlag == kSystemAccounts;
    if (opened_) {
        index_ = openWaiting(path);
        if (index_) scan_ = std::make_unique<MboxScan>(fileno(index_->fp));
        return;
    }
    stream_ = openStream(path);
    if (!stream_) return;
    scan_ = std::make_unique<MboxScan>(fileno(stream_));
    places_ = scan_->messages();
}

Folder::~Folder() {
    if (opened_) {
        fldrClose(index_);
    } else {
        fldrFree(index_);
    }
    if (stream_) fclose(stream_);
}

int Folder::count() const {
    return index_ ? fldrMsgMax(index_) : static_cast<int>(places_.size());
}

FldrMsg Folder::readEntry(int n) const {
    const EntrySpan& place = places_[static_cast<size_t>(n - 1)];
    std::string header = std::string(scan_->header(place)) + "\n";
    FILE* alone = fmemopen(header.data(), header.size(), "r");
    Fldr* index = alone ? fldrProcessing(alone) : nullptr;
    bool good = fldrMsgMax(index) == 1;
    FldrMsg entry = good ? *index->msgs[0] : FldrMsg{};
    fldrFree(index);
    if (alone) fclose(alone);
    if (!good) unreadable();
    entry.num = n;
    entry.offset = static_cast<int>(place.offset);
    entry.size = static_cast<int>(place.size);
    return entry;
}

const FldrMsg& Folder::entry(int n) const {
    if (index_) return *index_->msgs[n - 1];
    auto known = entries_.find(n);
    return known != entries_.end() ? known->second
                                   : entries_.emplace(n, readEntry(n)).first->second;
}

std::string Folder::nameOf(int n) const {
    return messageName(entry(n), *scan_);
}

int Folder::find(int n, const std::string& id) const {
    auto fits = [&, whole = messageKey(id)](int k) {
        return isNamed(entry(k), id, *scan_) || messageKey(entry(k)) == whole;
    };
    if (n >= 1 && n <= count() && fits(n)) return n;
    if (id.empty() || !count()) return 0;
    if (!index_) index_ = fldrProcessing(stream_);
    if (!index_) unreadable();
    for (int k = 1; k <= count(); k++)
        if (fits(k)) return k;
    return 0;
}

}  // namespace host
