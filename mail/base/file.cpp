// Opening of regular files. O_NONBLOCK keeps a FIFO from holding the process up; the type is
// checked on the descriptor, so that the file cannot be exchanged between check and use.

#include "file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace attalven {

OwnedFile openRegular(const char* path, Links links) {
    return openRegularAt(AT_FDCWD, path, links);
}

OwnedFile openRegularAt(int directory, const char* name, Links links) {
    int fd = openat(
        directory, name,
        O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (links == Links::kRefuse ? O_NOFOLLOW : 0));
    if (fd < 0) return nullptr;
    struct stat st;
    FILE* f = fstat(fd, &st) == 0 && S_ISREG(st.st_mode) ? fdopen(fd, "r") : nullptr;
    if (!f) close(fd);
    return OwnedFile(f);
}

}  // namespace attalven
