// The record of a message that is being composed. Texts come from forms; addresses pass the address
// parser, everything else is made safe where it is written. A From text without an address leaves
// no sender: the administrator's address then stands in the From_ line, which every reader of the
// folder needs, and there is no From field.

#include "draft.h"

#include <ctime>

#include "attachment_ref.h"
#include "boundary.h"
#include "mail/base/file.h"
#include "mail/base/sink.h"
#include "mail/base/text.h"
#include "mail/codec.h"
#include "support/host.h"
#include "text_part.h"

namespace attalven {

namespace {

OwnedBody attachmentNode(const char* entry, InlineImages images) {
    AttachmentEntry read = AttachmentEntry::of(entry);
    OwnedBody node;
    if (read.isForward) {
        node = newNode(kMessage, "rfc822", k8Bit);
    } else {
        const char* type = mimeGetType(entry);
        int major = mimeGetMajorType(type);
        node = newNode(major, mimeGetSubType(type), major == kText ? k7Bit : kBase64);
    }
    if (!node) return nullptr;
    bool isInline = images == InlineImages::kRecognised && read.isInline;
    setText(node->fileName, isInline ? read.fileName : string_view(entry));
    if (isInline && !read.contentId.empty()) setText(node->contentId, read.contentId);
    return node->fileName ? std::move(node) : nullptr;
}

void writeFromLine(OutStream out, const MailAddress* sender) {
    out.append("From ");
    appendOneLine(out, sender ? viewOf(sender->mailbox) : viewOf(conf.adminId));
    out.append("@");
    appendOneLine(out, sender ? viewOf(sender->host) : viewOf(conf.mailDomainName));
    out.append(" ");
    out.append(mailGetRFC822FromDate(time(nullptr)));
    out.append("\n");
}

}  // namespace

OwnedBody newNode(int type, const char* subType, int transferCode) {
    OwnedBody node(mailNewBody());
    if (!node) return nullptr;
    node->type = type;
    node->encoding = transferCode;
    setText(node->subType, viewOf(subType));
    return node;
}

OwnedMessage newDraft(const DraftFields& fields, int type, const char* subType) {
    OwnedMessage draft(mailNewHeader());
    if (!draft) return nullptr;
    draft->mimeVersion = 1;
    draft->from = mailGetAddrList(fields.from);
    draft->to = mailGetAddrList(fields.to);
    draft->cc = mailGetAddrList(fields.cc);
    draft->priority = fields.priority;
    setText(draft->mailer, viewOf(mailerInfo()));
    draft->body = newNode(type, subType, k7Bit).release();
    return draft->body ? std::move(draft) : nullptr;
}

OwnedText encodedSubject(const char* subject, const char* charset, int headerEncoding) {
    if (!subject || headerEncoding < kRaw || headerEncoding > kBase64) return nullptr;
    Text line;
    appendOneLine(line, subject);
    return OwnedText(mailEncodeSubject(line.c_str(), charset, headerEncoding));
}

bool appendAttachments(MailBody** tail, char** list, InlineImages images, MailBody& root) {
    for (const char* entry : attachmentEntries(list)) {
        OwnedBody node = attachmentNode(entry, images);
        if (!node) return false;
        if (images == InlineImages::kRecognised && AttachmentEntry::of(entry).isInline)
            setText(root.subType, "related");
        *tail = node.release();
        tail = &(*tail)->next;
    }
    return true;
}

void writeDraft(MailInfo& draft, const DraftFields& f, FILE* stream) {
    writeFromLine({stream}, draft.from);
    MailBody& root = *draft.body;
    Text boundary;
    if (root.type == kMultipart) boundary = newBoundary(root.child, f.bodyEncoding, nullptr);
    const char* text = boundary.c_str();
    mailHdrWrite(&draft, text, f.headerEncoding, f.bodyEncoding, f.replyTo, f.messageId, f.sendMode,
                 f.charset, stream);
    if (root.type == kMultipart)
        mailMimeBodyWrite(root.child, text, f.headerEncoding, f.bodyEncoding, f.sendMode, f.charset,
                          stream);
    else
        mailBodyWrite(root.child, f.headerEncoding, f.bodyEncoding, f.sendMode, f.charset, stream);
}

}  // namespace attalven
