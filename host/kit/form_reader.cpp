#include "form_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "host_texts.h"
#include "support/host.h"
#include "support/support.h"

namespace host {

namespace {

constexpr size_t kBlock = 64 * 1024;
constexpr size_t kHeadLineMax = 8 * 1024;

[[noreturn]] void malformed() {
    throw PageError(400, kTextBadRequest);
}
[[noreturn]] void tooLarge() {
    throw PageError(413, kTextTooLarge);
}

/// The value of `name="..."` in a Content-Disposition line; browsers write a quote in it as %22.
bool parameter(const std::string& line, const char* name, std::string& value) {
    std::string key = std::string("; ") + name + "=\"";
    const char* at = strCaseStr(line.c_str(), key.c_str());
    if (!at) return false;
    std::string_view rest = std::string_view(at).substr(key.size());
    value = rest.substr(0, rest.find('"'));
    for (size_t quote; (quote = value.find("%22")) != std::string::npos;)
        value.replace(quote, 3, "\"");
    return true;
}

}  // namespace

FormReader::FormReader(Request& request, const std::string& boundary, long length,
                       const std::string& uploadFolder)
    : request_(request), delimiter_("\r\n--" + boundary), folder_(uploadFolder), left_(length) {}

bool FormReader::fill() {
    size_t room = static_cast<size_t>(std::min<long>(left_, kBlock)), old = buffer_.size();
    if (!room) return false;
    buffer_.resize(old + room);
    size_t got = fread(buffer_.data() + old, 1, room, stdin);
    buffer_.resize(old + got);
    left_ -= static_cast<long>(got);
    return got > 0;
}

template <typename Take>
void FormReader::copyToDelimiter(Take take) {
    size_t at;
    while ((at = buffer_.find(delimiter_)) == std::string::npos) {
        // The end of the buffer may be the start of a delimiter.
        size_t sure = buffer_.size() - std::min(buffer_.size(), delimiter_.size());
        take(std::string_view(buffer_).substr(0, sure));
        buffer_.erase(0, sure);
        if (!fill()) malformed();
    }
    take(std::string_view(buffer_).substr(0, at));
    buffer_.erase(0, at + delimiter_.size());
}

std::string FormReader::readLine() {
    size_t end;
    while ((end = buffer_.find("\r\n")) == std::string::npos) {
        if (left_ == 0 && buffer_.starts_with("--"))
            return buffer_;  // the last line's end may lack
        if (buffer_.size() > kHeadLineMax || !fill()) malformed();
    }
    std::string line = buffer_.substr(0, end);
    buffer_.erase(0, end + 2);
    return line;
}

FormReader::PartHead FormReader::readHead() {
    PartHead head;
    for (int lines = 0;; lines++) {
        std::string line = readLine();
        if (line.empty()) return head;
        if (lines > 20) malformed();
        if (strNCaseCmp(line.c_str(), "Content-Disposition:", 20) == 0) {
            if (!parameter(line, "name", head.name)) malformed();
            head.isFile = parameter(line, "filename", head.fileName);
        } else if (strNCaseCmp(line.c_str(), "Content-Type:", 13) == 0) {
            head.type = line.substr(std::min(line.find_first_not_of(" \t", 13), line.size()));
        }
    }
}

void FormReader::readText(const PartHead& head) {
    std::string value;
    copyToDelimiter([&](std::string_view bytes) {
        textSize_ += static_cast<long>(bytes.size());
        if (textSize_ > kFormTextMax) tooLarge();
        value += bytes;
    });
    request_.fields_.push_back({head.name, value, ""});
}

/// A file beyond the limits is read to its end all the same: texts may follow it.
void FormReader::readFile(const PartHead& head) {
    auto most = static_cast<size_t>(std::max(admOptions.attachFileLimitNum, 0));
    long mostBytes = static_cast<long>(std::max(admOptions.attachFileLimitSize, 0)) << 20;
    bool chosen = !head.fileName.empty();
    bool passed = folder_.empty() || (chosen && request_.uploads_.size() >= most);
    if (passed) {
        request_.lacksFiles_ = request_.lacksFiles_ || (chosen && !folder_.empty());
        return copyToDelimiter([](std::string_view) {});
    }
    std::string path = folder_ + "/upload-XXXXXX";
    int fd = mkostemp(path.data(), O_CLOEXEC);  // mode 0600
    if (fd < 0) throw PageError(507, kTextStorageFull);
    request_.uploads_.push_back({head.name, head.fileName, head.type, path, 0});
    Upload& upload = request_.uploads_.back();
    bool good = true, fits = true;
    try {
        copyToDelimiter([&](std::string_view bytes) {
            upload.size += static_cast<long>(bytes.size());
            fits = fileSize_ + upload.size <= mostBytes;
            while (good && fits && !bytes.empty()) {
                ssize_t n = write(fd, bytes.data(), bytes.size());
                good = n > 0;
                if (good) bytes.remove_prefix(static_cast<size_t>(n));
            }
        });
    } catch (...) {
        close(fd);
        throw;
    }
    if (close(fd) != 0 || !good) throw PageError(507, kTextStorageFull);
    if (fits) fileSize_ += upload.size;
    request_.lacksFiles_ = request_.lacksFiles_ || !fits;
    if (fits && (chosen || upload.size > 0)) return;
    unlink(upload.path.c_str());
    request_.uploads_.pop_back();
}

void FormReader::read() {
    buffer_ = "\r\n";  // the first delimiter stands at the start
    copyToDelimiter([](std::string_view) {});
    while (readLine().substr(0, 2) != "--") {
        PartHead head = readHead();
        if (request_.fields_.size() + request_.uploads_.size() > kFieldMax) tooLarge();
        if (head.isFile) {
            readFile(head);
        } else {
            readText(head);
        }
    }
}

}  // namespace host
