// Runs of lines for the codecs. Taking many short lines at once is what makes the vector kernels
// worth while; a run never ends inside a line but where a piece of a long one ends, so that results
// are those of a loop over lines. Survives lines without end, wrong part lengths, full disks.

#include "part_stream.h"

#include <cstring>

namespace attalven {

bool PartLines::next(string_view& run) {
    if (left_ <= 0) return false;
    size_t most = std::min(static_cast<size_t>(left_), kRun);
    string_view ahead = head(reader_.peek(most), most);
    const void* lf = ahead.empty() ? nullptr : memrchr(ahead.data(), '\n', ahead.size());
    if (lf) {
        run = head(ahead, static_cast<size_t>(static_cast<const char*>(lf) - ahead.data()) + 1);
        reader_.skip(run.size());
    } else {
        LinePiece piece;
        if (!reader_.next(piece)) return false;
        run = piece.text;
    }
    left_ -= static_cast<int64_t>(run.size());
    return true;
}

char* BlockWriter::room(size_t n) {
    if (n > kBlock - size_) flush();
    return failed_ ? nullptr : block_ + size_;
}

void BlockWriter::write(string_view bytes) {
    while (!bytes.empty()) {
        string_view part = head(bytes, kBlock);
        char* out = room(part.size());
        if (!out) return;
        memcpy(out, part.data(), part.size());
        commit(part.size());
        bytes.remove_prefix(part.size());
    }
}

void BlockWriter::flush() {
    if (!failed_ && size_ > 0 && fwrite(block_, 1, size_, out_) != size_) failed_ = true;
    size_ = 0;
}

}  // namespace attalven
