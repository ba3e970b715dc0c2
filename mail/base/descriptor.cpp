// Writing to descriptors: full disks, file size limits and interruptions show as short writes.

#include "descriptor.h"

#include <cerrno>

namespace attalven {

bool writeAll(int fd, string_view bytes) {
    while (!bytes.empty()) {
        ssize_t n = write(fd, bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        bytes = tail(bytes, static_cast<size_t>(n));
    }
    return true;
}

bool takeOwnerAndMode(int fd, const struct stat& like) {
    struct stat own;
    if (fstat(fd, &own) != 0) return false;
    // The owner first: a change of owner clears mode bits.
    if ((own.st_uid != like.st_uid || own.st_gid != like.st_gid) &&
        fchown(fd, like.st_uid, like.st_gid) != 0)
        return false;
    return fchmod(fd, like.st_mode & 07777) == 0;
}

}  // namespace attalven
