#ifndef ATTALVEN_HOST_KIT_SUMMARY_H
#define ATTALVEN_HOST_KIT_SUMMARY_H

// What a list page shows of a folder, kept in a file of the user's mailbox directory: a folder of
// 30,000 messages is not read again for each page. The file counts only while the folder is the
// very one that was read (device, inode, size and times); when the folder has changed, rows whose
// header block is the same but for its Status line are taken over, and only new ones are parsed.

#include <sys/stat.h>

#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "head_mark.h"
#include "session.h"

namespace host {

struct FolderCounts {
    int all = 0, unread = 0;
};

class Summary {
  public:
    /// One message; texts are UTF-8, cut as RowContent says, and belong to the summary.
    struct Row {
        int number;
        unsigned status;
        int priority, size;
        time_t date;
        Digest digest;                       // of the header block without Status
        std::string_view key;                // messageKey()
        std::string_view from, to, subject;  // a name, or an address without one
        /// What links and actions call it: messageName().
        std::string name() const;
    };

    /// Of the folder as it is now; empty when it is missing. PageError 404 for no folder's name,
    /// 503 when it cannot be read.
    Summary(const User& user, const std::string& folder);
    Summary(const Summary&) = delete;
    Summary& operator=(const Summary&) = delete;

    const std::vector<Row>& rows() const& { return rows_; }
    void rows() const&& = delete;
    FolderCounts counts() const;

  private:
    void build(int fd, const Summary& old);
    template <typename Content>
    void fill(Row& row, const Content& content);
    std::string_view keep(std::string_view text);
    bool load(const std::string& path);
    void save(const std::string& path) const;
    Summary() = default;

    struct stat state_ = {};  // of the folder that the rows show
    std::vector<std::string>
        texts_;  // what the rows' texts point into: large ones, whose bytes stay
    std::vector<Row> rows_;
};

/// Of the folder as it is now; reads the start of its summary file only, if that is current.
FolderCounts folderCounts(const User& user, const std::string& folder);

}  // namespace host

#endif
