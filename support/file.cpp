// Files by path and by stream: existence, owner and mode, copies, lines, records, sizes. Sizes are
// 64-bit. A path that is no regular file is never read: a FIFO would block, a device never end. A
// length out of a hostile mail takes no more memory than the stream has bytes.

#include "mail/base/file.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

#include "mail/base/descriptor.h"
#include "mail/base/text.h"
#include "support.h"

using namespace attalven;

namespace {

bool isRegular(int fd, struct stat& st) {
    return fd >= 0 && fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
}

/// Copies from both files' starts to the source's end; the number of bytes, -1 for an error.
off_t copyBytes(int in, int out) {
    constexpr size_t kBlock = 1 << 20;
    off_t total = 0;
    // The kernel copies without a detour through this process, where the file systems allow it.
    for (ssize_t n; (n = copy_file_range(in, nullptr, out, nullptr, 1 << 30, 0)) != 0; total += n)
        if (n < 0) break;
    OwnedText block = allocate<char>(kBlock);
    while (block) {
        ssize_t n = read(in, block.get(), kBlock);
        if (n < 0 && errno == EINTR) continue;
        if (n == 0) return total;
        if (n < 0 || !writeAll(out, {block.get(), static_cast<size_t>(n)})) return -1;
        total += n;
    }
    return -1;
}

struct Line {
    ~Line() { free(text); }
    /// False at the end of the file.
    bool read(FILE* f) { return (length = getline(&text, &room, f)) >= 0; }
    char* text = nullptr;
    size_t room = 0;
    ssize_t length = 0;
};

/// The unread bytes of a regular file, LONG_MAX for any other stream.
off_t bytesLeft(FILE* stream) {
    struct stat st;
    off_t at = ftello(stream);
    if (at < 0 || fileno(stream) < 0 || !isRegular(fileno(stream), st)) return LONG_MAX;
    return std::max<off_t>(st.st_size - at, 0);
}

}  // namespace

int chkExistFile(const char* path) {
    struct stat st;
    return path && stat(path, &st) == 0;
}

int fileChgStat(const char* path, const char* owner, const char* group, int mode) {
    if (!path) return -1;
    auto named = [](const char* name) { return name && *name; };
    const passwd* user = named(owner) ? getpwnam(owner) : nullptr;
    uid_t uid = user ? user->pw_uid : static_cast<uid_t>(-1);
    const struct group* members = named(group) ? getgrnam(group) : nullptr;
    gid_t gid = members ? members->gr_gid : static_cast<gid_t>(-1);
    bool known = (user || !named(owner)) && (members || !named(group));
    // The mode last: a change of owner clears the set-id bits.
    bool owned = fchownat(AT_FDCWD, path, uid, gid, AT_SYMLINK_NOFOLLOW) == 0;
    bool moded =
        fchmodat(AT_FDCWD, path, static_cast<mode_t>(mode) & 07777, AT_SYMLINK_NOFOLLOW) == 0;
    return known && owned && moded ? 0 : -1;
}

int fileCopy(const char* src, const char* dst) {
    if (!src || !dst) return -1;
    struct stat from, to;
    Descriptor in(open(src, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!isRegular(in.get(), from)) return -1;
    Descriptor out(open(dst, O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0600));
    if (!isRegular(out.get(), to)) return -1;
    if (from.st_dev == to.st_dev && from.st_ino == to.st_ino) return -1;
    off_t size = copyBytes(in.get(), out.get());
    bool done = size >= 0 && ftruncate(out.get(), size) == 0;
    return out.close() && done ? 0 : -1;
}

char* fileGetLine(const char* path, int n) {
    OwnedFile f = path && n > 0 ? openRegular(path) : nullptr;
    Line line;
    for (; f && line.read(f.get()); n--)
        if (n == 1)
            return copyText(withoutLineEnd({line.text, static_cast<size_t>(line.length)}))
                .release();
    return nullptr;
}

int fileTotalLine(const char* path) {
    OwnedFile f = path ? openRegular(path) : nullptr;
    Line line;
    int64_t lines = 0;
    while (f && line.read(f.get())) lines++;
    return clampInt(lines);
}

int fileGetRecord(const char* path, char* buffer, int size, int n) {
    if (!path || !buffer || size <= 0 || n <= 0) return -1;
    OwnedFile f = openRegular(path);
    if (!f || fseeko(f.get(), static_cast<off_t>(n - 1) * size, SEEK_SET) != 0) return -1;
    size_t got = fread(buffer, 1, static_cast<size_t>(size), f.get());
    if (got == 0) return -1;
    memset(buffer + got, 0, static_cast<size_t>(size) - got);
    return static_cast<int>(got);
}

char* fileStrmGetStr(int length, FILE* stream) {
    if (length <= 0 || !stream) return nullptr;
    auto want = static_cast<size_t>(std::min<off_t>(length, bytesLeft(stream)));
    OwnedText text(want ? static_cast<char*>(malloc(want + 1)) : nullptr);
    size_t got = text ? fread(text.get(), 1, want, stream) : 0;
    if (got == 0) return nullptr;
    text.get()[got] = 0;
    return text.release();
}

long fileStrmGetSize(FILE* stream) {
    struct stat st;
    if (!stream) return 0;
    fflush(stream);
    if (fileno(stream) >= 0) return isRegular(fileno(stream), st) ? st.st_size : 0;
    off_t at = ftello(stream);  // a stream in memory
    if (at < 0 || fseeko(stream, 0, SEEK_END) != 0) return 0;
    off_t size = ftello(stream);
    fseeko(stream, at, SEEK_SET);
    return size;
}

char* fileGetNameFromFilePath(const char* path) {
    if (!path) return nullptr;
    const char* slash = strrchr(path, '/');
    const char* name = slash ? slash + 1 : path;
    return *name ? const_cast<char*>(name) : nullptr;
}

unsigned int getDiskFreeSize(const char* directory) {
    struct statvfs fs;
    if (!directory || statvfs(directory, &fs) != 0) return 0;
    uint64_t free = 0;
    if (__builtin_mul_overflow(fs.f_bavail, fs.f_frsize, &free)) return UINT_MAX;
    return static_cast<unsigned>(std::min<uint64_t>(free >> 20, UINT_MAX));
}
