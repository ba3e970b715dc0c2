// The one reader of lines. The buffer holds what was read ahead; `begin_` moves over it, and fill()
// moves the rest to the front before reading more. Survives NUL bytes, lines without end, streams
// that cannot seek and reads that fail (both count as end of file).

#include "line_reader.h"

#include <cstring>

namespace attalven {

namespace {
constexpr size_t kFirstRead = 8 * 1024, kPage = 4096;
}

LineReader::LineReader(FILE* stream, size_t limit)
    : stream_(stream), limit_(limit), nextRead_(kFirstRead) {
    int64_t at = stream_ ? ftello(stream_) : -1;
    if (at < 0) {
        stream_ = nullptr;
        atEnd_ = true;
        return;
    }
    base_ = at;
    buffer_.reset(static_cast<char*>(malloc(kBlock)));
    if (!buffer_) atEnd_ = true;
}

bool LineReader::fill() {
    if (atEnd_) return false;
    if (begin_ > 0) {
        memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
        base_ += static_cast<int64_t>(begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    size_t want = std::min(nextRead_, kBlock - end_);
    if (want == 0) return false;
    // Whole pages go straight into the buffer; the C library would fetch a rest by a read of its
    // own.
    if (want > kPage) want -= want % kPage;
    nextRead_ = kBlock;
    size_t got = fread(buffer_.get() + end_, 1, want, stream_);
    end_ += got;
    if (got < want) atEnd_ = true;
    return got > 0;
}

bool LineReader::next(LinePiece& piece) {
    size_t most = limit_ - 1, searched = 0, length = 0;
    for (;;) {
        string_view have = head(buffered(), most);
        string_view fresh = tail(have, searched);
        const void* lf = fresh.empty() ? nullptr : memchr(fresh.data(), '\n', fresh.size());
        if (lf)
            length = static_cast<size_t>(static_cast<const char*>(lf) - have.data()) + 1;
        else if (have.size() == most)
            length = most;
        if (length) break;
        searched = have.size();
        if (!fill()) {
            length = searched;
            break;
        }
    }
    if (length == 0) return false;
    piece = {{buffer_.get() + begin_, length}, position(), atLineStart_};
    begin_ += length;
    atLineStart_ = piece.endsLine();
    return true;
}

void LineReader::putBack(const LinePiece& piece) {
    begin_ -= piece.text.size();
    atLineStart_ = piece.startsLine;
}

void LineReader::seek(int64_t offset) {
    atLineStart_ = true;
    if (offset >= base_ && offset <= base_ + static_cast<int64_t>(end_)) {
        begin_ = static_cast<size_t>(offset - base_);
        return;
    }
    begin_ = end_ = 0;
    base_ = offset;
    nextRead_ = kFirstRead;
    atEnd_ = !stream_ || !buffer_ || fseeko(stream_, offset, SEEK_SET) != 0;
}

string_view LineReader::peek(size_t wanted) {
    while (end_ - begin_ < wanted && fill()) {
    }
    return buffered();
}

void LineReader::skip(size_t n) {
    n = std::min(n, end_ - begin_);
    if (n == 0) return;
    begin_ += n;
    atLineStart_ = buffer_.get()[begin_ - 1] == '\n';
}

/// Where in the bytes read ahead a line starts with `prefix`; npos when none does.
size_t LineReader::findLine(string_view have, string_view prefix) const {
    const char* at = have.data();
    const char* end = at + have.size();
    while (at < end) {
        auto left = static_cast<size_t>(end - at);
        auto hit = static_cast<const char*>(memmem(at, left, prefix.data(), prefix.size()));
        if (!hit) break;
        if (hit == have.data() ? atLineStart_ : hit[-1] == '\n')
            return static_cast<size_t>(hit - have.data());
        // One look a line, however often the prefix stands in it.
        auto lf = static_cast<const char*>(memchr(hit, '\n', static_cast<size_t>(end - hit)));
        if (!lf) break;
        at = lf + 1;
    }
    return string_view::npos;
}

bool LineReader::skipToLine(string_view prefix, int64_t end) {
    if (position() >= end) return false;
    for (;;) {
        string_view have = peek(prefix.size());
        int64_t left = end - position();
        if (have.size() < prefix.size() || left <= 0) break;
        size_t at = findLine(have, prefix);
        if (at != string_view::npos) {
            if (static_cast<int64_t>(at) >= left) break;
            skip(at);
            return true;
        }
        // The last bytes may be the start of the prefix.
        size_t done = have.size() - prefix.size() + 1;
        skip(static_cast<size_t>(std::min(static_cast<int64_t>(done), left)));
    }
    while (position() < end && !peek(1).empty())
        skip(static_cast<size_t>(std::min(static_cast<int64_t>(end_ - begin_), end - position())));
    LinePiece crossing;
    if (!atLineStart_) next(crossing);
    return false;
}

void LineReader::finish() {
    if (!stream_) return;
    fseeko(stream_, position(), SEEK_SET);
    base_ = position();
    stream_ = nullptr;
    begin_ = end_ = 0;
    atEnd_ = true;
}

}  // namespace attalven
