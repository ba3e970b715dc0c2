#ifndef ATTALVEN_MAIL_FOLDER_SIDE_FILES_H
#define ATTALVEN_MAIL_FOLDER_SIDE_FILES_H

// The files that lie beside a folder, and what all of them need. Folders may lie in directories
// where others can write: nothing but a regular file is opened, and links are never followed.

#include <fcntl.h>

#include "mail/base/bounded_text.h"
#include "mail/base/descriptor.h"
#include "mail/folder.h"

namespace attalven {

/// A folder's path leaves room for the marker's ending in the record's field.
inline constexpr size_t kFolderPathMax = sizeof(Fldr::path) - sizeof(".tmp");

inline constexpr string_view kMarkerEnding = ".tmp";     // keeps others out; the new content
inline constexpr string_view kJournalEnding = ".tmp.j";  // what the copy of the marker has reached
inline constexpr string_view kKeptEnding = ".tmp.torn";  // content that recovery could not place
inline constexpr string_view kDotlockEnding = ".lock";   // what delivery agents honour

/// The path of a file beside a folder.
class SidePath {
  public:
    SidePath(string_view folder, string_view ending) {
        path_.append(folder);
        path_.append(ending);
    }
    operator const char*() const { return path_.c_str(); }

  private:
    BoundedText<kFolderPathMax + 16> path_;
};

inline constexpr int kSideFileFlags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

/// What stat() says of a file: which one it is, and whether it was changed.
struct FileState {
    dev_t device = 0;
    ino_t inode = 0;
    uid_t owner = 0;
    int64_t size = -1;  // of no file
    timespec modified = {}, changed = {};
    bool isRegular = false;

    FileState() = default;
    explicit FileState(const struct stat& st)
        : device(st.st_dev),
          inode(st.st_ino),
          owner(st.st_uid),
          size(st.st_size),
          modified(st.st_mtim),
          changed(st.st_ctim),
          isRegular(S_ISREG(st.st_mode)) {}
    bool exists() const { return size >= 0; }
    bool isSameFile(const FileState& other) const {
        return exists() && other.exists() && device == other.device && inode == other.inode;
    }
    bool isUnchangedFrom(const FileState& other) const;
};

/// The state of an open file, or of what a path names (a link counts as itself).
FileState stateOf(int fd);
FileState stateOf(const char* path);

/// Whether there is certainly nothing under that name; an error of looking is no proof.
bool isAbsent(const char* path);

/// Deletes the file at `path` if it is the one that `fd` has open.
void unlinkSame(const char* path, int fd);

/// The directory that holds `path`.
BoundedText<kFolderPathMax> directoryOf(string_view path);
/// Brings changes of names in the directory of `path` to the disk.
bool syncDirectory(string_view path);

}  // namespace attalven

#endif
