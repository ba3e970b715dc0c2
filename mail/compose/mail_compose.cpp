// Composing a message from the fields of a compose form. Nothing but the written stream and the
// boundary generator's memory is left behind. Large texts are held once where possible: the plain
// part grows in the text that the tag stripper returned.

#include <cstring>

#include "attachment_ref.h"
#include "draft.h"
#include "mail/base/bounded_text.h"
#include "mail/base/page_sink.h"
#include "mail/base/text.h"
#include "support/host.h"
#include "support/support.h"
#include "text_part.h"

namespace attalven {

namespace {

constexpr int kHtmlBody = 2, kReceiptWanted = 1;
constexpr size_t kUserIdMax = 15;

/// `text` between two others, in the block that it came in: a large text is held once.
char* wrapped(OwnedText text, string_view before, string_view after) {
    string_view inner = viewOf(text.get());
    size_t total = before.size() + inner.size() + after.size();
    char* block = static_cast<char*>(realloc(text.get(), total + 1));
    if (!block) return nullptr;
    (void)text.release();
    if (!before.empty() && !inner.empty()) memmove(block + before.size(), block, inner.size());
    std::copy(before.begin(), before.end(), block);
    std::copy(after.begin(), after.end(), block + before.size() + inner.size());
    block[total] = 0;
    return block;
}

/// The image whose loading tells that the message was read.
struct Receipt {
    string_view userId, mailDomain, messageId;

    void append(Text& out) const {
        out.appendFormat("<IMG SRC=\"http://%s:%d/cgi-auth/mailrcpt.cgi?userid=", conf.serverName,
                         conf.httpdPort);
        appendUrlSafe(out, userId);
        out.append("&maildomainname=");
        appendUrlSafe(out, mailDomain);
        out.append("&msgid=");
        appendUrlSafe(out, messageId);
        out.append("\">\n");
    }
};

bool isFullDocument(string_view body) {
    return findNoCase(body, "<HTML>") != string_view::npos &&
           findNoCase(body, "</HTML>") != string_view::npos;
}

char* htmlContent(const char* body, const Receipt* receipt) {
    bool full = isFullDocument(body);
    Text after;
    if (!full) after.append("<BR><BR>\n");
    if (receipt) receipt->append(after);
    if (full) {
        OwnedText copy = copyText(body);
        return copy ? wrapped(std::move(copy), "", after.view()) : nullptr;
    }
    after.append("</FONT>\n</BODY></HTML>\n\n");
    return wrapped(OwnedText(strConvHTMLStr(body, "\n")),
                   "<HTML>\n<HEAD></HEAD>\n<BODY BGCOLOR=\"white\">\n<FONT SIZE=2>\n",
                   after.view());
}

/// The text of the message: the plain node, with the HTML node as its sibling.
OwnedBody textNodes(int bodyType, const char* body, const Receipt* receipt) {
    OwnedBody plain = newNode(kText, "plain", k7Bit);
    if (!plain || !(plain->content = wrapped(OwnedText(strStripHTMLTag(body)), "", "\n\n")))
        return nullptr;
    if (bodyType != kHtmlBody) return plain;
    OwnedBody html = newNode(kText, "html", k8Bit);
    if (!html || !(html->content = htmlContent(body, receipt))) return nullptr;
    plain->next = html.release();
    return plain;
}

/// Puts the texts below the root: alone, or in a container that makes them alternatives.
bool addTexts(MailBody& root, OwnedBody texts) {
    if (!texts || !texts->next) {
        root.child = texts.release();
        return root.child;
    }
    OwnedBody container = newNode(kMultipart, "alternative", k7Bit);
    if (!container) return false;
    container->child = texts.release();
    root.child = container.release();
    return true;
}

}  // namespace

}  // namespace attalven

using namespace attalven;

void mailCompose(const char* from, const char* to, const char* replyTo, const char* cc,
                 const char* faxTo, int priority, int bodyType, const char* subject,
                 const char* body, char** attachList, int headerEncoding, int bodyEncoding,
                 int sendMode, const char* charset, const char* messageId, const char* mailDomain,
                 int readReceipt, FILE* out) {
    if (!out) return;
    const DraftFields fields = {from,           to,           replyTo,  cc,      priority,
                                headerEncoding, bodyEncoding, sendMode, charset, messageId};
    bool multipart = bodyType == kHtmlBody || sendMode == kAlwaysMultipart ||
                     !attachmentEntries(attachList).empty();
    OwnedMessage draft =
        newDraft(fields, multipart ? kMultipart : kText, multipart ? "mixed" : "plain");
    if (!draft) return;
    if (sendMode == kFax) draft->faxNum = mailGetAddrList(faxTo);
    bool utf = findNoCase(viewOf(charset), "-utf-") != string_view::npos;
    draft->subject = encodedSubject(subject, charset, utf ? kBase64 : headerEncoding).release();

    BoundedText<kUserIdMax> userId;
    userId.assign(draft->from ? viewOf(draft->from->mailbox) : viewOf(conf.adminId));
    const Receipt receipt = {userId.view(), viewOf(mailDomain), viewOf(messageId)};
    MailBody& root = *draft->body;
    if (!addTexts(root, textNodes(bodyType, body ? body : "",
                                  readReceipt == kReceiptWanted ? &receipt : nullptr)))
        return;
    if (!appendAttachments(&root.child->next, attachList, InlineImages::kRecognised, root)) return;
    writeDraft(*draft, fields, out);
}

void mailComposeDeleteAttachFile(char** attachList) {
    for (char** entry = attachList; entry && *entry; entry++) {
        if (!**entry) continue;
        AttachmentEntry read = AttachmentEntry::of(*entry);
        if (read.isInline) {
            char* at = strchr(*entry, '@');
            if (!at) continue;
            *at = 0;
            read = AttachmentEntry::of(*entry);
        }
        removeTemporary(read.fileName);
    }
}
