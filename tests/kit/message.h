#ifndef ATTALVEN_TESTS_KIT_MESSAGE_H
#define ATTALVEN_TESTS_KIT_MESSAGE_H

// A message in a temporary file of its own, parsed.

#include "site.h"

namespace kit {

struct Message {
    explicit Message(std::string_view text, int offset = 0)
        : file(fileOf(text)),
          info(mailProcessing(offset, static_cast<int>(text.size()) - offset, "", file.get())) {}
    ~Message() { mailFree(&info); }
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    File file;
    MailInfo* info;
};

}  // namespace kit

#endif
