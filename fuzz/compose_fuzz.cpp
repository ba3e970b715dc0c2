// Composes a message out of hostile form fields and attachment entries, and reads it again: its
// header block holds known fields only, each once, and a multipart message has as many parts as
// were put in. No field can add a line, a header or a part.

#include <set>

#include "fuzz.h"
#include "mail/mail.h"

using fuzz::require;

namespace {

void checkHeader(const std::string& header, size_t from) {
    std::set<std::string> known = {
        "Message-Id", "From",         "To",           "Cc",
        "X-FaxNum",   "Reply-To",     "Subject",      "Date",
        "X-UMS",      "MIME-Version", "X-SMIME",      "X-Priority",
        "X-Mailer",   "Precedence",   "Content-Type", "Content-Transfer-Encoding"};
    while (from < header.size()) {
        size_t end = std::min(header.find('\n', from), header.size());
        std::string line = header.substr(from, end - from);
        from = end + 1;
        if (line.starts_with('\t') || line.starts_with(' ')) continue;
        require(known.erase(line.substr(0, line.find(':'))) == 1);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 4) return 0;
    std::string input = fuzz::textOf(data + 4, size - 4), f[10];
    for (std::string& field : f) field = fuzz::takeField(input);
    if (f[8].starts_with("/") || f[8].starts_with("forward@")) f[8] = "photo.gif";
    char* list[] = {f[8].data(), nullptr};
    FILE* out = tmpfile();
    bool attach = data[3] & 1;
    mailCompose(f[0].c_str(), f[1].c_str(), f[2].c_str(), f[3].c_str(), f[4].c_str(), data[0],
                data[3] >> 1 & 3, f[5].c_str(), f[6].c_str(), attach ? list : nullptr, data[1] % 5,
                data[1] / 5 % 5, data[2] % 11, f[7].c_str(), f[9].c_str(), f[2].c_str(), 1, out);
    std::string message(static_cast<size_t>(ftell(out)), 0);
    rewind(out);
    require(fread(message.data(), 1, message.size(), out) == message.size());
    MailInfo* mail = mailProcessing(0, static_cast<int>(message.size()), "(top)", out);
    MailBodyList** index = mailGetBody(mail->body);
    int parts = 0, wanted = ((data[3] >> 1 & 3) == 2 ? 2 : 1) + attach;
    while (index[parts]) parts++;
    bool isMultipart =
        mail->body->type == 5 && message.find("\n\nThis is a multi-part") != std::string::npos;
    require(!isMultipart || parts == wanted);
    mailFreeBodyIdx(index);
    mailFree(&mail);
    fclose(out);
    size_t header = message.find('\n') + 1, end = message.find("\n\n", header);
    require(message.starts_with("From ") && end != std::string::npos);
    checkHeader(message.substr(0, end), header);
    return 0;
}
