#ifndef ATTALVEN_MAIL_FOLDER_FLDR_LOCK_H
#define ATTALVEN_MAIL_FOLDER_FLDR_LOCK_H

// The locks that delivery agents honour on an mbox file: a write lock and flock on the file, and
// the file `path`.lock. Released by the destructor.

#include "side_files.h"

namespace attalven {

/// Takes the write lock of an open file without waiting.
bool lockForWriting(int fd);

class FolderLock {
  public:
    explicit FolderLock(string_view path) : path_(path, ""), dotlock_(path, kDotlockEnding) {}
    ~FolderLock() { release(); }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    /// Takes all of them, waiting up to 10 seconds for other holders.
    bool acquire();
    /// The same without waiting. A lock file whose owner has died, or is older than 500 seconds, is
    /// removed.
    bool tryAcquire();
    void release();

    /// The locked file; for reading only when the file is not ours to write.
    int fd() const { return file_.get(); }
    bool canWrite() const { return canWrite_; }

    /// Lets others have the kernel's locks on the file for a moment and takes them again: a writer
    /// that had been waiting for them is through then.
    bool letWaitersThrough();

  private:
    bool openFile();
    bool lockFile();
    bool makeDotlock();

    SidePath path_, dotlock_;
    Descriptor file_;
    bool canWrite_ = false;
    Descriptor ownDotlock_;  // open while we hold it, so that we know it again
};

}  // namespace attalven

#endif
