#include "summary_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>

namespace host {

namespace {

constexpr char kMagic[16] = "webmail-list-3";

std::string_view bytesOf(const void* p, size_t size) {
    return {static_cast<const char*>(p), size};
}

}  // namespace

SummaryHead SummaryHead::of(const struct stat& folder) {
    SummaryHead h = {};
    memcpy(h.magic, kMagic, sizeof kMagic);
    h.device = static_cast<int64_t>(folder.st_dev);
    h.inode = static_cast<int64_t>(folder.st_ino);
    h.size = folder.st_size;
    h.modified = folder.st_mtim.tv_sec;
    h.modifiedNs = folder.st_mtim.tv_nsec;
    h.changed = folder.st_ctim.tv_sec;
    h.changedNs = folder.st_ctim.tv_nsec;
    return h;
}

bool SummaryHead::isOf(const struct stat& folder) const {
    SummaryHead other = of(folder);
    return memcmp(this, &other, offsetof(SummaryHead, all)) == 0;
}

bool SummaryHead::isSound() const {
    return memcmp(magic, kMagic, sizeof kMagic) == 0 &&
           digestOf(bytesOf(this, offsetof(SummaryHead, head))) == head;
}

void SummaryHead::seal() {
    head = digestOf(bytesOf(this, offsetof(SummaryHead, head)));
}

std::optional<SummaryHead> readSummaryHead(const std::string& path) {
    SummaryHead head;
    int fd = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    bool whole = read(fd, &head, sizeof head) == static_cast<ssize_t>(sizeof head);
    close(fd);
    return whole && head.isSound() ? std::optional(head) : std::nullopt;
}

}  // namespace host
