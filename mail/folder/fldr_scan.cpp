// The scan of a folder. Between calls the reader stands at the beginning, at an accepted From_ line
// (found_) or at the end. Survives lines without end, NUL bytes, headers without end and files that
// shrink while they are read.

#include "fldr_scan.h"

#include "from_line.h"
#include "mail/folder.h"

namespace attalven {

namespace {

constexpr string_view kFrom = "From ";

/// Start of the last physical line of the bytes from `begin` to `end`; `end` when they cannot be
/// read.
int64_t lastLineStart(FILE* stream, int64_t begin, int64_t end) {
    char block[4096];
    for (int64_t stop = end - 1; stop > begin;) {
        int64_t from = std::max(begin, stop - static_cast<int64_t>(sizeof block));
        size_t n = static_cast<size_t>(stop - from);
        if (fseeko(stream, from, SEEK_SET) != 0 || fread(block, 1, n, stream) != n) return end;
        if (const void* lf = memrchr(block, '\n', n))
            return from + (static_cast<const char*>(lf) - block) + 1;
        stop = from;
    }
    return std::min(begin, end);
}

}  // namespace

string_view FolderScan::window(size_t wanted) {
    int64_t left = end_ - reader_.position();
    return head(reader_.peek(wanted), left > 0 ? static_cast<size_t>(left) : 0);
}

void FolderScan::finishAt(int64_t offset) {
    reader_.seek(offset);
    reader_.finish();
}

bool FolderScan::atFromLine() {
    if (!window(kFrom.size()).starts_with(kFrom)) return false;
    string_view line = head(window(kFromLineLimit), kFromLineLimit);
    size_t lf = line.find('\n');
    return isFromLine(lf == string_view::npos ? line : head(line, lf + 1));
}

bool FolderScan::searchFromLine() {
    for (;;) {
        string_view view = window(kFrom.size() + 1);
        if (view.size() <= kFrom.size()) {
            reader_.skip(view.size());
            return false;
        }
        size_t lf = findFromStart(view);
        // The last bytes may be the first ones of the next From_ line.
        reader_.skip(lf == string_view::npos ? view.size() - kFrom.size() : lf + 1);
        if (lf != string_view::npos && atFromLine()) return true;
    }
}

bool FolderScan::findMessage() {
    if (!found_) found_ = (atStart_ && atFromLine()) || searchFromLine();
    atStart_ = false;
    return found_;
}

/// Goes from the From_ line to the empty line; false when the next message or the end came first.
bool FolderScan::skipHeader() {
    for (;;) {
        string_view view = window(kFrom.size() + 1);
        size_t lf = findHeaderBreak(view);
        bool isLast = view.size() <= kFrom.size();
        size_t taken = lf != string_view::npos ? lf + 1
                       : isLast                ? view.size()
                                               : view.size() - kFrom.size();
        digest_.add(head(view, taken));
        reader_.skip(taken);
        if (lf == string_view::npos) {
            if (isLast) return false;
        } else if (view[lf + 1] != 'F') {
            return true;
        } else if (atFromLine()) {
            found_ = true;
            return false;
        }
    }
}

MessageSpan FolderScan::measure() {
    MessageSpan span;
    span.offset = position();
    found_ = false;
    bool hasBody = skipHeader();
    span.headerSize = position() - span.offset;
    if (hasBody) found_ = searchFromLine();
    span.size = position() - span.offset;
    digest_.add(span.offset);
    digest_.add(span.size);
    return span;
}

}  // namespace attalven

int fldrGetMsgSizeInfo(int* offset, int* hdrSize, int* size, FILE* fp) {
    using namespace attalven;
    if (!offset || !hdrSize || !size || !fp) return 0;
    int64_t begin = ftello(fp);
    FolderScan scan(fp);
    bool found = scan.findMessage();
    MessageSpan span;
    if (found) span = scan.measure();
    int64_t end = scan.position();
    bool more = found && scan.findMessage();
    scan.finishAt(end);
    if (!more && begin >= 0) {
        // The next call shall find nothing: not even this message, when its From_ line is the last.
        int64_t last = lastLineStart(fp, begin, end);
        fseeko(fp, found && last == span.offset ? end : last, SEEK_SET);
    }
    if (!found) return 0;
    *offset = clampInt(span.offset);
    *hdrSize = clampInt(span.headerSize);
    *size = clampInt(span.size);
    return 1;
}
