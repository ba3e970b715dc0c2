// Writes messages as a rewrite leaves them. Bytes that stay as they are go from file to file
// through one buffer. Header lines are told apart by physical line starts: a "Status:" in the
// middle of a long line is content, and the continuation lines of a Status header stay, as other
// programs put their own marks there.

#include "fldr_content.h"

#include "from_line.h"
#include "mail/base/descriptor.h"

namespace attalven {

namespace {

constexpr string_view kStatusKey = "Status:";

}  // namespace

bool ContentWriter::flush() {
    string_view bytes(blocks_.second.get(), used_);
    if (digest_) digest_->add(bytes);
    if (!writeAll(target_, bytes)) return false;
    written_ += static_cast<int64_t>(used_);
    startWriteback(target_, written_, used_);
    used_ = 0;
    return true;
}

bool ContentWriter::put(string_view bytes) {
    while (!bytes.empty()) {
        if (used_ == Blocks::kSize && !flush()) return false;
        size_t n = std::min(bytes.size(), Blocks::kSize - used_);
        memcpy(blocks_.second.get() + used_, bytes.data(), n);
        used_ += n;
        bytes = tail(bytes, n);
    }
    return true;
}

bool ContentWriter::copy(int64_t offset, int64_t size) {
    while (size > 0) {
        if (used_ == Blocks::kSize && !flush()) return false;
        size_t n = std::min(Blocks::kSize - used_, static_cast<size_t>(size));
        if (!readAt(source_, offset, blocks_.second.get() + used_, n)) return false;
        used_ += n;
        offset += static_cast<int64_t>(n);
        size -= static_cast<int64_t>(n);
    }
    return true;
}

bool ContentWriter::copyHeader(int64_t offset, int64_t size, string_view status) {
    char* block = blocks_.first.get();
    size_t held = 0;  // bytes at the start of the block that wait for more
    bool atLineStart = true, isStatus = false, hasStatus = false;
    while (size > 0 || held > 0) {
        size_t n = std::min(Blocks::kSize - held, static_cast<size_t>(size));
        if (!readAt(source_, offset, block + held, n)) return false;
        offset += static_cast<int64_t>(n);
        size -= static_cast<int64_t>(n);
        string_view rest(block, held + n);
        while (!rest.empty() && (!atLineStart || size == 0 || rest.size() >= kStatusKey.size())) {
            if (atLineStart) {
                isStatus = startsWithNoCase(rest, kStatusKey);
                hasStatus |= isStatus;
                if (isStatus && !put(status)) return false;
            }
            size_t lf = rest.find('\n');
            string_view piece = lf == string_view::npos ? rest : head(rest, lf + 1);
            if (!isStatus && !put(piece)) return false;
            atLineStart = lf != string_view::npos;
            rest = tail(rest, piece.size());
        }
        held = rest.size();
        if (held) memmove(block, rest.data(), held);
    }
    // A file that was cut within the header: its last line shall not run into what follows.
    if (!atLineStart && !isStatus && !put("\n")) return false;
    return hasStatus || put(status);
}

bool ContentWriter::copyMessage(const MessageSpan& message, string_view status) {
    if (!copyHeader(message.offset, message.headerSize, status) || !put("\n")) return false;
    int64_t at = message.offset + message.headerSize;
    if (at == message.end()) return true;
    char lineEnd = 0;
    if (!readAt(source_, at, &lineEnd, 1)) return false;
    at += lineEnd == '\r' ? 2 : 1;
    return copy(at, message.end() - at);
}

std::optional<bool> beginsMessage(Range range, Blocks& blocks) {
    size_t n = static_cast<size_t>(std::min<int64_t>(range.size, 2 * kFromLineLimit));
    if (!readAt(range.fd, range.offset, blocks.first.get(), n)) return std::nullopt;
    string_view text(blocks.first.get(), n);
    text = tail(text, text.find_first_not_of("\r\n"));
    size_t lf = text.find('\n');
    return isFromLine(lf == string_view::npos ? head(text, kFromLineLimit) : head(text, lf + 1));
}

}  // namespace attalven
