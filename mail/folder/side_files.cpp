// Identity and state of files. A file is known by device and inode, never by its name alone: names
// beside a folder can change hands at any time.

#include "side_files.h"

#include <cerrno>

namespace attalven {

namespace {

bool isSameTime(const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

}  // namespace

bool FileState::isUnchangedFrom(const FileState& other) const {
    return isSameFile(other) && size == other.size && isSameTime(modified, other.modified) &&
           isSameTime(changed, other.changed);
}

FileState stateOf(int fd) {
    struct stat st;
    return fd >= 0 && fstat(fd, &st) == 0 ? FileState(st) : FileState();
}

FileState stateOf(const char* path) {
    struct stat st;
    return lstat(path, &st) == 0 ? FileState(st) : FileState();
}

bool isAbsent(const char* path) {
    struct stat st;
    return lstat(path, &st) != 0 && errno == ENOENT;
}

void unlinkSame(const char* path, int fd) {
    if (stateOf(path).isSameFile(stateOf(fd))) unlink(path);
}

BoundedText<kFolderPathMax> directoryOf(string_view path) {
    size_t slash = path.rfind('/');
    BoundedText<kFolderPathMax> name;
    name.append(slash == string_view::npos ? "." : head(path, slash + 1));
    return name;
}

bool syncDirectory(string_view path) {
    Descriptor directory(open(directoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return directory && fsync(directory.get()) == 0;
}

}  // namespace attalven
