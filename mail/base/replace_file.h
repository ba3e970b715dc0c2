#ifndef ATTALVEN_MAIL_BASE_REPLACE_FILE_H
#define ATTALVEN_MAIL_BASE_REPLACE_FILE_H

// Replacing a small file as a whole: a reader sees the old content or the new one, and a full disk
// or a crash keeps the old one.

#include "ascii.h"

namespace attalven {

enum class Replaced {
    kDone,
    kNotOpened,  // a plain opening for writing would have failed; nothing was changed
    kNotWritten  // the content did not get to the disk; the old file stands
};

/// Makes `content` the content of the regular file `path`, through a synced new file in the same
/// directory and a rename. A new file has mode 0600; a replaced one keeps owner, group and mode,
/// and a symbolic link keeps pointing to it. Where that cannot be had (no new file may be made in
/// the directory, a foreign owner, hard links), the file itself is overwritten.
Replaced replaceFile(const char* path, string_view content);

}  // namespace attalven

#endif
