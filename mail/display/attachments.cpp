// The list of attachments under a message: file-named parts, and forwarded messages, whose own
// header is read for their subject and Message-ID. A forwarded message is opened one level deep
// only, whatever it nests.

#include "mail/base/owned.h"
#include "mail/display.h"
#include "message_questions.h"
#include "page_links.h"
#include "support/support.h"

namespace attalven {

namespace {

/// Fills one row of the list. False, and the row stays the end of the list, when its media type
/// finds no memory.
bool fillRow(MailAttach& row, OwnedText mimeType, const char* name, int size, OwnedText msgId) {
    if (!mimeType) return false;
    row.mimeType = mimeType.release();
    row.name = copyText(viewOf(name)).release();
    row.size = size;
    row.msgId = msgId.release();
    return true;
}

bool addFile(MailAttach*& row, const MailBody& part, const MailInfo& msg) {
    return fillRow(*row, OwnedText(mediaTypeText(part).take()), part.fileName, part.bodySize,
                   copyText(viewOf(msg.messageId))) &&
           ++row;
}

bool addMessage(MailAttach*& row, const MailBody& part, FILE* fp) {
    OwnedMessage inner(fp ? mailGetHeaderInfo(part.bodyOffset, part.bodySize, fp) : nullptr);
    if (!inner) return true;
    OwnedText msgId = inner->messageId ? urlEncoded(inner->messageId) : copyText("nomsgid");
    if (!msgId) msgId = copyText({});
    return fillRow(*row, copyText("message/rfc822"), inner->subject, part.bodySize,
                   std::move(msgId)) &&
           ++row;
}

/// False when the list ends here for lack of memory.
bool addPart(MailAttach*& row, const MailBody& part, const MailInfo& msg, FILE* fp) {
    if (part.type == kMessage) return !hasSubType(part, "rfc822") || addMessage(row, part, fp);
    bool listed = part.fileName && part.type >= kUnknown && part.type <= kVideo;
    return !listed || addFile(row, part, msg);
}

}  // namespace
}  // namespace attalven

using namespace attalven;

MailAttach* mailGetAttachList(MailInfo* msg, long, FILE* fp) {
    if (!msg) return nullptr;
    LeafParts parts(msg->body);
    if (!parts.any([](const MailBody& part) { return part.fileName || part.type == kMessage; }))
        return nullptr;
    OwnedMemory<MailAttach> list = allocate<MailAttach>(parts.count() + 1);
    if (!list) return nullptr;
    MailAttach* row = list.get();
    for (const MailBody& part : parts)
        if (!addPart(row, part, *msg, fp)) break;
    return list.release();
}

void mailAttachListFree(MailAttach* list) {
    if (!list) return;
    for (MailAttach* row = list; row->mimeType; row++) {
        free(row->mimeType);
        free(row->name);
        free(row->msgId);
    }
    free(list);
}
