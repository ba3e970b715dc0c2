// The header block of a composed message. Every value passes a sink of base/sink.h, since subjects,
// names and addresses come from forms and from mail that is answered: no value can end its line or
// the header.

#include <ctime>

#include "mail/base/sink.h"
#include "mail/base/text.h"
#include "mail/compose.h"
#include "text_part.h"

namespace attalven {

namespace {

constexpr size_t kEntryMax = 3000;
constexpr MailBody kNoBody = {};

/// What follows the name of a list entry.
enum class Form { kMailbox, kNumber };

Text listEntry(const MailAddress& a, string_view name, Form form) {
    Text entry;
    if (!name.empty()) {
        entry.append('"');
        entry.append(name);
        entry.append("\" <");
    }
    appendOneLine(entry, viewOf(a.mailbox));
    if (form == Form::kMailbox) {
        entry.append('@');
        appendOneLine(entry, viewOf(a.host));
    }
    if (!name.empty()) entry.append('>');
    return entry;
}

/// The entries, one a line. A cut address would be another one, so an entry that is too long loses
/// its name or is left out.
char* listText(const MailAddress* list, const char* charset, Form form) {
    if (!list) return nullptr;
    Text all;
    bool isFirst = true, failed = false;
    for (; list; list = list->next) {
        OwnedText name = headerName(list->name, charset);
        Text entry = listEntry(*list, viewOf(name.get()), form);
        if (entry.size() > kEntryMax) entry = listEntry(*list, {}, form);
        failed = failed || !name || entry.failed();
        if (entry.size() > kEntryMax) continue;
        if (!isFirst) all.append(",\n\t");
        isFirst = false;
        all.append(entry.view());
    }
    return failed ? nullptr : all.take();
}

/// A field that is left out when its value is NULL.
void writeList(OutStream out, string_view key, OwnedText value) {
    if (value) writeField(out, key, viewOf(value.get()));
}

/// The line that names a special kind of message, or nothing.
struct KindLine {
    int sendMode;
    string_view line;
};
constexpr KindLine kServiceLines[] = {{kVoiceMail, "X-UMS: Pellory Voice Mail\n"},
                                      {kFax, "X-UMS: Fax\n"}};
constexpr KindLine kSealLines[] = {{kEncrypted, "X-SMIME: Encrypt\n"},
                                   {kSignEncrypted, "X-SMIME: SignEncrypt\n"}};

template <size_t N>
void writeKind(OutStream out, const KindLine (&lines)[N], int sendMode) {
    for (const KindLine& k : lines)
        if (k.sendMode == sendMode) out.append(k.line);
}

/// Content-Type and, for a single part, its transfer encoding; ends the header.
void writeContentLines(OutStream out, const MailBody& root, const char* boundary, int bodyEncoding,
                       const char* charset) {
    writeContentType(out, root);
    if (root.type == kMultipart) {
        out.append(";\n\tboundary=\"");
        appendPlainParameter(out, viewOf(boundary));
        out.append("\"\n\nThis is a multi-part message in MIME format.\n\n");
        return;
    }
    if (isTextInMemory(root)) {
        out.append(";\n\tcharset=\"");
        appendPlainParameter(out, viewOf(charset));
        out.append("\"\n");
        string_view name = transferName(bodyEncoding, viewOf(charset));
        if (!name.empty()) out.append("Content-Transfer-Encoding: ");
        out.append(name);
    }
    out.append("\n\n");
}

}  // namespace

}  // namespace attalven

using namespace attalven;

char* mailGetAddrStr(MailAddress* list, const char* charset) {
    return listText(list, charset, Form::kMailbox);
}

char* mailGetFaxNumStr(MailAddress* list, const char* charset) {
    return listText(list, charset, Form::kNumber);
}

void mailHdrWrite(MailInfo* mail, const char* boundary, int, int bodyEncoding, const char* replyTo,
                  const char* messageId, int sendMode, const char* charset, FILE* stream) {
    if (!mail || !stream) return;
    OutStream out{stream};
    out.append("Message-Id: <");
    appendHeaderFold(out, viewOf(messageId));
    out.append(">\n");
    writeKind(out, kServiceLines, sendMode);
    writeList(out, "From", OwnedText(mailGetAddrStr(mail->from, charset)));
    writeList(out, "To", OwnedText(mailGetAddrStr(mail->to, charset)));
    writeList(out, "Cc", OwnedText(mailGetAddrStr(mail->cc, charset)));
    writeList(out, "X-FaxNum", OwnedText(mailGetFaxNumStr(mail->faxNum, charset)));
    if (!viewOf(replyTo).empty()) writeField(out, "Reply-To", viewOf(replyTo));
    writeField(out, "Subject", viewOf(mail->subject));
    writeField(out, "Date", mailMakeDate(time(nullptr)));
    fprintf(stream, "MIME-Version: %d.0\n", mail->mimeVersion);
    writeKind(out, kSealLines, sendMode);
    fprintf(stream, "X-Priority: %d\n", mail->priority);
    writeField(out, "X-Mailer", viewOf(mail->mailer));
    if (sendMode == kBulk) out.append("Precedence: junk\n");
    writeContentLines(out, mail->body ? *mail->body : kNoBody, boundary, bodyEncoding, charset);
}
