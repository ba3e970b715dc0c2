#ifndef ATTALVEN_HOST_MAILWRITE_SOURCE_H
#define ATTALVEN_HOST_MAILWRITE_SOURCE_H

// Forms that start from a stored message: answers, forwarded messages, drafts that go on.

#include <string>

#include "mailwrite_files.h"
#include "mailwrite_form.h"

namespace host {

/// Fills the form for the command "new", "reply", "replyall", "forward" or "draft" of the request;
/// files of the message go into the folder. PageError 400 for another command and for a draft of
/// another folder than "drafts", 404 when the message is gone.
void fillForm(Form& form, const Request& request, const User& user, FormFolder& folder);

/// The text that a reader sees of HTML source: lines at the ends of blocks, character references
/// as characters.
std::string textOfHtml(const std::string& html);

}  // namespace host

#endif
