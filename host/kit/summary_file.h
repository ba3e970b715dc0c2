#ifndef ATTALVEN_HOST_KIT_SUMMARY_FILE_H
#define ATTALVEN_HOST_KIT_SUMMARY_FILE_H

// The file of a summary: a head with a digest of its own, then rows and their texts, of which the
// head has the digest. Read and written by Summary only, on one machine: numbers in its byte order.

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "head_mark.h"

namespace host {

struct SummaryHead {
    char magic[16];
    int64_t device, inode, size, modified, modifiedNs, changed, changedNs;  // of the folder
    int64_t all, unread, contentSize;
    Digest content;  // of all that follows the head
    Digest head;     // of what stands before

    static SummaryHead of(const struct stat& folder);
    /// Whether it is a head of ours, unharmed.
    bool isSound() const;
    bool isOf(const struct stat& folder) const;
    void seal();
};

/// The head of the summary file, nothing when there is none that is sound.
std::optional<SummaryHead> readSummaryHead(const std::string& path);

/// A row as it lies in the file, before its texts.
struct StoredRow {
    int64_t date;
    uint32_t status;
    int32_t priority, size;
    uint32_t lengths[4];  // key, from, to, subject
    Digest digest;
};

}  // namespace host

#endif
