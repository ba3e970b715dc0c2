#include "mbox_scan.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstring>

#include "mail/mail.h"

namespace host {

namespace {

constexpr size_t kBlock = 1 << 20, kLineMax = 29999, kHeaderMax = 1 << 20;

size_t readAt(int fd, char* to, size_t count, off_t at) {
    size_t done = 0;
    for (ssize_t n; done < count &&
                    (n = pread(fd, to + done, count - done, at + static_cast<off_t>(done))) > 0;)
        done += static_cast<size_t>(n);
    return done;
}

bool isFromLine(std::string_view text) {
    std::string line(text.substr(0, std::min({text.find('\n'), kLineMax, text.size()})));
    return mailChkRFC822From((line + "\n").c_str());
}

/// The end of the header: before the first empty line.
size_t headerEnd(std::string_view text) {
    for (size_t at = 0; (at = text.find('\n', at)) != text.npos; at++) {
        std::string_view rest = text.substr(at + 1, 2);
        if (rest.starts_with('\n') || rest == "\r\n") return at + 1;
    }
    return text.npos;
}

}  // namespace

std::vector<EntrySpan> findMessages(int fd) {
    std::vector<EntrySpan> found;
    std::string buffer(kBlock + kLineMax, 0);
    long end = 0;
    for (long base = 0; base < INT_MAX; base += static_cast<long>(kBlock)) {
        // Lines that start in this block; the bytes behind it are looked at only to judge them.
        size_t got = readAt(fd, buffer.data(), buffer.size(), base);
        std::string_view text(buffer.data(), got);
        end = base + static_cast<long>(got);
        auto judge = [&](size_t at) {
            if (at < kBlock && isFromLine(text.substr(at)))
                found.push_back({base + static_cast<long>(at), 0});
        };
        char before = '\n';
        if (base > 0) readAt(fd, &before, 1, base - 1);
        if (before == '\n' && text.starts_with("From")) judge(0);
        for (const char* at = text.data();
             (at = static_cast<const char*>(
                  memmem(at, static_cast<size_t>(text.data() + got - at), "\nFrom", 5))) != nullptr;
             at++)
            judge(static_cast<size_t>(at - text.data()) + 1);
        if (got < buffer.size()) break;
    }
    if (found.size() > FLDR_MAX_MSGS) {
        end = found[FLDR_MAX_MSGS].offset;
        found.resize(FLDR_MAX_MSGS);
    }
    for (size_t i = 0; i < found.size(); i++)
        found[i].size = (i + 1 < found.size() ? found[i + 1].offset : end) - found[i].offset;
    return found;
}

std::string headerBlock(int fd, const EntrySpan& message) {
    std::string block;
    auto most = static_cast<size_t>(std::min<long>(message.size, kHeaderMax));
    for (size_t size = 4096;; size *= 4) {
        size_t old = block.size();
        block.resize(std::min(size, most));
        size_t got = readAt(fd, block.data() + old, block.size() - old,
                            message.offset + static_cast<off_t>(old));
        block.resize(old + got);
        size_t end = headerEnd(block);
        if (end != block.npos) block.resize(end);
        if (end != block.npos || block.size() >= most || got == 0) return block;
    }
}

}  // namespace host
