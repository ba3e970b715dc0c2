#include "mailwrite_files.h"

#include <fcntl.h>
#include <sodium.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <filesystem>

#include "host_texts.h"
#include "kit/file.h"
#include "kit/text.h"
#include "support/host.h"

namespace host {

namespace {

namespace fs = std::filesystem;

constexpr size_t kNameMax = 200, kIdBytes = 16;
constexpr time_t kKept = 24 * 3600L;
constexpr int kNumberMax = 99;

[[noreturn]] void noRoom() {
    throw PageError(507, kTextStorageFull);
}

bool isId(const std::string& id) {
    return id.size() == 2 * kIdBytes &&
           id.find_first_not_of("0123456789abcdef") == std::string::npos;
}

bool isKey(const std::string& key) {
    return key.size() == 3 && std::string("aif").find(key[0]) != std::string::npos &&
           key.find_first_not_of("0123456789", 1) == std::string::npos;
}

void makeFolder(const std::string& path) {
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) noRoom();
}

}  // namespace

std::string fileName(const std::string& given, size_t most) {
    std::string name = given.substr(given.rfind('/') + 1);
    std::erase_if(name, [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; });
    size_t dot = name.rfind('.');
    std::string ending =
        dot != std::string::npos && name.size() - dot <= 12 ? name.substr(dot) : "";
    name.resize(name.size() - ending.size());
    name = std::string(firstBytes(name, most - ending.size())) + ending;
    return name.empty() || name == "." || name == ".." ? "file" : name;
}

File temporaryFile() {
    File file(tmpfile(), fclose);
    if (!file) noRoom();
    return file;
}

void checkWritten(FILE* file) {
    if (fflush(file) != 0 || ferror(file)) noRoom();
}

std::string uploadFolder(const User& user) {
    std::string folder = user.home() + "/upload";
    makeFolder(folder);
    std::error_code error;
    time_t now = time(nullptr);
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        struct stat st;
        if (lstat(entry.path().c_str(), &st) == 0 && st.st_mtime < now - kKept)
            fs::remove_all(entry.path(), error);
    }
    return folder;
}

FormFolder::FormFolder(const User& user, const std::string& id) : lock_(-1) {
    if (!isId(id)) throw PageError(400, kTextBadRequest);
    path_ = uploadFolder(user) + "/" + id;
    makeFolder(path_);
    lock_ = open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (lock_ < 0) noRoom();
    while (flock(lock_, LOCK_EX) != 0 && errno == EINTR) {
    }
}

FormFolder::~FormFolder() {
    close(lock_);
}

std::string FormFolder::newId() {
    unsigned char bytes[kIdBytes];
    randombytes_buf(bytes, sizeof bytes);
    char hex[2 * kIdBytes + 1];
    return sodium_bin2hex(hex, sizeof hex, bytes, sizeof bytes);
}

std::vector<FormFile> FormFolder::files() const {
    std::vector<FormFile> list;
    std::error_code error;
    for (const fs::directory_entry& folder : fs::directory_iterator(path_, error)) {
        std::string key = folder.path().filename();
        if (!isKey(key)) continue;
        for (const fs::directory_entry& file : fs::directory_iterator(folder.path(), error))
            list.push_back({FileKind(key[0]), key, file.path().filename(), file.path(),
                            static_cast<long>(file.file_size(error))});
    }
    std::sort(list.begin(), list.end(),
              [](const FormFile& a, const FormFile& b) { return a.key < b.key; });
    return list;
}

std::string FormFolder::newFile(FileKind kind, const std::string& name) {
    for (int n = 1; n <= kNumberMax; n++) {
        char key[8];
        snprintf(key, sizeof key, "%c%02d", static_cast<char>(kind), n);
        std::string folder = path_ + "/" + key;
        if (mkdir(folder.c_str(), 0700) == 0) return folder + "/" + fileName(name, kNameMax);
        if (errno != EEXIST) noRoom();
    }
    throw PageError(413, kTextTooLarge);
}

void FormFolder::take(const Upload& upload, FileKind kind) {
    if (rename(upload.path.c_str(), newFile(kind, upload.name).c_str()) != 0) noRoom();
}

void FormFolder::remove(const std::string& key) {
    std::error_code error;
    if (isKey(key)) fs::remove_all(path_ + "/" + key, error);
}

void FormFolder::removeFiles() {
    for (const FormFile& file : files()) remove(file.key);
}

std::string FormFolder::note(const char* name) const {
    return readFile(path_ + "/" + name).value_or("");
}

void FormFolder::setNote(const char* name, const std::string& text) {
    if (!replaceFile(path_ + "/" + name, text)) noRoom();
}

bool isWithinLimits(const std::vector<FormFile>& files) {
    long bytes = 0, count = 0;
    for (const FormFile& file : files) {
        if (file.kind == FileKind::kForwarded) continue;
        bytes += file.size;
        count++;
    }
    return count <= std::max(admOptions.attachFileLimitNum, 0) &&
           bytes <= static_cast<long>(std::max(admOptions.attachFileLimitSize, 0)) << 20;
}

}  // namespace host
