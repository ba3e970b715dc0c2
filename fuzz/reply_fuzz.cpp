// SMTP replies from a hostile server: a code has three digits and stands in the bytes that were
// read, a dialogue over a socket sees the same codes, and it ends when the server has gone.

#include <sys/socket.h>
#include <unistd.h>

#include <vector>

#include "fuzz.h"
#include "mail/compose/dialogue.h"
#include "support/support.h"

using fuzz::require;

namespace {

constexpr size_t kSocketBuffer = 32 * 1024;  // what a socket takes before anybody reads
constexpr int kSeconds = 5;

std::vector<int> codesOf(const uint8_t* data, size_t size) {
    std::vector<int> codes;
    FILE* f = fmemopen(const_cast<uint8_t*>(data), size, "r");
    long before = 0;
    for (int code; (code = sockGetStatCode(f)) > 0; before = ftell(f)) {
        char digits[4];
        snprintf(digits, sizeof digits, "%03d", code);
        long after = ftell(f);
        require(code <= 999 && after > before &&
                memmem(data + before, static_cast<size_t>(after - before), digits, 3));
        codes.push_back(code);
    }
    fclose(f);
    return codes;
}

void checkDialogue(const uint8_t* data, size_t size, const std::vector<int>& codes) {
    int ends[2];
    require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0);
    require(write(ends[1], data, size) == static_cast<ssize_t>(size));
    shutdown(ends[1], SHUT_WR);
    attalven::Dialogue dialogue(ends[0]);
    for (int code : codes) require(dialogue.reply(kSeconds) == code);
    for (size_t n = 0; !dialogue.isLost(); n++) {
        require(n <= size);
        dialogue.reply(kSeconds);
    }
    require(dialogue.command({"quit\n"}, kSeconds) == 0);
    close(ends[1]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    std::vector<int> codes = codesOf(data, size);
    if (size <= kSocketBuffer) checkDialogue(data, size, codes);
    return 0;
}
