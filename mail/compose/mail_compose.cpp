// Composing a message from the fields of a compose form. Nothing but the written stream and the
// boundary generator's memory is left behind. Large texts are held once where possible: the plain
// part grows in the text that the tag stripper returned.

#include <cstring>

#include "../../support/host.h"
#include "../../support/support.h"
#include "../base/bounded_text.h"
#include "../base/page_sink.h"
#include "../base/text.h"
#include "attachment_ref.h"
#include "draft.h"
#include "text_part.h"

namespace attalven {

namespace {

constexpr int kHtmlBody = 2, kReceiptWanted = 1;
constexpr size_t kUserIdMax = 15;

/// The text without its tags and two line ends.
char* plainContent(const char* body) {
    OwnedText stripped(strStripHTMLTag(body));
    size_t length = viewOf(stripped.get()).size();
    char* grown = static_cast<char*>(realloc(stripped.get(), length + 3));
    if (!grown) return nullptr;
    (void)stripped.release();
    memcpy(grown + length, "\n\n", 3);
    return grown;
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
    Text html;
    bool full = isFullDocument(body);
    OwnedText converted(full ? nullptr : strConvHTMLStr(body, "\n"));
    string_view source = full ? string_view(body) : viewOf(converted.get());
    html.room(source.size() + 1024);  // one block: a large body is not copied while it grows
    if (!full) html.append("<HTML>\n<HEAD></HEAD>\n<BODY BGCOLOR=\"white\">\n<FONT SIZE=2>\n");
    html.append(source);
    if (!full) html.append("<BR><BR>\n");
    if (receipt) receipt->append(html);
    if (!full) html.append("</FONT>\n</BODY></HTML>\n\n");
    return html.take();
}

/// The text of the message: the plain node, with the HTML node as its sibling.
OwnedBody textNodes(int bodyType, const char* body, const Receipt* receipt) {
    OwnedBody plain = newNode(kText, "plain", 0);
    if (!plain || !(plain->content = plainContent(body))) return nullptr;
    if (bodyType != kHtmlBody) return plain;
    OwnedBody html = newNode(kText, "html", 1);
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
    OwnedBody container = newNode(kMultipart, "alternative", 0);
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
