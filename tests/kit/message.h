#ifndef ATTALVEN_TESTS_KIT_MESSAGE_H
#define ATTALVEN_TESTS_KIT_MESSAGE_H

// A message in a temporary file of its own, parsed.

#include "site.h"

namespace kit {

struct Message {
    explicit Message(std::string_view text, int offset = 0)
        : file(fileOf(text)),
          info(mailGetHeaderInfo(offset, static_cast<int>(text.size()) - offset, file.get())) {
        mailParseBody(info, file.get());
    }
    ~Message() { mailFree(&info); }

    File file;
    MailInfo* info;
};

/// A multipart/mixed message; each part begins with its media type.
inline std::string mixed(std::initializer_list<std::string> parts, const char* headers = "") {
    std::string text = headers;
    text += "Content-Type: multipart/mixed; boundary=o\n\n";
    for (const std::string& part : parts) text += "--o\nContent-Type: " + part + "\n";
    return text + "--o--\n";
}

}  // namespace kit

#endif
