// Safe replacement of a file. The order: learn with a plain open whether writing is allowed at all,
// write and sync a sibling, rename it over. Survives a full disk, a file size limit, kill -9 at any
// point (at worst a stray ".new-..." file stays) and a FIFO or device under the file's name.

#include "replace_file.h"

#include <fcntl.h>
#include <stdlib.h>

#include <cerrno>
#include <climits>
#include <cstdio>

#include "bounded_text.h"
#include "descriptor.h"
#include "hold_signals.h"

namespace attalven {

namespace {

using Path = BoundedText<PATH_MAX - 1>;

/// A new, empty, private file beside `path`; its name goes to `name`.
Descriptor makeSibling(string_view path, Path& name) {
    constexpr string_view pattern = ".new-XXXXXX";
    size_t slash = path.rfind('/');
    string_view directory = head(path, slash == string_view::npos ? 0 : slash + 1);
    name.assign(directory);
    if (!name.fits(pattern)) {
        errno = EACCES;
        return Descriptor();
    }
    name.append(pattern);
    return Descriptor(mkostemp(name.data(), O_CLOEXEC));
}

/// Overwrites the file itself. It grows first, so that a full disk is noticed while the old content
/// is still there; file systems that cannot reserve room just write.
bool overwrite(int fd, off_t oldSize, string_view content) {
    auto size = static_cast<off_t>(content.size());
    if (size > oldSize && fallocate(fd, 0, 0, size) != 0 &&
        (errno == ENOSPC || errno == EDQUOT || errno == EFBIG)) {
        (void)!ftruncate(fd, oldSize);
        return false;
    }
    return writeAll(fd, content) && ftruncate(fd, size) == 0 && fsync(fd) == 0;
}

enum class Sibling { kDone, kFailed, kImpossible };

/// Writes the sibling and renames it over `path`; `old` tells the file that it replaces, if any.
Sibling writeSibling(const char* path, const struct stat* old, string_view content) {
    Path name;
    Descriptor fd = makeSibling(path, name);
    // Out of space or descriptors is a failure; a directory that takes no new file is none.
    if (!fd)
        return errno == EACCES || errno == EPERM || errno == ENOENT || errno == EROFS
                   ? Sibling::kImpossible
                   : Sibling::kFailed;
    Sibling result = Sibling::kFailed;
    if (old ? !takeOwnerAndMode(fd.get(), *old) : fchmod(fd.get(), 0600) != 0)
        result = Sibling::kImpossible;
    else if (writeAll(fd.get(), content) && fsync(fd.get()) == 0 && fd.close() &&
             rename(name.c_str(), path) == 0)
        return Sibling::kDone;
    int error = errno;
    unlink(name.c_str());
    errno = error;
    return result;
}

Replaced createFile(const char* path, string_view content) {
    struct stat link;
    Sibling made = lstat(path, &link) == 0 ? Sibling::kImpossible  // a link to a file yet to be
                                           : writeSibling(path, nullptr, content);
    if (made == Sibling::kDone) return Replaced::kDone;
    if (made == Sibling::kFailed) return Replaced::kNotWritten;
    Descriptor fd(open(path, O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600));
    if (!fd) return Replaced::kNotOpened;
    return overwrite(fd.get(), 0, content) && fd.close() ? Replaced::kDone : Replaced::kNotWritten;
}

}  // namespace

Replaced replaceFile(const char* path, string_view content) {
    HoldSignals hold;
    Descriptor fd(open(path, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!fd) return errno == ENOENT ? createFile(path, content) : Replaced::kNotOpened;
    struct stat old;
    if (fstat(fd.get(), &old) != 0 || !S_ISREG(old.st_mode)) return Replaced::kNotOpened;
    char target[PATH_MAX];
    Sibling made = old.st_nlink == 1 && realpath(path, target) ? writeSibling(target, &old, content)
                                                               : Sibling::kImpossible;
    if (made == Sibling::kImpossible)
        return overwrite(fd.get(), old.st_size, content) && fd.close() ? Replaced::kDone
                                                                       : Replaced::kNotWritten;
    return made == Sibling::kDone ? Replaced::kDone : Replaced::kNotWritten;
}

}  // namespace attalven
