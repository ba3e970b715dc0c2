#ifndef ATTALVEN_CMD_TERMINAL_TEXT_H
#define ATTALVEN_CMD_TERMINAL_TEXT_H

// Texts of a mail as a UTF-8 terminal shows them. The library decodes into the page character set
// of the mail's language and does not say which one that was, so the header texts are decoded here
// from the stored header, whose encoded words name their set.

#include <string>
#include <string_view>

namespace cmd {

/// `text` in character set `charset` as UTF-8; undecodable text keeps its ASCII bytes, the others
/// become "?".
std::string toUtf8(std::string_view text, std::string_view charset);
/// A text that the library decoded out of mail in `charset`, as UTF-8: it is in the page character
/// set of that family, for "utf-..." in the first of four that can hold it.
std::string pageToUtf8(std::string_view text, std::string_view charset);
/// Control bytes other than LF and TAB replaced by "?", so that a mail cannot drive the terminal.
std::string printable(std::string text);

/// The unfolded value of header `name` in the header block `block`, "" when absent. The last one
/// wins, as the library has it; of several Subject headers the first.
std::string headerValue(std::string_view block, std::string_view name);
/// A header value with its encoded words decoded; `charset` is the set of bytes outside encoded
/// words.
std::string decodeHeader(const std::string& value, std::string_view charset);
/// The first address of an address header: its name, or mailbox@host when it has none.
std::string senderOf(const std::string& value, std::string_view charset);

}  // namespace cmd

#endif
