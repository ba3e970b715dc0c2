#ifndef ATTALVEN_TESTS_KIT_COMPOSED_H
#define ATTALVEN_TESTS_KIT_COMPOSED_H

// Composed messages for comparison: the composer's arguments as a record, and its output with
// everything masked that changes from run to run.

#include <string>
#include <string_view>
#include <vector>

namespace kit {

struct ComposeForm {
    std::string from = "kim@example.org", to = "lee@example.net", replyTo = "", cc = "", faxTo = "";
    int priority = 3, bodyType = 1;
    std::string subject = "Hello", body = "Hi";
    std::vector<std::string> attachments = {};
    int headerEncoding = 3, bodyEncoding = 3, sendMode = 0;
    std::string charset = "euc-kr", messageId = "id@example.org", mailDomain = "example.org";
    int readReceipt = 0;
};

/// What mailCompose writes for the form.
std::string composed(const ComposeForm& form);

/// From_ and Date texts become "DATE", made Message-IDs "MSGID@", the n-th boundary of the message
/// "----=_NextPart_n".
std::string masked(std::string message);

/// The tree of parts in one line: `multipart/mixed[text/plain image/gif "a.gif"]`; for a stored
/// message, from its first byte.
std::string structureOf(std::string_view message);

}  // namespace kit

#endif
