#ifndef ATTALVEN_MAIL_STORAGE_MESSAGE_TEXT_H
#define ATTALVEN_MAIL_STORAGE_MESSAGE_TEXT_H

// Message-table texts for the library's own pages. What the texts of an installation ask for beyond
// the arguments given here stands in the result as it is, so that no argument is read that was
// never passed. Both use one slot of mailGetMsg(). Static: valid for its next four calls.

namespace attalven {

/// Message `number`, which takes no arguments.
const char* messageText(int number);
/// Message `number`, which takes one integer.
const char* messageText(int number, int value);

}  // namespace attalven

#endif
