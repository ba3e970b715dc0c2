// Locks on a folder. All are tried without waiting; if one is taken, all are given back before the
// next try, so that no order of locking in another program can end in a deadlock. The lock file
// tells who made it: a process that was killed must not keep mail out until the file is old.
// Survives lock files of other programs, directories that take no lock file and file systems
// without one of the kernel's locks.

#include "fldr_lock.h"

#include <signal.h>
#include <sys/file.h>
#include <sys/utsname.h>

#include <cerrno>
#include <cstdio>
#include <ctime>

namespace attalven {

namespace {

constexpr int kTries = 100;  // about 10 seconds
constexpr int64_t kStaleSeconds = 500;

void pause(long milliseconds) {
    timespec time = {0, milliseconds * 1'000'000};
    nanosleep(&time, nullptr);
}

/// Where a process number means the same process: this host, this set of processes.
BoundedText<120> placeOfProcesses() {
    struct stat st = {};
    struct utsname name = {};
    stat("/proc/self/ns/pid", &st);
    uname(&name);
    char text[121];
    snprintf(text, sizeof text, " %.90s %llu\n", name.nodename,
             static_cast<unsigned long long>(st.st_ino));
    BoundedText<120> place;
    place.append(string_view(text));
    return place;
}

/// What a lock file of ours holds: it tells whether its maker still runs.
BoundedText<160> ownContent() {
    char number[16];
    snprintf(number, sizeof number, "%d", getpid());
    BoundedText<160> content;
    content.append(string_view(number));
    content.append(placeOfProcesses().view());
    return content;
}

/// Makes the lock file, with its content from the first moment where the file system can do that.
/// Not open, and errno EEXIST, when there is one.
Descriptor makeLockFile(const char* dotlock) {
    constexpr int mode = 0644;
    Descriptor file(open(directoryOf(dotlock).c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, mode));
    if (file && writeAll(file.get(), ownContent().view())) {
        char name[40];
        snprintf(name, sizeof name, "/proc/self/fd/%d", file.get());
        if (linkat(AT_FDCWD, name, AT_FDCWD, dotlock, AT_SYMLINK_FOLLOW) == 0) return file;
        if (errno == EEXIST) return Descriptor();
    }
    file = Descriptor(open(dotlock, O_WRONLY | O_CREAT | O_EXCL | kSideFileFlags, mode));
    if (file) writeAll(file.get(), ownContent().view());
    return file;
}

/// Whether the lock file was made by this library in a process that has ended.
bool isDead(const char* dotlock) {
    Descriptor file(open(dotlock, O_RDONLY | kSideFileFlags));
    char text[160];
    ssize_t n = file ? read(file.get(), text, sizeof text) : 0;
    string_view content(text, n > 0 ? static_cast<size_t>(n) : 0);
    int process = decimal(content);
    string_view place = tail(content, content.find(' '));
    return process > 0 && place == placeOfProcesses().view() && kill(process, 0) != 0 &&
           errno == ESRCH;
}

bool isAbandoned(const char* dotlock, const FileState& state) {
    return state.isRegular &&
           (time(nullptr) - int64_t{state.changed.tv_sec} > kStaleSeconds || isDead(dotlock));
}

/// The write lock belongs to the open file where the kernel can do that: a lock of the process
/// would be lost as soon as any descriptor of the file is closed.
bool setWriteLock(int fd, int type) {
    struct flock lock = {};
    lock.l_type = static_cast<short>(type);
    lock.l_whence = SEEK_SET;
    if (fcntl(fd, F_OFD_SETLK, &lock) == 0) return true;
    return errno == EINVAL && fcntl(fd, F_SETLK, &lock) == 0;
}

}  // namespace

bool lockForWriting(int fd) {
    return setWriteLock(fd, F_WRLCK);
}

bool FolderLock::openFile() {
    constexpr int flags = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    file_ = Descriptor(open(path_, O_RDWR | flags));
    canWrite_ = static_cast<bool>(file_);
    if (!file_ && (errno == EACCES || errno == EROFS))
        file_ = Descriptor(open(path_, O_RDONLY | flags));
    return stateOf(file_.get()).isRegular;
}

bool FolderLock::lockFile() {
    if (canWrite_ && !lockForWriting(file_.get())) return false;
    return flock(file_.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

bool FolderLock::makeDotlock() {
    for (int tries = 0; tries < 2; tries++) {
        if (Descriptor file = makeLockFile(dotlock_)) {
            ownDotlock_ = std::move(file);
            return true;
        }
        if (errno != EEXIST) return true;  // the directory takes none: the kernel's locks must do
        FileState seen = stateOf(dotlock_);
        if (seen.exists() && !isAbandoned(dotlock_, seen)) return false;
        if (stateOf(dotlock_).isSameFile(seen)) unlink(dotlock_);
    }
    return false;
}

bool FolderLock::tryAcquire() {
    struct stat st;
    if (openFile() && lockFile() && makeDotlock() && stat(path_, &st) == 0 &&
        FileState(st).isSameFile(stateOf(file_.get())))
        return true;
    release();
    return false;
}

bool FolderLock::acquire() {
    for (int tries = 0; tries < kTries; tries++) {
        if (tryAcquire()) return true;
        if (!stateOf(path_).exists()) return false;
        // Two processes that met once shall not meet again and again.
        pause(50 + (getpid() * 7 + tries * 31) % 100);
    }
    return false;
}

bool FolderLock::letWaitersThrough() {
    for (int tries = 0; tries < kTries; tries++) {
        flock(file_.get(), LOCK_UN);
        if (canWrite_) setWriteLock(file_.get(), F_UNLCK);
        pause(tries == 0 ? 2 : 50);
        if (lockFile()) return true;
    }
    return false;
}

void FolderLock::release() {
    if (ownDotlock_) unlinkSame(dotlock_, ownDotlock_.get());
    ownDotlock_.close();
    file_.close();
}

}  // namespace attalven
