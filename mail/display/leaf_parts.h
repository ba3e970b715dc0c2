#ifndef ATTALVEN_MAIL_DISPLAY_LEAF_PARTS_H
#define ATTALVEN_MAIL_DISPLAY_LEAF_PARTS_H

// What display asks of the leaf parts of a message.

#include "mail/parse/record.h"

namespace attalven {

/// A text that is shown, not attached.
inline bool isBodyText(const MailBody& part) {
    return part.type == kText && !part.fileName;
}

/// The part's type and subtype joined by "/"; a type outside the table counts as unknown.
Text mediaTypeText(const MailBody& part);

/// The answers of mailChkBodyType() and mailChkCID() for callers that hold the index already.
int bodyTypeOf(const LeafParts& parts);
bool hasReferences(const LeafParts& parts);

}  // namespace attalven

#endif
