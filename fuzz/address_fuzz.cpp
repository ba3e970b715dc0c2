// Address lists of any bytes: every address written out again, its name quoted, is read back as it
// was.

#include "fuzz.h"
#include "mail/base/sink.h"
#include "mail/parse/mail_addr.h"
#include "support/host.h"

using namespace attalven;
using fuzz::require;

namespace {

std::string str(const char* text) {
    return text ? text : "";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    cutCopy(conf.mailDomainName, "example.org");
    std::string text = fuzz::textOf(data, size);
    bool isPlain = text.find("=?") == text.npos && text.find('\x1B') == text.npos;
    OwnedAddress list(mailGetAddrList(text.c_str()));
    for (MailAddress* a = list.get(); a; a = a->next) {
        std::string address = str(a->mailbox) + "@" + str(a->host);
        require(a->host && address.find_first_of(" \r\n\"<>,;()\\") == address.npos);
        std::string name = isPlain ? str(a->name) : "";
        // Blanks go from a name without quotes, which can make an encoded word of what was none.
        if (name.find("=?") != name.npos) name.clear();
        require(name.size() <= 300);
        if (address.size() > 300) continue;
        OwnedAddress again(
            mailGetAddrList(("\"" + fuzz::escaped(name) + "\" <" + address + ">").c_str()));
        require(again && !again->next && str(again->name) == name);
        require(str(again->mailbox) + "@" + str(again->host) == address);
    }
    return 0;
}
