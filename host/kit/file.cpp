#include "file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace host {

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
    auto write = [&](FILE* out) { fwrite(content.data(), 1, content.size(), out); };
    return replaceFile(path, write, synced);
}

bool replaceFile(const std::string& path, const std::function<void(FILE*)>& write, bool synced) {
    std::string fresh = path + ".XXXXXX";
    int fd = mkostemp(fresh.data(), O_CLOEXEC);
    if (fd < 0) return false;
    FILE* out = fdopen(fd, "w");
    if (out) write(out);
    bool good = out && fflush(out) == 0 && !ferror(out) && (!synced || fsync(fd) == 0);
    good = (out ? fclose(out) : close(fd)) == 0 && good && rename(fresh.c_str(), path.c_str()) == 0;
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
