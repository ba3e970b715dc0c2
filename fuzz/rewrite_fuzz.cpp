// Rewrites any bytes as a folder, in both forms. The first bytes choose the form, the marks and
// where the folder ends when it is indexed; the rest arrives before it is closed. Mail that arrives
// as messages of its own must give what the model makes of the folder, plus that mail.

#include <unistd.h>

#include <fstream>
#include <iterator>

#include "fuzz.h"
#include "mail/mail.h"
#include "tests/kit/folder_model.h"

namespace {

const std::string path = "/dev/shm/attalven-rewrite-fuzz-" + std::to_string(getpid());

void write(const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
    if (size < 4) return 0;
    std::string content = fuzz::textOf(data + 3, size - 3);
    std::string first = content.substr(0, content.size() - content.size() * data[2] / 512);
    std::string later = content.substr(first.size());
    write(first);
    Fldr* folder = fldrOpen(path.c_str());
    fuzz::require(folder);
    kit::ModelFolder model(first);
    std::vector<unsigned> status;
    for (int n = 1; n <= fldrMsgMax(folder); n++) {
        if (data[1] >> (n % 8) & 1) fldrMsgDelete(n, folder);
        status.push_back(fldrMsgGetStatus(n, folder));
    }
    admOptions.passwdFlag = data[0] & 1;
    if (data[0] & 2) fldrStatusSet(1);
    bool isRewritten = (folder->status & FLDR_DELETED) || ((data[0] & 2) && !status.empty());
    write(content);
    fldrClose(folder);
    std::ifstream in(path, std::ios::binary);
    std::string result{std::istreambuf_iterator<char>(in), {}};
    bool isOwnMail =
        later.empty() || (first.ends_with('\n') && kit::isFromLine(kit::linesOf(later)[0]));
    fuzz::require(!isRewritten ? result == content
                  : isOwnMail  ? result == model.rewritten(status) + later
                               : result.ends_with(later));
    return 0;
}
