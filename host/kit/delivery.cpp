#include "delivery.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <thread>

#include "file.h"
#include "host_texts.h"
#include "mail/mail.h"
#include "request.h"

namespace host {

namespace {

constexpr int kTries = 100;            // about 10 seconds
constexpr time_t kStaleSeconds = 500;  // of a lock file that nobody removed

/// The locks of a delivery. All are tried without waiting, and given back before the next try.
class DeliveryLock {
  public:
    explicit DeliveryLock(const std::string& path) : path_(path), dotlock_(path + ".lock") {}
    ~DeliveryLock() { release(); }
    DeliveryLock(const DeliveryLock&) = delete;
    DeliveryLock& operator=(const DeliveryLock&) = delete;

    int fd() const { return fd_; }
    bool acquire() {
        for (int n = 0; n < kTries; n++) {
            if (tryAcquire()) return true;
            release();
            std::this_thread::sleep_for(
                std::chrono::milliseconds(50 + (getpid() * 7 + n * 31) % 100));
        }
        return false;
    }

  private:
    bool tryAcquire() {
        fd_ = open(path_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
        struct stat own, named;
        return fd_ >= 0 && fstat(fd_, &own) == 0 && S_ISREG(own.st_mode) && lockFile() &&
               makeDotlock() && stat(path_.c_str(), &named) == 0 && named.st_ino == own.st_ino &&
               named.st_dev == own.st_dev;
    }
    bool lockFile() {
        struct flock lock = {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        return fcntl(fd_, F_OFD_SETLK, &lock) == 0 && flock(fd_, LOCK_EX | LOCK_NB) == 0;
    }
    bool makeDotlock() {
        int fd = open(dotlock_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
        hasDotlock_ = fd >= 0;
        if (hasDotlock_) close(fd);
        if (hasDotlock_ || errno != EEXIST) return true;  // a directory that takes none
        struct stat st;
        bool stale =
            lstat(dotlock_.c_str(), &st) == 0 && time(nullptr) - st.st_mtim.tv_sec > kStaleSeconds;
        if (stale) unlink(dotlock_.c_str());  // the next try makes it
        return false;
    }
    void release() {
        if (hasDotlock_) unlink(dotlock_.c_str());
        if (fd_ >= 0) close(fd_);
        hasDotlock_ = false;
        fd_ = -1;
    }

    std::string path_, dotlock_;
    int fd_ = -1;
    bool hasDotlock_ = false;
};

bool writeAt(int fd, const char* bytes, size_t count, off_t& at) {
    while (count) {
        ssize_t n = pwrite(fd, bytes, count, at);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        bytes += n;
        count -= static_cast<size_t>(n);
        at += n;
    }
    return true;
}

/// The line ends that a folder of `size` bytes lacks before its next From_ line.
const char* missingLineEnds(int fd, off_t size) {
    char last[2] = {'\n', '\n'};
    if (size >= 2 && pread(fd, last, 2, size - 2) != 2) return "\n\n";
    return size == 0 || (last[0] == '\n' && last[1] == '\n') ? "" : last[1] == '\n' ? "\n" : "\n\n";
}

bool isMessage(FILE* from, const EntrySpan& entry) {
    char line[1024];
    return entry.size > 0 && fseek(from, entry.offset, SEEK_SET) == 0 &&
           fgets(line, sizeof line, from) && mailChkRFC822From(line);
}

bool copyEntry(FILE* from, const EntrySpan& entry, int fd, off_t& at) {
    const char* before = missingLineEnds(fd, at);
    if (!writeAt(fd, before, std::char_traits<char>::length(before), at) ||
        fseek(from, entry.offset, SEEK_SET) != 0)
        return false;
    char block[64 * 1024];
    for (auto left = static_cast<size_t>(entry.size); left > 0;) {
        size_t n = fread(block, 1, std::min(left, sizeof block), from);
        if (n == 0 || !writeAt(fd, block, n, at)) return false;
        left -= n;
    }
    return true;
}

}  // namespace

void deliver(const std::string& path, FILE* from, const std::vector<EntrySpan>& entries) {
    for (const EntrySpan& entry : entries)
        if (!isMessage(from, entry)) throw PageError(503, kTextInternalError);
    DeliveryLock lock(path);
    if (!lock.acquire()) throw PageError(503, kTextFolderBusy);
    struct stat st;
    if (fstat(lock.fd(), &st) != 0) throw PageError(503, kTextFolderBusy);
    off_t at = st.st_size;
    bool good = true;
    for (const EntrySpan& entry : entries) good = good && copyEntry(from, entry, lock.fd(), at);
    const char* end = missingLineEnds(lock.fd(), at);
    good = good && writeAt(lock.fd(), end, std::char_traits<char>::length(end), at) &&
           fsync(lock.fd()) == 0;
    if (good && st.st_size == 0) syncFolderOf(path);  // the folder may be new
    if (good) return;
    if (ftruncate(lock.fd(), st.st_size) == 0) fsync(lock.fd());
    throw PageError(507, kTextStorageFull);
}

}  // namespace host
