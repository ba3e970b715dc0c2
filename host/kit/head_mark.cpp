#include "head_mark.h"

#include <cstring>

#include "mail/mail.h"
#include "mail_text.h"

namespace host {

DigestStream::DigestStream() {
    crypto_generichash_init(&state_, nullptr, 0, sizeof(Digest));
}

void DigestStream::add(std::string_view bytes) {
    crypto_generichash_update(&state_, reinterpret_cast<const unsigned char*>(bytes.data()),
                              bytes.size());
}

Digest DigestStream::end() {
    Digest digest;
    crypto_generichash_final(&state_, digest.data(), digest.size());
    return digest;
}

Digest digestOf(std::string_view bytes) {
    DigestStream stream;
    stream.add(bytes);
    return stream.end();
}

unsigned takeStatus(std::string& header) {
    unsigned status = 0;
    size_t kept = 0;
    bool isStatus = false;
    for (std::string_view rest = header; !rest.empty();) {
        bool isFirst = rest.size() == header.size();
        std::string_view line = takeLine(rest);
        isStatus = isFolded(line) ? isStatus : !isFirst && isField(line, "Status");
        for (char c : line.substr(isStatus ? line.find(':') + 1 : line.size()))
            status |= c == 'R' ? FLDR_READ : c == 'O' ? FLDR_OLD : 0;
        if (isStatus) continue;
        if (line.data() != header.data() + kept)
            memmove(header.data() + kept, line.data(), line.size());
        kept += line.size();
    }
    header.resize(kept);
    return status;
}

std::string headMark(const Digest& digest) {
    char hex[2 * sizeof(Digest) + 1];
    sodium_bin2hex(hex, sizeof hex, digest.data(), digest.size());
    return std::string(hex, kMarkSize - 1) + ":";
}

}  // namespace host
