// Composing for S/MIME: the structure that is sealed outside the library, and the header of the
// sealed message. The texts of the outer header are neither parsed nor encoded, only kept on their
// lines.

#include <ctime>

#include "draft.h"
#include "mail/base/bounded_text.h"
#include "mail/base/file.h"
#include "mail/base/sink.h"
#include "text_part.h"

namespace attalven {

namespace {

/// The inner message's one text, whose content is sealed elsewhere.
bool addEmptyText(MailBody& root) {
    OwnedBody container = newNode(kMultipart, "alternative", k7Bit);
    if (!container) return false;
    container->child = newNode(kText, "plain", k7Bit).release();
    root.child = container.release();
    return root.child->child;
}

}  // namespace

}  // namespace attalven

using namespace attalven;

char* smimeMailCompose(const char* from, const char*, const char* to, const char* replyTo,
                       const char* cc, int priority, int, const char* subject, const char*,
                       char** attachList, int headerEncoding, int bodyEncoding, int sendMode,
                       const char* charset, const char* messageId, const char*, int, FILE* out) {
    static BoundedText<100> usedMsgId;
    usedMsgId.assign(viewOf(messageId ? messageId : mailGetMsgId()));
    const DraftFields fields = {from,           to,           replyTo,  cc,      priority,
                                headerEncoding, bodyEncoding, sendMode, charset, usedMsgId.c_str()};
    OwnedMessage draft = out ? newDraft(fields, kMultipart, "mixed") : nullptr;
    if (!draft || !addEmptyText(*draft->body)) return usedMsgId.data();
    MailBody& root = *draft->body;
    draft->subject = encodedSubject(subject, charset, headerEncoding).release();
    if (appendAttachments(&root.child->next, attachList, InlineImages::kOrdinary, root))
        writeDraft(*draft, fields, out);
    return usedMsgId.data();
}

void mailSMimeHdrWrite(const char* envelopeFrom, const char* from, const char* to,
                       const char* replyTo, const char* cc, int priority, const char* subject,
                       const char* messageId, int smimeMode, FILE* stream) {
    constexpr int kOuterEncrypted = 3, kOuterSignEncrypted = 4;
    if (!stream) return;
    OutStream out{stream};
    time_t now = time(nullptr);
    out.append("From ");
    appendOneLine(out, viewOf(envelopeFrom));
    out.append(" ");
    out.append(mailGetRFC822FromDate(now));
    out.append("\nMessage-Id: <");
    appendHeaderFold(out, viewOf(messageId));
    out.append(">\n");
    if (from) writeField(out, "From", viewOf(from));
    if (to) writeField(out, "To", viewOf(to));
    if (cc) writeField(out, "Cc", viewOf(cc));
    if (!viewOf(replyTo).empty()) writeField(out, "Reply-To", viewOf(replyTo));
    writeField(out, "Subject", viewOf(subject));
    writeField(out, "Date", mailMakeDate(now));
    out.append("MIME-Version: 1.0\n");
    if (smimeMode == kOuterEncrypted) out.append("X-SMIME: Encrypt\n");
    if (smimeMode == kOuterSignEncrypted) out.append("X-SMIME: SignEncrypt\n");
    out.append("Content-Type: application/x-pkcs7-mime;\n\tboundary=\"----=_NextPart_");
    out.append(mailGenBoundary());
    out.append(
        "\";\n\tname=\"smime.p7m\";\n\tsmime-type=enveloped-data\n"
        "Content-Transfer-Encoding: base64\n"
        "Content-Disposition: attachment;\n\tfilename=\"smime.p7m\"\n");
    fprintf(stream, "X-Priority: %d\n", priority);
    writeField(out, "X-Mailer", mailerInfo());
    out.append("\n");
}
