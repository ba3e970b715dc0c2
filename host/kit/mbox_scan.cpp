#include "mbox_scan.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstring>

#include "mail/mail.h"

namespace host {

namespace {

constexpr size_t kBlock = 1 << 20;
constexpr size_t kLineMax = 29999;  // of a line, as much is judged

/// Where `what` stands at or behind `from`; the length of the text when it does not.
size_t findText(std::string_view text, std::string_view what, size_t from) {
    const void* at = memmem(text.data() + from, text.size() - from, what.data(), what.size());
    return at ? static_cast<size_t>(static_cast<const char*>(at) - text.data()) : text.size();
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

MboxScan::MboxScan(int fd) : fd_(fd), buffer_(kBlock + kLineMax, 0) {}

std::string_view MboxScan::load(long at) {
    begin_ = at;
    held_ = 0;
    for (ssize_t n;
         held_ < buffer_.size() && (n = pread(fd_, buffer_.data() + held_, buffer_.size() - held_,
                                              at + static_cast<off_t>(held_))) > 0;)
        held_ += static_cast<size_t>(n);
    return {buffer_.data(), held_};
}

std::vector<EntrySpan> MboxScan::messages() {
    std::vector<EntrySpan> found;
    long end = 0;
    bool startsLine = true;
    for (long base = 0; base < INT_MAX; base += static_cast<long>(kBlock)) {
        // Lines that start in this block; the bytes behind it are looked at only to judge them.
        std::string_view text = load(base);
        end = base + static_cast<long>(text.size());
        auto judge = [&](size_t at) {
            if (isFromLine(text.substr(at))) found.push_back({base + static_cast<long>(at), 0});
        };
        if (startsLine && text.starts_with("From ")) judge(0);
        size_t most = std::min(kBlock - 1, text.size());
        for (size_t lf = 0; (lf = findText(text, "\nFrom ", lf)) < most; lf++) judge(lf + 1);
        if (text.size() < buffer_.size()) break;
        startsLine = text[kBlock - 1] == '\n';
    }
    if (found.size() > FLDR_MAX_MSGS) {
        end = found[FLDR_MAX_MSGS].offset;
        found.resize(FLDR_MAX_MSGS);
    }
    for (size_t i = 0; i < found.size(); i++)
        found[i].size = (i + 1 < found.size() ? found[i + 1].offset : end) - found[i].offset;
    return found;
}

std::string_view MboxScan::header(const EntrySpan& message) {
    auto part = [&] {
        std::string_view held(buffer_.data(), held_);
        bool inside =
            message.offset >= begin_ && message.offset < begin_ + static_cast<long>(held_);
        held = inside ? held.substr(static_cast<size_t>(message.offset - begin_)) : "";
        return held.substr(0, std::min(held.size(), static_cast<size_t>(message.size)));
    };
    std::string_view text = part();
    size_t end = headerEnd(text);
    if (end == text.npos && text.size() < static_cast<size_t>(message.size)) {
        load(message.offset);
        text = part();
        end = headerEnd(text);
    }
    return text.substr(0, end);
}

}  // namespace host
