// The index of a folder, built in one pass: the header of each message is read where the scan has
// it in memory. A header too long for that is read again through the stream. Survives any content;
// what cannot be indexed stays untouched in the file, and headers that run on behind their messages
// have a budget: one empty line may end those of 30,000.

#include "fldr_index.h"

#include <ctime>

#include "fldr_scan.h"
#include "mail/base/bounded_text.h"
#include "mail/parse/header_lines.h"
#include "mail/parse/header_summary.h"

namespace attalven {

namespace {

/// Reads the headers of the messages that the scan stands at, one after another.
class Headers {
  public:
    Headers(FolderScan& scan, FILE* stream) : scan_(scan), stream_(stream) {}

    const HeaderSummary& read() {
        if (budget_ < 0)
            readWithin();
        else
            readWhole();
        return summary_;
    }
    /// Takes what the last header block read behind its message, which had `size` bytes.
    void charge(int64_t size) { budget_ -= std::max(summary_.blockSize - size, int64_t{0}); }
    /// A text that failed once takes nothing more.
    void reset() { summary_ = HeaderSummary(); }

  private:
    /// Most headers fit; more is looked at when one does not.
    static constexpr size_t kFirstLook = 1, kShortLook = 8 << 10;

    void readWhole();
    /// The header as far as it lies in its message and in memory, and the next From_ line, which
    /// shows that the last header is complete.
    void readWithin() {
        string_view window = scan_.window(kShortLook);
        size_t next = window.find("\nFrom ");
        if (next != string_view::npos) window = head(window, window.find('\n', next + 1));
        readHeaderSummary(window, true, summary_);
    }

    FolderScan& scan_;
    FILE* stream_;
    HeaderSummary summary_;
    int64_t budget_ = 32 << 20;  // bytes behind messages
};

void Headers::readWhole() {
    if (readHeaderSummary(scan_.window(kFirstLook), false, summary_) == HeaderResult::kDone) return;
    string_view window = scan_.window(LineReader::kBlock);
    bool isWholeFile = window.size() < LineReader::kBlock;
    if (readHeaderSummary(window, isWholeFile, summary_) == HeaderResult::kDone) return;
    off_t readAhead = ftello(stream_);
    if (fseeko(stream_, scan_.position(), SEEK_SET) == 0) {
        LineReader reader(stream_, kHeaderLineLimit);
        readHeaderSummary(reader, summary_);
    }
    fseeko(stream_, readAhead, SEEK_SET);
}

/// The values of a message list; false when memory was out for one of them.
bool fill(FldrMsg& entry, const HeaderSummary& summary) {
    if (summary.failed()) return false;
    entry.status = summary.status;
    entry.priority = summary.priority;
    entry.date = summary.date;
    cutCopy(entry.msgId, summary.messageId.view());
    cutCopy(entry.from, summary.from.view());
    cutCopy(entry.subject, summary.subject.view());
    return true;
}

/// Time stamps move in steps of the kernel's clock tick (10 ms at most).
bool isJustNow(const timespec& t) {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    int64_t age = (now.tv_sec - t.tv_sec) * INT64_C(1000000000) + now.tv_nsec - t.tv_nsec;
    return age < 20'000'000;
}

/// Makes the entry of the message whose header is to be read; NULL when memory is out.
FldrMsg* makeEntry(OpenFolder& folder, Headers& headers) {
    FldrMsg* entry = folder.newEntry();
    if (!entry) return nullptr;
    if (fill(*entry, headers.read())) return entry;
    folder.dropEntry(entry);
    headers.reset();
    return nullptr;
}

}  // namespace

void buildIndex(OpenFolder& folder) {
    FILE* stream = folder.record.fp;
    folder.indexed = stateOf(fileno(stream));
    folder.timesAreCoarse = isJustNow(folder.indexed.changed);
    rewind(stream);
    FolderScan scan(stream);
    Headers headers(scan, stream);
    folder.fingerprint = scan.fingerprint();
    while (folder.record.msgCount < FLDR_MAX_MSGS && scan.findMessage()) {
        if (folder.firstMessage < 0) folder.firstMessage = folder.end = scan.position();
        FldrMsg* entry = makeEntry(folder, headers);
        MessageSpan span = scan.measure();
        headers.charge(span.size);
        if (span.end() > INT32_MAX) {
            if (entry) folder.dropEntry(entry);
            break;
        }
        folder.end = span.end();
        folder.fingerprint = scan.fingerprint();
        if (!entry) continue;
        entry->offset = static_cast<int>(span.offset);
        entry->hdrSize = static_cast<int>(span.headerSize);
        entry->size = static_cast<int>(span.size);
        folder.addEntry(entry);
    }
}

}  // namespace attalven
