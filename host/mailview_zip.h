#ifndef ATTALVEN_HOST_MAILVIEW_ZIP_H
#define ATTALVEN_HOST_MAILVIEW_ZIP_H

// A zip archive (APPNOTE 6.3) of stored files with UTF-8 names, whose sizes and check sums are
// known beforehand, so that it can be written to a pipe and its own size is known as well.

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct ZipEntry {
    std::string name;  // UTF-8, without folders
    uint64_t size;     // bytes
    uint32_t crc;
};

/// Names that differ even where case does not count: "a.txt", "a (2).txt".
void makeNamesUnique(std::vector<ZipEntry>& entries);

class ZipLayout {
  public:
    /// Local time of all files. At most 65,535 entries.
    ZipLayout(std::vector<ZipEntry> entries, time_t time);

    /// Bytes of the archive. One of 4 GiB or more cannot be written in this format.
    uint64_t size() const;
    size_t count() const { return entries_.size(); }
    /// What stands before the content of file `i`, and behind the last one's.
    std::string fileHeader(size_t i) const;
    std::string directory() const;

  private:
    std::string common(const ZipEntry& entry) const;

    std::vector<ZipEntry> entries_;
    uint16_t date_ = 0, time_ = 0;
};

}  // namespace host

#endif
