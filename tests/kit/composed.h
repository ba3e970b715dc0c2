#ifndef ATTALVEN_TESTS_KIT_COMPOSED_H
#define ATTALVEN_TESTS_KIT_COMPOSED_H

// Composed messages for comparison: the composers' arguments by name, and their output with
// everything masked that changes from run to run.

#include <map>
#include <string>

namespace kit {

/// Arguments of mailCompose by their names ("attach": one entry a line), or with "call" of
/// "smimeMailCompose" and "mailSMimeHdrWrite". What is left out has a default.
using ComposeForm = std::map<std::string, std::string>;

std::string composed(const ComposeForm& form);

/// From_ and Date texts become "DATE", made Message-IDs "MSGID@", the n-th boundary of the message
/// "----=_NextPart_n".
std::string masked(std::string message);

/// `text` with each `from` replaced by `to`.
std::string replaced(std::string text, const std::string& from, const std::string& to);

}  // namespace kit

#endif
