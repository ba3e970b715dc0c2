// Closing of folders. The new content is made in the marker, under the locks that delivery agents
// honour and after the folder was found to be what was indexed; then it takes the folder's place.
// Until then every error leaves the folder as it was. Nothing is lost that the index does not show:
// messages without an entry, mail that came since, a message that is still coming. Survives a full
// disk, size limits, signals, kill -9 at any point, and folders that others change meanwhile.

#include <sys/random.h>

#include <ctime>
#include <span>

#include "fldr_content.h"
#include "fldr_in_place.h"
#include "fldr_lock.h"
#include "fldr_marker.h"
#include "mail/base/file.h"
#include "mail/base/hold_signals.h"
#include "open_folder.h"
#include "support/host.h"

namespace attalven {

namespace {

constexpr int kGrowthRounds = 10;

MessageSpan spanOf(const FldrMsg& entry) {
    return {entry.offset, entry.hdrSize, entry.size};
}

/// The index as the rewrite uses it; a record of the caller's own making is taken at its word and
/// checked against the file.
struct Plan {
    const Fldr& record;
    const OpenFolder* known;
    int64_t begin = -1, end = 0;

    Plan(const Fldr& f, const OpenFolder* k) : record(f), known(k) {
        if (known) {
            begin = known->firstMessage;
            end = known->end;
        } else if (!entries().empty() && entries().front() && entries().back()) {
            begin = entries().front()->offset;
            end = spanOf(*entries().back()).end();
        }
    }
    std::span<FldrMsg* const> entries() const {
        return {record.msgs, static_cast<size_t>(std::clamp(record.msgCount, 0, FLDR_MAX_MSGS))};
    }
    /// Whether the entries lie in order and apart from each other.
    bool isSound() const {
        int64_t at = begin;
        for (const FldrMsg* entry : entries()) {
            if (!entry || entry->offset < at || entry->hdrSize < 0 || entry->size <= 0 ||
                entry->hdrSize > entry->size)
                return false;
            at = spanOf(*entry).end();
        }
        return begin >= 0 && at <= end && !entries().empty();
    }
};

/// Whether a new scan finds the messages that the index shows.
bool isStillIndexed(const Plan& plan, int fd) {
    int copy = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    OwnedFile stream(copy < 0 ? nullptr : fdopen(copy, "r"));
    if (!stream) {
        if (copy >= 0) close(copy);
        return false;
    }
    rewind(stream.get());
    FolderScan scan(stream.get(), plan.end);
    size_t n = 0;
    while (scan.findMessage()) {
        MessageSpan found = scan.measure();
        if (found.offset < plan.begin) return false;
        if (n < plan.entries().size() && spanOf(*plan.entries()[n]) == found) n++;
    }
    return n == plan.entries().size() &&
           (!plan.known || plan.known->fingerprint == scan.fingerprint());
}

/// Whether the locked file is the one that was indexed, with the same messages at least.
bool isStillTheSame(const Plan& plan, const FolderLock& lock) {
    FileState now = stateOf(lock.fd());
    FileState indexed =
        plan.known ? plan.known->indexed : stateOf(plan.record.fp ? fileno(plan.record.fp) : -1);
    if (!now.isSameFile(indexed) || now.size < plan.end) return false;
    bool isUnchanged = plan.known && !plan.known->timesAreCoarse && now.isUnchangedFrom(indexed);
    return isUnchanged || isStillIndexed(plan, lock.fd());
}

/// A rewrite in work: the folder locked, the marker held and empty.
class Rewrite {
  public:
    Rewrite(const Plan& plan, FolderLock& lock, int marker, Blocks& blocks, Digest* digest)
        : plan_(plan),
          lock_(lock),
          marker_(marker),
          blocks_(blocks),
          writer_(lock.fd(), marker, blocks, digest) {}

    /// Brings the new content to the disk, with all that the folder holds by then.
    bool writeContent();
    /// Gives the marker the folder's name.
    bool replaceFile();
    InPlaceCopy::Result replaceContent(const Digest& digest, uint64_t key);

  private:
    int64_t folderSize() const { return stateOf(lock_.fd()).size; }
    bool writeEntries();
    bool writeGrowth();
    std::optional<bool> isStillComing() const;
    void inheritOwner();
    void moveLateMail();

    const Plan& plan_;
    FolderLock& lock_;
    int marker_;
    Blocks& blocks_;
    ContentWriter writer_;
    int64_t copied_ = 0;  // how far the folder has been copied
};

/// Whether the last message goes on in what was written since: the folder was indexed in the middle
/// of a delivery. It is then neither dropped nor cut open. Nothing when that cannot be read.
std::optional<bool> Rewrite::isStillComing() const {
    int64_t size = folderSize();
    if (size == plan_.end) return false;
    char before = 0;
    if (size < plan_.end || !readAt(lock_.fd(), plan_.end - 1, &before, 1)) return std::nullopt;
    if (before != '\n') return true;
    std::optional<bool> isMail = beginsMessage({lock_.fd(), plan_.end, size - plan_.end}, blocks_);
    if (isMail) isMail = !*isMail;
    return isMail;
}

bool Rewrite::writeEntries() {
    std::optional<bool> isComing = isStillComing();
    if (!isComing) return false;
    copied_ = plan_.begin;
    for (const FldrMsg* entry : plan_.entries()) {
        MessageSpan message = spanOf(*entry);
        bool isLast = *isComing && message.end() == plan_.end;
        if (!writer_.copy(copied_, message.offset - copied_)) return false;
        copied_ = message.end();
        char status[] = "Status:   \n";
        if (entry->status & FLDR_READ) status[8] = 'R';
        if (entry->status & FLDR_OLD) status[9] = 'O';
        if (isLast && message.headerSize == message.size) {
            if (!writer_.copy(message.offset, message.size)) return false;
        } else if (isLast || !(entry->status & FLDR_DELETED)) {
            if (!writer_.copyMessage(message, status)) return false;
        }
    }
    return true;
}

bool Rewrite::writeGrowth() {
    int64_t size = folderSize(), from = std::exchange(copied_, size);
    return size >= from && writer_.copy(from, size - from) && writer_.flush();
}

bool Rewrite::writeContent() {
    if (!writeEntries()) return false;
    for (int round = 0; round < kGrowthRounds; round++) {
        if (!writeGrowth() || fsync(marker_) != 0) return false;
        if (folderSize() == copied_) return true;
    }
    return false;
}

/// Mail programs refuse folders of foreign owners, and others may not read what they could not read
/// before.
void Rewrite::inheritOwner() {
    struct stat old, own;
    if (fstat(lock_.fd(), &old) != 0 || takeOwnerAndMode(marker_, old)) return;
    if (fchown(marker_, static_cast<uid_t>(-1), old.st_gid) != 0 || fstat(marker_, &own) != 0 ||
        own.st_gid != old.st_gid)
        old.st_mode &= ~static_cast<mode_t>(S_IRWXG);
    if (fchmod(marker_, old.st_mode & 0777) != 0) return;
}

/// A program that had opened the old file before, and waited for its locks, has written to a file
/// without a name.
void Rewrite::moveLateMail() {
    do {
        if (!lock_.letWaitersThrough()) return;
    } while (folderSize() > copied_ && writeGrowth() && fsync(marker_) == 0);
}

bool Rewrite::replaceFile() {
    inheritOwner();
    lockForWriting(marker_);
    if (rename(SidePath(plan_.record.path, kMarkerEnding), plan_.record.path) != 0) return false;
    // From now on others append to the new file, too.
    fcntl(marker_, F_SETFL, O_APPEND);
    syncDirectory(plan_.record.path);
    moveLateMail();
    return true;
}

InPlaceCopy::Result Rewrite::replaceContent(const Digest& digest, uint64_t key) {
    InPlaceCopy copy = {plan_.record.path, lock_.fd(), marker_, blocks_, {}};
    copy.journal.oldSize = copied_;
    copy.journal.newSize = writer_.size();
    copy.journal.key = key;
    copy.journal.contentDigest = digest.value();
    return copy.run();
}

/// Rewrites the folder through its marker; false when the marker must stay, for it has become the
/// folder or is what a repair needs.
bool rewrite(const Plan& plan, int marker) {
    Blocks blocks;
    FolderLock lock(plan.record.path);
    if (!blocks || !plan.isSound() || !lock.acquire() || !isStillTheSame(plan, lock)) return true;
    bool inPlace = admOptions.passwdFlag == 1;
    if (inPlace && !lock.canWrite()) return true;
    uint64_t key = 0;
    if (getrandom(&key, sizeof key, GRND_NONBLOCK) < 0) key = static_cast<uint64_t>(time(nullptr));
    Digest digest(key);
    Rewrite work(plan, lock, marker, blocks, inPlace ? &digest : nullptr);
    if (!work.writeContent()) return true;
    if (!inPlace) return !work.replaceFile();
    return work.replaceContent(digest, key) != InPlaceCopy::Result::kUnfinished;
}

/// The marker that this opening made; for a record that fldrOpen() did not make, any. A missing one
/// is made again.
Descriptor takeMarker(const SidePath& path, OpenFolder* known) {
    Descriptor marker = makeMarker(path);
    if (!marker && known && known->ownsStream)
        std::swap(marker, known->marker);
    else if (!marker)
        marker = openMarker(path);
    if (!holdMarker(path, marker.get())) marker.close();
    return marker;
}

void rewriteThroughMarker(const Fldr& f, OpenFolder* known) {
    HoldSignals signals;
    SidePath path(f.path, kMarkerEnding);
    Descriptor marker = takeMarker(path, known);
    if (!marker) return;
    futimens(marker.get(), nullptr);
    if (ftruncate(marker.get(), 0) != 0 || rewrite(Plan(f, known), marker.get()))
        unlinkSame(path, marker.get());
}

/// The same marker, where nothing is to be rewritten.
void dropMarker(const Fldr& f, const OpenFolder* known) {
    SidePath path(f.path, kMarkerEnding);
    if (known && known->ownsStream)
        unlinkSame(path, known->marker.get());
    else
        unlink(path);
}

}  // namespace

}  // namespace attalven

void fldrClose(Fldr* f) {
    using namespace attalven;
    if (!f) return;
    bool isWanted = (f->status & FLDR_DELETED) || fldrStatus() == 1;
    if (isWanted) fldrStatusReset();
    OpenFolder* known = OpenFolder::of(f);
    // With a journal, which fldrOpen() would have dealt with, the marker is not to be touched.
    if (f->path[0] && isAbsent(SidePath(viewOf(f->path), kJournalEnding))) {
        if (isWanted)
            rewriteThroughMarker(*f, known);
        else
            dropMarker(*f, known);
    }
    fldrFree(f);
}
