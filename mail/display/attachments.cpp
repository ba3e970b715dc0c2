// The list of attachments under a message: file-named parts, and forwarded messages, whose own
// header is read for their subject and Message-ID. A forwarded message is opened one level deep
// only, whatever it nests, and none when their headers together are out of proportion to the mail.

#include "mail/base/owned.h"
#include "mail/display.h"
#include "mail/parse/nested_messages.h"
#include "message_questions.h"
#include "page_links.h"
#include "support/support.h"

namespace attalven {

namespace {

/// The list under construction: `row` is its end so far. A row whose media type finds no memory
/// ends the list for good.
struct ListEnd {
    MailAttach* row;
    bool complete = false;

    void add(OwnedText mimeType, const char* name, int size, OwnedText msgId) {
        complete = !mimeType;
        if (complete) return;
        *row++ = {mimeType.release(), copyText(viewOf(name)).release(), size, msgId.release()};
    }
};

void addMessage(ListEnd& end, const MailBody& part, NestedMessages& nested) {
    OwnedMessage inner = nested.open(part);
    if (!inner) return;
    OwnedText msgId = inner->messageId ? urlEncoded(inner->messageId) : copyText("nomsgid");
    if (!msgId) msgId = copyText({});
    end.add(copyText("message/rfc822"), inner->subject, part.bodySize, std::move(msgId));
}

void addPart(ListEnd& end, const MailBody& part, const MailInfo& msg, NestedMessages& nested) {
    if (part.type == kMessage) {
        if (hasSubType(part, "rfc822")) addMessage(end, part, nested);
    } else if (part.fileName && part.type >= kUnknown && part.type <= kVideo) {
        end.add(OwnedText(mediaTypeText(part).take()), part.fileName, part.bodySize,
                copyText(viewOf(msg.messageId)));
    }
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
    ListEnd end{list.get()};
    NestedMessages nested(*msg, fp);
    for (const MailBody& part : parts) {
        if (end.complete) break;
        addPart(end, part, *msg, nested);
    }
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
