// The index of a folder, built in one pass: the header of each message is read where the scan has
// it in memory. A header too long for that is read again through the stream. Survives any content;
// what cannot be indexed stays untouched in the file.

#include "fldr_index.h"

#include <ctime>

#include "fldr_scan.h"
#include "mail/base/bounded_text.h"
#include "mail/parse/header_lines.h"
#include "mail/parse/header_summary.h"

namespace attalven {

namespace {

/// Most headers fit; more is looked at when one does not.
constexpr size_t kFirstLook = 1;

void summarize(FolderScan& scan, FILE* stream, HeaderSummary& summary) {
    if (readHeaderSummary(scan.window(kFirstLook), false, summary) == HeaderResult::kDone) return;
    string_view window = scan.window(LineReader::kBlock);
    bool isWholeFile = window.size() < LineReader::kBlock;
    if (readHeaderSummary(window, isWholeFile, summary) == HeaderResult::kDone) return;
    off_t readAhead = ftello(stream);
    if (fseeko(stream, scan.position(), SEEK_SET) == 0) {
        LineReader reader(stream, kHeaderLineLimit);
        readHeaderSummary(reader, summary);
    }
    fseeko(stream, readAhead, SEEK_SET);
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

/// Makes the entry of the message that `scan` stands at; NULL when memory is out.
FldrMsg* makeEntry(OpenFolder& folder, FolderScan& scan, HeaderSummary& summary) {
    FldrMsg* entry = folder.newEntry();
    if (!entry) return nullptr;
    summarize(scan, folder.record.fp, summary);
    if (fill(*entry, summary)) return entry;
    folder.dropEntry(entry);
    summary = HeaderSummary();  // a text that failed once takes nothing more
    return nullptr;
}

}  // namespace

void buildIndex(OpenFolder& folder) {
    FILE* stream = folder.record.fp;
    folder.indexed = stateOf(fileno(stream));
    folder.timesAreCoarse = isJustNow(folder.indexed.changed);
    rewind(stream);
    FolderScan scan(stream);
    HeaderSummary summary;
    folder.fingerprint = scan.fingerprint();
    while (folder.record.msgCount < FLDR_MAX_MSGS && scan.findMessage()) {
        if (folder.firstMessage < 0) folder.firstMessage = folder.end = scan.position();
        FldrMsg* entry = makeEntry(folder, scan, summary);
        MessageSpan span = scan.measure();
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
