// mailrcpt.cgi?userid=&maildomainname=&msgid=: the picture in a mail that asks for a read receipt.
// Whatever the request says, the answer is the same transparent dot, so that it tells nothing.

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "kit/page.h"
#include "kit/receipts.h"
#include "mail/mail.h"
#include "support/support.h"

namespace {

constexpr unsigned char kDot[] = {
    'G', 'I', 'F', '8', '9', 'a',  1, 0, 1, 0, 0x80, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0x21, 0xF9, 4,
    1,   0,   0,   0,   0,   0x2C, 0, 0, 0, 0, 1,    0, 1, 0, 0, 2, 2,    0x44, 1,    0,    0x3B};

void note() {
    try {
        host::loadSite();
        host::Request request;
        if (strCaseCmp(request.value("maildomainname").c_str(), conf.mailDomainName) == 0)
            host::noteReceipt(request.value("userid"), request.value("msgid"), time(nullptr));
    } catch (const std::exception& error) {
        fprintf(stderr, "mailrcpt: %s\n", error.what());
    }
}

}  // namespace

int main() {
    note();
    host::headerLine("Content-Security-Policy", "default-src 'none'");
    host::headerLine("X-Content-Type-Options", "nosniff");
    host::headerLine("Cache-Control", "no-store");
    host::headerLine("Content-Length", std::to_string(sizeof kDot));
    host::startContent("image/gif");
    return fwrite(kDot, 1, sizeof kDot, stdout) == sizeof kDot && fflush(stdout) == 0 ? 0 : 1;
}
