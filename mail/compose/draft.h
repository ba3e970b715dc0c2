#ifndef ATTALVEN_MAIL_COMPOSE_DRAFT_H
#define ATTALVEN_MAIL_COMPOSE_DRAFT_H

// What both composers share: the record of a message that is being composed and its output.

#include "mail/compose.h"
#include "mail/parse/record.h"

namespace attalven {

/// The form fields that both composers take.
struct DraftFields {
    const char *from, *to, *replyTo, *cc;
    int priority;
    int headerEncoding, bodyEncoding, sendMode;
    const char *charset, *messageId;
};

/// A record with addresses, priority, mailer and a root node of `type`/`subType`; NULL when memory
/// is out.
OwnedMessage newDraft(const DraftFields& fields, int type, const char* subType);
OwnedBody newNode(int type, const char* subType, int transferCode);

/// The subject as one line in encoded words of `headerEncoding`; NULL, an empty Subject, for
/// another code and for NULL.
OwnedText encodedSubject(const char* subject, const char* charset, int headerEncoding);

/// Whether an entry of `list` becomes a part of its own kind: in a message for the browser "cid_"
/// entries are inline images, in a sealed one they are ordinary files.
enum class InlineImages { kRecognised, kOrdinary };
/// Appends one node an entry behind `tail`, the link that ends the chain of parts. An inline image
/// makes `root` multipart/related. False when memory is out.
bool appendAttachments(MailBody** tail, char** list, InlineImages images, MailBody& root);

/// Writes From_ line, header and body.
void writeDraft(MailInfo& draft, const DraftFields& fields, FILE* out);

}  // namespace attalven

#endif
