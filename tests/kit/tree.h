#ifndef ATTALVEN_TESTS_KIT_TREE_H
#define ATTALVEN_TESTS_KIT_TREE_H

// Messages from texts, and their structure as one line.

#include "mail/parse/record.h"
#include "site.h"

namespace kit {

/// A text of a record, "-" for NULL.
std::string shown(const char* text);

/// The message that `text` is, or the one inside it that `msgId` names.
attalven::OwnedMessage parse(const std::string& text, const char* msgId = "");

/// type/subtype, name, encoding and disposition where they are not the usual ones, the content of a
/// leaf (its bytes of `file`) in braces, the children of a multipart in brackets.
std::string tree(const MailBody* node, const std::string& file);

}  // namespace kit

#endif
