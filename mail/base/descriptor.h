#ifndef ATTALVEN_MAIL_BASE_DESCRIPTOR_H
#define ATTALVEN_MAIL_BASE_DESCRIPTOR_H

// An owned file descriptor and what several writers do with one.

#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <utility>

#include "ascii.h"

namespace attalven {

class Descriptor {
  public:
    explicit Descriptor(int fd = -1) : fd_(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Descriptor() { close(); }

    explicit operator bool() const { return fd_ >= 0; }
    int get() const { return fd_; }
    /// Closes at once; false when the file system reports a late write error.
    bool close() { return fd_ < 0 || ::close(std::exchange(fd_, -1)) == 0; }

  private:
    int fd_;
};

/// Writes all bytes at the descriptor's position, over short writes and interruptions; false on an
/// error.
bool writeAll(int fd, string_view bytes);

/// Gives the open file the owner, group and mode that `like` tells; false when the owner or group
/// is not ours to give.
bool takeOwnerAndMode(int fd, const struct stat& like);

}  // namespace attalven

#endif
