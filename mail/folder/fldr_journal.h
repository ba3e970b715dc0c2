#ifndef ATTALVEN_MAIL_FOLDER_FLDR_JOURNAL_H
#define ATTALVEN_MAIL_FOLDER_FLDR_JOURNAL_H

// The journal of a copy that replaces the content of a folder with that of its marker. While it
// exists, the folder may be torn and the marker holds its content.

#include "mail/base/ascii.h"

namespace attalven {

struct Journal {
    enum Phase : char {
        kExtending = 'e',  // the folder holds its old content, perhaps followed by zero bytes
        kCopying = 'c'     // the folder's first bytes may be anything
    };
    Phase phase = kCopying;
    int64_t oldSize = 0, newSize = 0;
    uint64_t key = 0;            // of the digests
    uint64_t contentDigest = 0;  // of the new content
    uint64_t restDigest = 0;     // of what lay behind the new size in the folder

    /// As long as the folder is not cut to its new size, it keeps this one; mail that arrives in
    /// between lies behind.
    int64_t copySize() const { return std::max(oldSize, newSize); }

    /// Writes the journal of the folder at `folder` to the disk, in place of an older one.
    bool save(string_view folder) const;
    /// A foreign journal belongs neither to us, nor to the superuser, nor to the folder's owner; an
    /// invalid one is not of this form; one that failed cannot be read now.
    enum class Read { kNone, kDone, kForeign, kInvalid, kFailed };
    Read load(string_view folder);
    /// Deletes the journal; false when it may still be there.
    static bool remove(string_view folder);
    /// Deletes a new journal that was never put into place.
    static void removeFresh(string_view folder);
};

}  // namespace attalven

#endif
