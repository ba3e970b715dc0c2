#ifndef ATTALVEN_HOST_KIT_DELIVERY_H
#define ATTALVEN_HOST_KIT_DELIVERY_H

// Appending to an mbox file as a delivery agent does.

#include <cstdio>
#include <string>
#include <vector>

namespace host {

/// A message in an mbox file, from its From_ line on; bytes.
struct EntrySpan {
    long offset, size;
};

/// Appends the messages of `from` to the folder at `path`, which is made when it is missing (mode
/// 0600): under a write lock, flock and the file `path`.lock, with an empty line between messages,
/// synced. PageError 503 when the locks are not free for 10 seconds or a span is no message, 507
/// when it cannot be written; the folder is as it was then.
void deliver(const std::string& path, FILE* from, const std::vector<EntrySpan>& entries);

}  // namespace host

#endif
