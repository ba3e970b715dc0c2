#ifndef ATTALVEN_MAIL_FOLDER_FLDR_SCAN_H
#define ATTALVEN_MAIL_FOLDER_FLDR_SCAN_H

// The messages of an mbox file, found in one pass over large blocks. Only bytes that start a
// physical line can separate messages or end a header.

#include "digest.h"
#include "mail/base/line_reader.h"

namespace attalven {

/// Where a message lies: byte position of its From_ line; bytes up to the first empty line; bytes
/// up to the next From_ line.
struct MessageSpan {
    int64_t offset = 0, headerSize = 0, size = 0;
    int64_t end() const { return offset + size; }
    bool operator==(const MessageSpan&) const = default;
};

/// Alternate findMessage() and measure(). Between them, window() shows the message's first bytes.
class FolderScan {
  public:
    /// Reads from the stream's position, which starts a line; nothing at or behind `end` is seen.
    explicit FolderScan(FILE* stream, int64_t end = INT64_MAX)
        : reader_(stream, LineReader::kBlock), end_(end) {}

    /// Goes to the next From_ line; false, at the end, when there is none.
    bool findMessage();
    /// Takes the message whose From_ line findMessage() found. A header without an empty line is
    /// the whole message.
    MessageSpan measure();

    /// What is in memory from the position on, at least `wanted` bytes (at most LineReader::kBlock)
    /// unless the end comes before.
    string_view window(size_t wanted);
    int64_t position() const { return reader_.position(); }
    /// Digest of the place and header of each message measured so far.
    uint64_t fingerprint() const { return digest_.value(); }
    /// Leaves the stream at `offset`.
    void finishAt(int64_t offset);

  private:
    bool atFromLine();
    bool skipHeader();
    bool searchFromLine();

    LineReader reader_;
    int64_t end_;
    bool found_ = false, atStart_ = true;  // at a From_ line; at the position of the beginning
    Digest digest_;
};

}  // namespace attalven

#endif
