#ifndef ATTALVEN_MAIL_CODEC_PART_STREAM_H
#define ATTALVEN_MAIL_CODEC_PART_STREAM_H

// What the stream forms of the codecs have in common: the lines of a part of a file as large runs,
// and output in large blocks.

#include <cstdio>

#include "mail/base/line_reader.h"
#include "mail/base/text.h"

namespace attalven {

/// Read limit of the stream forms, and the longest piece of a line that it gives.
inline constexpr size_t kStreamLine = 5120, kRun = kStreamLine - 1;

/// The next `length` bytes of a stream, by line: a line that begins inside the part is taken to its
/// end, or to the end of the piece in which the part ends.
class PartLines {
  public:
    PartLines(FILE* in, int length) : reader_(in, kStreamLine), left_(length) {}

    /// The next run: whole lines, at most kRun bytes of them, or a piece of a longer one.
    /// It stays valid until the next call. False at the end.
    bool next(string_view& run);

  private:
    LineReader reader_;
    int64_t left_;
};

/// Output in blocks. After the first failed write nothing more is written.
class BlockWriter {
  public:
    explicit BlockWriter(FILE* out) : out_(out), failed_(out == nullptr) {}
    ~BlockWriter() { flush(); }
    BlockWriter(const BlockWriter&) = delete;
    BlockWriter& operator=(const BlockWriter&) = delete;

    static constexpr size_t kBlock = 64 * 1024;

    /// Room for `n` bytes, at most kBlock; NULL once a write has failed. commit() adds what was put
    /// there.
    char* room(size_t n);
    void commit(size_t n) { size_ += n; }
    void write(string_view bytes);
    bool failed() const { return failed_; }

  private:
    void flush();

    FILE* out_;
    bool failed_;
    size_t size_ = 0;
    char block_[kBlock];
};

/// Writes what step(run, room for `room` bytes) makes of each run of the lines of a part.
template <typename Step>
void convertPart(BlockWriter& writer, FILE* in, int length, size_t room, Step step) {
    PartLines lines(in, length);
    for (string_view run; !writer.failed() && lines.next(run);)
        if (char* to = writer.room(room)) writer.commit(step(run, to));
}
template <typename Step>
void convertPart(FILE* out, FILE* in, int length, size_t room, Step step) {
    BlockWriter writer(out);
    convertPart(writer, in, length, room, step);
}

/// Appends what step(rest of the text, room for `room` bytes) makes of each slice of a text.
template <typename Step>
void appendSlices(Text& result, string_view text, size_t slice, size_t room, Step step) {
    for (; !text.empty(); text = tail(text, slice)) {
        char* to = result.room(room);
        if (!to) return;
        result.commit(step(text, to));
    }
}

}  // namespace attalven

#endif
