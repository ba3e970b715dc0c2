#ifndef ATTALVEN_HOST_KIT_FILE_H
#define ATTALVEN_HOST_KIT_FILE_H

// Small files of the host's own: read and replaced as a whole.

#include <cstdio>
#include <functional>
#include <optional>
#include <string>

namespace host {

/// All of a regular file (links are not followed); nothing when it does not open, or is longer than
/// `most` bytes.
std::optional<std::string> readFile(const std::string& path, size_t most = 1 << 20);

/// Replaces the file at once: a new one (mode 0600) takes its name. False when that fails; the old
/// one stays then. `synced`: on disk before it counts.
bool replaceFile(const std::string& path, const std::string& content, bool synced = true);
bool replaceFile(const std::string& path, const std::function<void(FILE*)>& write,
                 bool synced = true);

/// Brings to the disk what was made or renamed in the folder of `path`.
void syncFolderOf(const std::string& path);

}  // namespace host

#endif
