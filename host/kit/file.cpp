#include "file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace host {

namespace {

bool writeAll(int fd, const std::string& content) {
    size_t done = 0;
    while (done < content.size()) {
        ssize_t n = write(fd, content.data() + done, content.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

}  // namespace

std::optional<std::string> readFile(const std::string& path, size_t most) {
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (fd < 0) return std::nullopt;
    struct stat st;
    std::optional<std::string> content;
    if (fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && static_cast<size_t>(st.st_size) <= most) {
        content.emplace(static_cast<size_t>(st.st_size), 0);
        size_t done = 0;
        for (ssize_t n; done < content->size() &&
                        (n = read(fd, content->data() + done, content->size() - done)) > 0;)
            done += static_cast<size_t>(n);
        content->resize(done);
    }
    close(fd);
    return content;
}

bool replaceFile(const std::string& path, const std::string& content, bool synced) {
    std::string fresh = path + ".XXXXXX";
    int fd = mkostemp(fresh.data(), O_CLOEXEC);
    if (fd < 0) return false;
    bool good = writeAll(fd, content) && (!synced || fsync(fd) == 0);
    good = close(fd) == 0 && good && rename(fresh.c_str(), path.c_str()) == 0;
    if (!good) unlink(fresh.c_str());
    if (good && synced) syncFolderOf(path);
    return good;
}

void syncFolderOf(const std::string& path) {
    std::string folder = path.substr(0, path.rfind('/') + 1);
    int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    fsync(fd);
    close(fd);
}

}  // namespace host
