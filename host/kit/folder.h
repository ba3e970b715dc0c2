#ifndef ATTALVEN_HOST_KIT_FOLDER_H
#define ATTALVEN_HOST_KIT_FOLDER_H

// The four folders of a user: "inbox" (the spool file), "sent", "drafts", "trash" (mbox files in
// the user's mailbox directory). Names are looked up in a table and never become part of a path.

#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "mail/mail.h"
#include "mbox_scan.h"
#include "session.h"

namespace host {

constexpr int kSystemAccounts = 1;  // admOptions.passwdFlag: a folder stays the same file

struct FolderName {
    const char* name;
    int title;  // number in the message table
};
const std::vector<FolderName>& folderNames();

/// The path of a user's folder; PageError 404 for a name that is none of the four.
std::string folderPath(const User& user, const std::string& name);

/// A folder that is read: without marker where a rewrite replaces the file as a whole
/// (admOptions.passwdFlag is not 1), so that the frames and pictures of one page can be served at
/// the same time; else by fldrOpen(), waiting for up to 10 seconds. No messages when the folder is
/// missing or empty. PageError 503 when it stays busy.
///
/// A page shows one message of the 30,000: without marker the folder is only searched for the
/// places of its messages, and the library makes an entry from the header that is asked for. The
/// whole index is made when a message has to be found by its key.
class Folder {
  public:
    Folder(const User& user, const std::string& name);
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    int count() const;
    const FldrMsg& entry(int n) const;
    FILE* file() const { return index_ ? index_->fp : stream_; }
    const std::string& name() const { return name_; }
    /// What links call message `n`: messageName().
    std::string nameOf(int n) const;
    /// The message that a link means: number `n` if it still has the name `id` ("": any), else the
    /// first one that has it. 0 when there is none. `id` may be a key or a whole Message-ID too.
    int find(int n, const std::string& id) const;

  private:
    FldrMsg readEntry(int n) const;

    std::string name_;
    FILE* stream_ = nullptr;
    std::unique_ptr<MboxScan> scan_;
    std::vector<EntrySpan> places_;
    mutable std::map<int, FldrMsg> entries_;
    mutable Fldr* index_ = nullptr;
    bool opened_ = false;
};

/// fldrOpen(), waiting while the folder is busy; NULL for one that is missing or empty. PageError
/// 503 when it stays busy.
Fldr* openWaiting(const std::string& path);

/// What a message is known by when the folder has changed: its Message-ID, or without one its
/// date, subject and sender; at most 96 bytes of it. Printable ASCII whatever it was, so that links
/// and forms bring it back unchanged.
std::string messageKey(const FldrMsg& entry);
std::string messageKey(const std::string& messageId);

/// The key behind the mark of the message's header (headMark()), which copies of one message do not
/// share: what is meant for one never hits another.
std::string messageName(const FldrMsg& entry, MboxScan& folder);
/// Whether the message has the name or key `id`.
bool isNamed(const FldrMsg& entry, const std::string& id, MboxScan& folder);

/// One message as the pages call it: its number and its name ("": whatever has the number).
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
