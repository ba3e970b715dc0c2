#ifndef ATTALVEN_MAIL_FOLDER_FLDR_IN_PLACE_H
#define ATTALVEN_MAIL_FOLDER_FLDR_IN_PLACE_H

// Replacing the content of a folder that must stay the same file: from the marker, with a journal,
// so that the next opening can finish a copy that was interrupted at any point.

#include <optional>

#include "block_copy.h"
#include "fldr_journal.h"
#include "side_files.h"

namespace attalven {

/// A folder and its marker during the copy, both open for reading and writing, the folder locked,
/// the marker held.
struct InPlaceCopy {
    string_view path;
    int folder, marker;
    Blocks& blocks;
    Journal journal;

    enum class Result {
        kDone,       // the folder holds the new content; the journal is gone
        kUntouched,  // the folder holds its old content; the journal is gone
        kUnfinished  // the journal and the marker must stay; finishRewrite() goes on
    };
    /// Makes the first `journal.newSize` bytes of the marker, whose digest the journal holds, the
    /// content of the folder, which has `journal.oldSize` bytes.
    Result run();
    /// Goes on where a copy was interrupted.
    Result resume();

  private:
    bool extend();
    Result giveUp();
    Result finish(bool copied);
    std::optional<bool> isExtended();
    std::optional<bool> isComplete();
    bool copyAndCut();
    bool absorbNewMail();
    bool noteRest();
    int64_t folderSize() const;
};

/// Finishes a rewrite of the folder at `path` that was interrupted while it replaced the folder's
/// content. False when that is not possible now: the folder must not be opened.
bool finishRewrite(string_view path);

}  // namespace attalven

#endif
