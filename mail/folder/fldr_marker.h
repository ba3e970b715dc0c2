#ifndef ATTALVEN_MAIL_FOLDER_FLDR_MARKER_H
#define ATTALVEN_MAIL_FOLDER_FLDR_MARKER_H

// The marker beside an open folder, which keeps other openers out and becomes the new folder in a
// rewrite.

#include "side_files.h"

namespace attalven {

enum class MarkerAge { kAbsent, kYoung, kStale };
/// A marker keeps others out for 180 seconds after its last change.
MarkerAge markerAge(const char* marker);

/// An existing marker, opened for reading and writing.
Descriptor openMarker(const char* marker);
/// Locks the open marker, so that nobody removes it as stale. False when the path does not name it,
/// when it is no regular file or when another process has it locked.
bool holdMarker(const char* marker, int fd);

/// Deletes the marker if it is stale. False when it is young, or its owner is at work on it.
bool clearMarker(const char* marker);

/// Makes an empty marker that only its owner may read. Not open, and errno EEXIST, when there is
/// one.
Descriptor makeMarker(const char* marker);

}  // namespace attalven

#endif
