#ifndef ATTALVEN_MAIL_PARSE_HEADER_FIELD_H
#define ATTALVEN_MAIL_PARSE_HEADER_FIELD_H

// Values of message header fields, read the same way for records and for summaries.

#include "mail/base/text.h"

namespace attalven {

/// A header (unfolded, as written) and its value.
struct HeaderField {
    string_view header, value;
};

/// The bits of a Status value: R gives 0x10 (read), O gives 0x100 (old).
unsigned statusBits(string_view value);
/// X-Priority 1 to 5 by the first character; 3 for anything else.
int priorityOf(string_view value);
/// The identifier between the brackets, made safe for use in a link. Replaces `id`.
void readMessageId(string_view value, Text& id);
/// The decoded subject. Replaces `subject`; false when there is none.
bool readSubject(string_view value, Text& subject);

}  // namespace attalven

#endif
