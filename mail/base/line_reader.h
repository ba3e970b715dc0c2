#ifndef ATTALVEN_MAIL_BASE_LINE_READER_H
#define ATTALVEN_MAIL_BASE_LINE_READER_H

// Lines of a seekable stream, cut as a loop of fgets with a buffer of `limit` bytes would cut them
// (at most limit - 1 bytes a piece, LF included), but with true lengths: NUL bytes are ordinary
// bytes. The reader reads ahead in large blocks; finish() (or the destructor) puts the stream where
// the lines that were taken end.

#include <cstdint>
#include <cstdio>

#include "ascii.h"
#include "owned.h"

namespace attalven {

/// One piece of a line; `text` stays valid until the next call of the reader.
struct LinePiece {
    string_view text;
    int64_t offset = 0;      // file position of its first byte
    bool startsLine = true;  // false for the second and later pieces of a long physical line
    bool endsLine() const { return !text.empty() && text.back() == '\n'; }
};

class LineReader {
  public:
    static constexpr size_t kBlock = 256 * 1024;

    /// Reads from the stream's current position. A NULL stream, or memory out, reads as end of
    /// file.
    LineReader(FILE* stream, size_t limit);
    ~LineReader() { finish(); }
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// The next piece; false at the end of the file.
    bool next(LinePiece& piece);
    /// Takes the last piece back; the next call of next() gives it again.
    void putBack(const LinePiece& piece);
    /// Whether memory was out for reading anything.
    bool failed() const { return stream_ && !buffer_; }
    /// File position of the first byte not yet taken.
    int64_t position() const { return base_ + static_cast<int64_t>(begin_); }
    /// Goes on reading at `offset`; the bytes there may already be in the buffer.
    void seek(int64_t offset);
    /// Pieces have at most limit - 1 bytes from now on.
    void setLimit(size_t limit) { limit_ = limit; }
    /// Skips to the next physical line that begins before `end` and starts with `prefix` (not
    /// empty, without LF, shorter than kBlock). When there is none, gives false and skips all lines
    /// that begin before `end`.
    bool skipToLine(string_view prefix, int64_t end);
    /// Whether the next piece starts a physical line.
    bool atLineStart() const { return atLineStart_; }

    /// For kernels that take many bytes at a time: the bytes read ahead, at least `wanted` unless
    /// the file or the buffer (kBlock) ends before. skip() takes them.
    string_view peek(size_t wanted);
    void skip(size_t n);

    /// Puts the stream at position(). Nothing can be read afterwards.
    void finish();

  private:
    bool fill();
    size_t findLine(string_view have, string_view prefix) const;
    string_view buffered() const { return {buffer_.get() + begin_, end_ - begin_}; }

    FILE* stream_;
    size_t limit_;
    OwnedMemory<char> buffer_;
    int64_t base_ = 0;            // file position of buffer_[0]
    size_t begin_ = 0, end_ = 0;  // the bytes read ahead
    size_t nextRead_ = 0;         // size of the next read; grows, so that short looks read little
    bool atLineStart_ = true, atEnd_ = false;
};

}  // namespace attalven

#endif
