#ifndef ATTALVEN_MAIL_DISPLAY_MESSAGE_QUESTIONS_H
#define ATTALVEN_MAIL_DISPLAY_MESSAGE_QUESTIONS_H

// What display asks of a part, and of all leaf parts where the caller holds the index already.

#include "mail/parse/record.h"

namespace attalven {

/// A text that is shown, not attached.
inline bool isBodyText(const MailBody& part) {
    return part.type == kText && !part.fileName;
}

/// The part's type and subtype joined by "/"; a type outside the table counts as unknown.
Text mediaTypeText(const MailBody& part);

/// The answers of mailChkBodyType() and mailChkCID().
int bodyTypeOf(const LeafParts& parts);
bool hasReferences(const LeafParts& parts);

}  // namespace attalven

#endif
