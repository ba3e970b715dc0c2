#ifndef ATTALVEN_MAIL_COMPOSE_TEXT_PART_H
#define ATTALVEN_MAIL_COMPOSE_TEXT_PART_H

// What the header writer and the body writer both know of parts: texts and their transfer encoding,
// media type names, quoted names.

#include "mail/base/file.h"
#include "mail/parse/record.h"

namespace attalven {

enum SendMode { kAlwaysMultipart = 2, kEncrypted = 5, kSignEncrypted, kVoiceMail, kFax, kBulk };

/// The code of `headerEncoding` and `bodyEncoding` beside kQuotedPrintable and kBase64.
inline constexpr int kRaw = 1;

/// Whether the node's text is in memory; any other leaf takes its content from a file.
inline bool isTextInMemory(const MailBody& node) {
    return node.type == kText && !node.fileName;
}

/// S/MIME messages are sealed outside the library: their texts are not written.
constexpr bool isSealed(int sendMode) {
    return sendMode == kEncrypted || sendMode == kSignEncrypted;
}

/// Name of the transfer encoding of a text, empty for an unknown code. Raw text counts as 7bit in
/// every "iso-" set (the mail sets of Japan and Korea are 7-bit), whatever it holds.
string_view transferName(int bodyEncoding, string_view charset);
/// Writes the text in that encoding; an unknown code writes nothing.
void writeText(OutStream out, const char* text, int bodyEncoding);

/// One header field; its value ends neither its line nor the header.
void writeField(OutStream out, string_view key, string_view value);

/// "Content-Type: type/subtype", without a line end.
void writeContentType(OutStream out, const MailBody& node);

/// A display name or file name as it stands inside double quotes: one line, in encoded words of
/// `charset` where it has 8-bit bytes. NULL when memory is out.
OwnedText headerName(const char* name, const char* charset);

}  // namespace attalven

#endif
