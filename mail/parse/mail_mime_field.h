#ifndef ATTALVEN_MAIL_PARSE_MAIL_MIME_FIELD_H
#define ATTALVEN_MAIL_PARSE_MAIL_MIME_FIELD_H

// Values of MIME header fields (RFC 2045), as message headers and part headers both hold them.

#include "header_lines.h"
#include "record.h"

namespace attalven {

/// The code of a major media type, case ignored; kUnknown for a name outside the table.
MediaType majorTypeOf(string_view name);

/// mailGetEncType, mailParseMimeType and mailParseParams on texts that are not terminated.
int encodingOf(string_view value);
void parseMimeType(string_view value, MailBody& node);
OwnedParam parseParams(string_view text);

/// The parameters behind the first ";" of a whole header.
OwnedParam headerParams(string_view header);

/// Reads a Content-Type header into `node`: type, subtype, parameters; its name parameter replaces
/// the file name, its charset parameter the character set.
void readContentType(string_view header, string_view value, MailBody& node);

/// Reads the file name of a Content-Disposition header (RFC 2183), unless the node has one.
void readFileName(string_view header, MailBody& node);

/// The text between the first "<" and the next ">", empty when either is missing.
string_view betweenBrackets(string_view value);

}  // namespace attalven

#endif
