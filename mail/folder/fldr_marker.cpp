// The marker of an open folder. A marker is ours only if it is the very file that we made. Whoever
// removes a stale marker, or works on its own, holds a lock on it: of two openers only one removes
// it, and neither removes the other's new one.

#include "fldr_marker.h"

#include <sys/file.h>

#include <cerrno>
#include <ctime>

namespace attalven {

namespace {

constexpr int64_t kBusySeconds = 180;

MarkerAge ageOf(const FileState& state) {
    if (!state.exists()) return MarkerAge::kAbsent;
    int64_t age = time(nullptr) - int64_t{state.modified.tv_sec};
    return age > kBusySeconds ? MarkerAge::kStale : MarkerAge::kYoung;
}

}  // namespace

MarkerAge markerAge(const char* marker) {
    return ageOf(stateOf(marker));
}

Descriptor openMarker(const char* marker) {
    return Descriptor(open(marker, O_RDWR | kSideFileFlags));
}

bool holdMarker(const char* marker, int fd) {
    FileState state = stateOf(fd);
    return state.isRegular && flock(fd, LOCK_EX | LOCK_NB) == 0 &&
           state.isSameFile(stateOf(marker));
}

bool clearMarker(const char* marker) {
    FileState seen = stateOf(marker);
    MarkerAge age = ageOf(seen);
    if (age != MarkerAge::kStale) return age == MarkerAge::kAbsent;
    Descriptor file;
    if (seen.isRegular) {
        file = Descriptor(open(marker, O_RDONLY | kSideFileFlags));
        if (file && flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
        if (file && (!stateOf(marker).isSameFile(stateOf(file.get())) ||
                     ageOf(stateOf(file.get())) != MarkerAge::kStale))
            return false;
    }
    unlink(marker);
    return true;
}

Descriptor makeMarker(const char* marker) {
    return Descriptor(open(marker, O_RDWR | O_CREAT | O_EXCL | kSideFileFlags, 0600));
}

}  // namespace attalven
