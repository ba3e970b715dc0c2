#ifndef ATTALVEN_HOST_KIT_FOLDER_H
#define ATTALVEN_HOST_KIT_FOLDER_H

// The four folders of a user: "inbox" (the spool file), "sent", "drafts", "trash" (mbox files in
// the user's mailbox directory). Names are looked up in a table and never become part of a path.

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "mail/mail.h"
#include "session.h"

namespace host {

struct FolderName {
    const char* name;
    int title;  // number in the message table
};
const std::vector<FolderName>& folderNames();

/// The path of a user's folder; PageError 404 for a name that is none of the four.
std::string folderPath(const User& user, const std::string& name);

/// A folder that is read: an index without marker where a rewrite replaces the file as a whole
/// (admOptions.passwdFlag is not 1), so that the frames and pictures of one page can be served at
/// the same time; else fldrOpen(), waiting for up to 10 seconds. No messages when the folder is
/// missing or empty. PageError 503 when it stays busy.
class Folder {
  public:
    Folder(const User& user, const std::string& name);
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    int count() const { return index_ ? fldrMsgMax(index_) : 0; }
    const FldrMsg& entry(int n) const { return *index_->msgs[n - 1]; }
    Fldr* index() const { return index_; }
    FILE* file() const { return index_ ? index_->fp : nullptr; }
    const std::string& name() const { return name_; }
    /// The message that a link means: number `n` if it still has the key `id` ("": any), else the
    /// one that has it. 0 when there is none. `id` may be a whole Message-ID too.
    int find(int n, const std::string& id) const;

  private:
    std::string name_;
    FILE* stream_ = nullptr;
    Fldr* index_ = nullptr;
    bool opened_ = false;
};

/// What a message is known by when the folder has changed: its Message-ID, or without one its
/// date, subject and sender; at most 96 bytes of it. Printable ASCII whatever it was, so that links
/// and forms bring it back unchanged.
std::string messageKey(const FldrMsg& entry);
std::string messageKey(const std::string& messageId);

/// One message as the pages name it: its number and its key ("": whatever has the number).
struct MessageRef {
    int number;
    std::string id;
};

/// Opens the folder for writing (waits up to 10 seconds: PageError 503), calls `change` with the
/// index and the numbers that `messages` have now (those that are gone are left out), and closes
/// it, which rewrites it. `change` marks entries. PageError 503 when the rewrite failed: the folder
/// is as it was.
void changeFolder(const User& user, const std::string& name,
                  const std::vector<MessageRef>& messages,
                  const std::function<void(Fldr*, const std::vector<int>&)>& change);

/// Appends one or more whole mbox entries to a folder as a delivery agent does: locks, an empty
/// line between messages, synced; on failure the folder is as it was and PageError 507 is thrown.
void appendToFolder(const User& user, const std::string& name, FILE* entries, long offset,
                    long size);

/// Moves messages: first appended to `target` and synced, then marked deleted here. The number of
/// messages moved.
size_t moveMessages(const User& user, const std::string& source, const std::string& target,
                    const std::vector<MessageRef>& messages);

}  // namespace host

#endif
