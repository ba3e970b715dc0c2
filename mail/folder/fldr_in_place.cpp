// The copy of the marker over its folder, which may be killed or fail at any point, and its repair.
// What makes every state readable is that the folder keeps one size, the larger of the old and the
// new one, from before its first byte changes until all of them are right. So mail that a delivery
// agent appends to a torn folder begins exactly at that size, and behind the new content once the
// folder was cut:
//
//   extending   old content [zero bytes up to the new size] [new mail]        back to the old one
//   copying     any bytes up to the size of the copy, [new mail]              on to the new one
//               new content, [new mail]                                       done
//
// New mail is first added to the marker, and the journal with it; then the copy begins again. The
// repair is the same code as the copy.

#include "fldr_in_place.h"

#include <cerrno>

#include "fldr_content.h"
#include "fldr_lock.h"
#include "fldr_marker.h"
#include "mail/base/hold_signals.h"

namespace attalven {

namespace {

constexpr int kRounds = 10;

/// Whether the owner of a file beside the folder may write the folder anyway.
bool isTrusted(const FileState& file, const FileState& folder) {
    return file.owner == geteuid() || file.owner == 0 || file.owner == folder.owner;
}

/// Adds the range to the file of what could not be placed, for a human to look at.
bool keepAside(string_view folder, Range range, Blocks& blocks) {
    Descriptor kept(open(SidePath(folder, kKeptEnding), O_WRONLY | O_CREAT | kSideFileFlags, 0600));
    FileState state = stateOf(kept.get());
    return state.isRegular && copyRange(range, kept.get(), state.size, blocks) &&
           fsync(kept.get()) == 0;
}

std::optional<bool> isZero(Range range, Blocks& blocks) {
    Digest zeros, found;
    memset(blocks.second.get(), 0, Blocks::kSize);
    for (int64_t n = range.size; n > 0; n -= static_cast<int64_t>(Blocks::kSize))
        zeros.add(string_view(blocks.second.get(),
                              static_cast<size_t>(std::min<int64_t>(n, Blocks::kSize))));
    if (!digestRange(range, blocks, found)) return std::nullopt;
    return found.value() == zeros.value();
}

}  // namespace

int64_t InPlaceCopy::folderSize() const {
    return stateOf(folder).size;
}

bool InPlaceCopy::noteRest() {
    Digest digest(journal.key);
    int64_t rest = journal.oldSize - journal.newSize;
    if (!digestRange({folder, journal.newSize, rest}, blocks, digest)) return false;
    journal.restDigest = digest.value();
    return true;
}

/// Gets the disk space before anything is overwritten. The size changes in one step.
bool InPlaceCopy::extend() {
    int64_t more = journal.newSize - journal.oldSize;
    if (fallocate(folder, FALLOC_FL_KEEP_SIZE, journal.oldSize, more) != 0 && errno != EOPNOTSUPP)
        return false;
    return ftruncate(folder, journal.newSize) == 0;
}

std::optional<bool> InPlaceCopy::isExtended() {
    int64_t size = folderSize();
    if (size < journal.oldSize) return std::nullopt;
    if (size < journal.newSize) return false;
    return isZero({folder, journal.oldSize, journal.newSize - journal.oldSize}, blocks);
}

/// Nothing was overwritten yet. A journal that says otherwise could not be brought to the disk; it
/// must be obeyed.
InPlaceCopy::Result InPlaceCopy::giveUp() {
    Journal found;
    Journal::Read read = found.load(path);
    if (read == Journal::Read::kDone && found.phase == Journal::kExtending) {
        std::optional<bool> isLonger = isExtended();
        bool isBack = isLonger && (!*isLonger || (folderSize() == journal.newSize &&
                                                  ftruncate(folder, journal.oldSize) == 0));
        if (!isBack) return Result::kUnfinished;
    } else if (read != Journal::Read::kNone) {
        return Result::kUnfinished;
    }
    return Journal::remove(path) ? Result::kUntouched : Result::kUnfinished;
}

InPlaceCopy::Result InPlaceCopy::run() {
    if (!noteRest()) return Result::kUntouched;
    if (journal.newSize > journal.oldSize) {
        journal.phase = Journal::kExtending;
        if (!journal.save(path) || !extend()) return giveUp();
    }
    journal.phase = Journal::kCopying;
    return journal.save(path) ? finish(copyAndCut()) : giveUp();
}

InPlaceCopy::Result InPlaceCopy::resume() {
    if (journal.phase == Journal::kExtending) {
        std::optional<bool> isLonger = isExtended();
        if (!isLonger) return Result::kUnfinished;
        if (!*isLonger) return Journal::remove(path) ? Result::kUntouched : Result::kUnfinished;
        journal.phase = Journal::kCopying;
        if (!journal.save(path)) return Result::kUnfinished;
    }
    std::optional<bool> isDone = isComplete();
    if (!isDone) return Result::kUnfinished;
    if (*isDone) return finish(fsync(folder) == 0);
    int64_t size = folderSize();
    // Somebody has cut a torn folder. What is there may be all that is left of new mail.
    if (size < journal.copySize() && (size < 0 || !keepAside(path, {folder, 0, size}, blocks) ||
                                      ftruncate(folder, journal.copySize()) != 0))
        return Result::kUnfinished;
    return finish(copyAndCut());
}

InPlaceCopy::Result InPlaceCopy::finish(bool copied) {
    return copied && Journal::remove(path) ? Result::kDone : Result::kUnfinished;
}

/// Whether the folder holds the new content and was cut to it; what follows is new mail.
std::optional<bool> InPlaceCopy::isComplete() {
    int64_t size = folderSize();
    if (size < 0) return std::nullopt;
    if (size < journal.newSize) return false;
    std::optional<bool> isNew = isSameRange({marker, 0, journal.newSize}, folder, 0, blocks);
    if (!isNew || !*isNew || journal.newSize >= journal.oldSize || size < journal.oldSize)
        return isNew;
    Digest rest(journal.key);
    Range oldRest = {folder, journal.newSize, journal.oldSize - journal.newSize};
    if (!digestRange(oldRest, blocks, rest)) return std::nullopt;
    return rest.value() != journal.restDigest;
}

/// Adds what lies behind the copy to the new content.
bool InPlaceCopy::absorbNewMail() {
    int64_t from = journal.copySize(), to = folderSize();
    Range mail = {folder, from, to - from};
    std::optional<bool> isMail = beginsMessage(mail, blocks);
    if (!isMail || (!*isMail && !keepAside(path, {folder, 0, to}, blocks))) return false;
    if (!copyRange(mail, marker, journal.newSize, blocks) || fsync(marker) != 0) return false;
    Journal before = journal;
    journal.oldSize = to;
    journal.newSize += mail.size;
    Digest content(journal.key);
    if (digestRange({marker, 0, journal.newSize}, blocks, content)) {
        journal.contentDigest = content.value();
        if (noteRest() && journal.save(path)) return true;
    }
    journal = before;
    return false;
}

bool InPlaceCopy::copyAndCut() {
    int64_t size = 0;
    for (int round = 0; round < kRounds; round++) {
        if (folderSize() > journal.copySize() && !absorbNewMail()) return false;
        Range content = {marker, 0, journal.newSize};
        if (!copyRange(content, folder, 0, blocks)) return false;
        if (!isSameRange(content, folder, 0, blocks).value_or(false) || fsync(folder) != 0)
            continue;
        size = folderSize();
        // An agent that takes no lock may have written: nothing of it may be cut off.
        if (size == journal.copySize()) break;
    }
    if (size != journal.copySize()) return false;
    return size == journal.newSize ||
           (ftruncate(folder, journal.newSize) == 0 && fsync(folder) == 0);
}

namespace {

/// Under the lock. False when the folder must not be opened.
bool finishLocked(string_view path, int folder, int marker, Blocks& blocks) {
    Journal journal;
    Journal::Read read = journal.load(path);
    if (read == Journal::Read::kNone) return true;
    FileState state = stateOf(marker), folderState = stateOf(folder);
    if (read == Journal::Read::kForeign || read == Journal::Read::kFailed ||
        !folderState.exists() || (marker >= 0 && !state.exists()))
        return false;
    bool isWhole = false;
    if (read == Journal::Read::kDone && state.size >= journal.newSize &&
        isTrusted(state, folderState)) {
        Digest content(journal.key);
        if (!digestRange({marker, 0, journal.newSize}, blocks, content)) return false;
        isWhole = content.value() == journal.contentDigest;
    }
    if (!isWhole)  // not the marker of this journal: the copy had been finished
        return (state.size <= 0 || keepAside(path, {marker, 0, state.size}, blocks)) &&
               Journal::remove(path);
    InPlaceCopy copy = {path, folder, marker, blocks, journal};
    return copy.resume() != InPlaceCopy::Result::kUnfinished;
}

}  // namespace

bool finishRewrite(string_view path) {
    Journal journal;
    Journal::Read read = journal.load(path);
    if (read == Journal::Read::kNone) return true;
    SidePath markerPath(path, kMarkerEnding);
    // What a foreign journal says is not done; but its marker may be all that is left of mail.
    if (read == Journal::Read::kForeign) return isAbsent(markerPath);
    if (read == Journal::Read::kFailed || markerAge(markerPath) == MarkerAge::kYoung) return false;
    HoldSignals signals;
    Descriptor marker = openMarker(markerPath);
    if (marker ? !holdMarker(markerPath, marker.get()) : errno != ENOENT && errno != ELOOP)
        return false;
    Blocks blocks;
    FolderLock lock(path);
    if (!blocks || !lock.acquire() || !lock.canWrite() ||
        !finishLocked(path, lock.fd(), marker.get(), blocks))
        return false;
    // The lock goes first: while the marker is there, the next opening looks for what is left.
    lock.release();
    if (marker) unlinkSame(markerPath, marker.get());
    return true;
}

}  // namespace attalven
