// Opening of folders, and the accessors of the index. An entry number from outside is checked in
// one place; a record that a caller made himself may lack entries.

#include <cerrno>

#include "fldr_in_place.h"
#include "fldr_index.h"
#include "fldr_lock.h"
#include "fldr_marker.h"
#include "mail/base/file.h"

namespace attalven {

namespace {

int msgStatus = 0;

FldrMsg* entryOf(int n, Fldr* f) {
    return fldrChkMsgBoundary(n, f) ? f->msgs[n - 1] : nullptr;
}

int fieldOf(int n, Fldr* f, int FldrMsg::*field) {
    FldrMsg* entry = entryOf(n, f);
    return entry ? entry->*field : 0;
}

FldrMsg* mark(int n, Fldr* f, unsigned bit) {
    FldrMsg* entry = entryOf(n, f);
    if (!entry) return nullptr;
    entry->status |= bit;
    f->status |= bit;
    return entry;
}

/// How many entries carry none of the bits in `without` and, if `with` is not 0, one of those.
int countEntries(Fldr* f, unsigned without, unsigned with) {
    int count = 0;
    for (int n = 1; n <= fldrMsgMax(f); n++)
        if (FldrMsg* entry = entryOf(n, f))
            count += !(entry->status & without) && (!with || (entry->status & with));
    return count;
}

/// Removes what a process that has died left beside the folder; false when the folder is busy. A
/// lock file of a dead process would hold up deliveries.
bool clearPath(string_view path) {
    SidePath marker(path, kMarkerEnding);
    if (markerAge(marker) == MarkerAge::kStale ||
        stateOf(SidePath(path, kDotlockEnding)).exists()) {
        FolderLock lock(path);
        if (lock.tryAcquire()) Journal::removeFresh(path);
    }
    return clearMarker(marker);
}

}  // namespace

}  // namespace attalven

using namespace attalven;

Fldr* fldrOpen(const char* path) {
    string_view name = viewOf(path);
    if (name.empty() || name.size() > kFolderPathMax) return nullptr;
    if (!finishRewrite(name) || !clearPath(name)) return nullptr;
    OwnedFile stream = openRegular(path);
    if (!stream || stateOf(fileno(stream.get())).size <= 0) return nullptr;
    // A directory that takes no marker shows its folders all the same; they are not rewritten.
    Descriptor marker = makeMarker(SidePath(name, kMarkerEnding));
    if (!marker && errno == EEXIST) return nullptr;
    OpenFolder* folder = OpenFolder::create();
    if (!folder) return nullptr;
    folder->record.fp = stream.release();
    folder->ownsStream = true;
    folder->marker = std::move(marker);
    cutCopy(folder->record.path, name);
    buildIndex(*folder);
    return &folder->record;
}

Fldr* fldrProcessing(FILE* fp) {
    OpenFolder* folder = fp ? OpenFolder::create() : nullptr;
    if (!folder) return nullptr;
    folder->record.fp = fp;
    buildIndex(*folder);
    return &folder->record;
}

int fldrMsgMax(Fldr* f) {
    return f ? f->msgCount : 0;
}

int fldrChkMsgBoundary(int n, Fldr* f) {
    return n >= 1 && n <= std::min(fldrMsgMax(f), FLDR_MAX_MSGS);
}

int fldrIsOpen(Fldr* f) {
    return f != nullptr;
}

int fldrMsgNum(int n, Fldr* f) {
    return fieldOf(n, f, &FldrMsg::num);
}

int fldrMsgEntryPos(int n, Fldr* f) {
    return fieldOf(n, f, &FldrMsg::offset);
}

int fldrMsgSize(int n, Fldr* f) {
    return fieldOf(n, f, &FldrMsg::size);
}

int fldrMsgHdrSize(int n, Fldr* f) {
    return fieldOf(n, f, &FldrMsg::hdrSize);
}

unsigned int fldrMsgGetStatus(int n, Fldr* f) {
    FldrMsg* entry = entryOf(n, f);
    return entry ? entry->status : 0;
}

unsigned int fldrMsgIsRead(int n, Fldr* f) {
    return fldrMsgGetStatus(n, f) & FLDR_READ;
}

unsigned int fldrMsgIsOld(int n, Fldr* f) {
    return fldrMsgGetStatus(n, f) & FLDR_OLD;
}

unsigned int fldrMsgIsDelete(int n, Fldr* f) {
    return fldrMsgGetStatus(n, f) & FLDR_DELETED;
}

FldrMsg* fldrMsgSetRead(int n, Fldr* f) {
    return mark(n, f, FLDR_READ);
}

FldrMsg* fldrMsgSetOld(int n, Fldr* f) {
    return mark(n, f, FLDR_OLD);
}

FldrMsg* fldrMsgDelete(int n, Fldr* f) {
    return mark(n, f, FLDR_DELETED);
}

void fldrMsgAllReset(Fldr* f) {
    for (int n = 1; n <= fldrMsgMax(f); n++)
        if (FldrMsg* entry = entryOf(n, f)) entry->status &= ~FLDR_DELETED;
}

int fldrMsgNewNum(Fldr* f) {
    return countEntries(f, FLDR_DELETED | FLDR_READ | FLDR_OLD, 0);
}

int fldrMsgReadNum(Fldr* f) {
    return countEntries(f, FLDR_DELETED, FLDR_READ | FLDR_OLD);
}

int fldrSize(Fldr* f) {
    int64_t sum = 0;
    for (int n = 1; n <= fldrMsgMax(f); n++) sum += fldrMsgSize(n, f);
    return clampInt(sum);
}

int fldrStatus() {
    return msgStatus;
}

void fldrStatusSet(int v) {
    msgStatus = v;
}

void fldrStatusReset() {
    msgStatus = 0;
}
