// Message headers into records, and the messages inside a message. A header block ends only at its
// empty line, not at the message's size, so that a mail without one reads on into the next message:
// sizes that follow from it may be negative, and the reading of nested messages has a budget.

#include "header_field.h"
#include "header_lines.h"
#include "mail/base/keyword.h"
#include "mail_addr.h"
#include "mail_date.h"
#include "mail_mime_field.h"
#include "nested_messages.h"

namespace attalven {
namespace {

using Field = HeaderField;

void setAddresses(MailAddress*& list, string_view value) {
    mailFreeAddress(&list);
    list = parseAddresses(value).release();
}

void takeText(char*& field, Text& text) {
    free(field);
    field = text.take();
}

void setDate(MailInfo& m, const Field& f) {
    setText(m.dateStr, f.value);
    m.date = parseDate(f.value);
}

void setMessageId(MailInfo& m, const Field& f) {
    Text id;
    readMessageId(f.value, id);
    takeText(m.messageId, id);
}

/// The first subject wins, all other fields: the last.
void setSubject(MailInfo& m, const Field& f) {
    Text subject;
    if (!m.subject && readSubject(f.value, subject)) m.subject = subject.take();
}

void setVersion(MailInfo& m, const Field& f) {
    m.mimeVersion = decimal(head(f.value, 1));
}

struct Row {
    string_view key;
    void (*read)(MailInfo&, const Field&);
};
constexpr Row kRows[] = {
    {"apparently-from:", [](MailInfo& m, const Field& f) { setAddresses(m.from, f.value); }},
    {"apparently-to:", [](MailInfo& m, const Field& f) { setAddresses(m.to, f.value); }},
    {"cc:", [](MailInfo& m, const Field& f) { setAddresses(m.cc, f.value); }},
    {"content-disposition", [](MailInfo& m, const Field& f) { readFileName(f.header, *m.body); }},
    {"content-transfer-encoding:",
     [](MailInfo& m, const Field& f) { m.body->encoding = encodingOf(f.value); }},
    {"content-type",
     [](MailInfo& m, const Field& f) { readContentType(f.header, f.value, *m.body); }},
    {"date:", setDate},
    {"from:", [](MailInfo& m, const Field& f) { setAddresses(m.from, f.value); }},
    {"message-id:", setMessageId},
    {"mime-version:", setVersion},
    {"reply-to:", [](MailInfo& m, const Field& f) { setAddresses(m.replyTo, f.value); }},
    {"status:", [](MailInfo& m, const Field& f) { m.status |= statusBits(f.value); }},
    {"subject:", setSubject},
    {"to:", [](MailInfo& m, const Field& f) { setAddresses(m.to, f.value); }},
    {"x-mailer:", [](MailInfo& m, const Field& f) { setText(m.mailer, f.value); }},
    {"x-priority:", [](MailInfo& m, const Field& f) { m.priority = priorityOf(f.value); }},
    {"x-smime:", [](MailInfo& m, const Field& f) { setText(m.smime, f.value); }},
    {"x-voice-id", [](MailInfo& m, const Field& f) { setText(m.voiceId, f.value); }},
};

void readField(MailInfo& message, string_view header) {
    const Row* row = findKeyword<Row>(kRows, header);
    if (!row) return;
    if (std::optional<string_view> value = headerValue(header))
        row->read(message, {header, *value});
}

/// A record with the defaults of a message without headers.
OwnedMessage newMessage() {
    OwnedMessage message(mailNewHeader());
    if (!message) return nullptr;
    message->body = mailNewBody();
    if (!message->body) return nullptr;
    message->body->type = kText;
    setText(message->body->subType, "plain");
    return message;
}

/// What opening a nested message takes from the budget: its size, at least the first block of its
/// reader. What its header block reads behind its part counts more: other parts read it, too.
int64_t costOf(const MailInfo& nested) {
    constexpr int64_t kLeast = 8 << 10, kBehindFactor = 16;
    int64_t behind = std::max(-int64_t{nested.bodySize}, int64_t{0});
    return std::max(kLeast, nested.size + kBehindFactor * behind);
}

/// The search for a nested message; each level costs one reading of what it holds.
MailInfo* findNested(MailInfo& message, string_view id, NestedMessages& nested, FILE* fp,
                     int levels = kMaxNesting) {
    if (equalNoCase(viewOf(message.messageId), id)) return &message;
    if (levels == 0) return nullptr;
    for (const MailBody& part : LeafParts(message.body)) {
        OwnedMessage inner = part.type == kMessage ? nested.open(part) : nullptr;
        if (!inner) continue;
        mailParseBody(inner.get(), fp);
        MailInfo* found = findNested(*inner, id, nested, fp, levels - 1);
        if (found) return found == inner.get() ? inner.release() : found;
    }
    return nullptr;
}

}  // namespace

OwnedMessage NestedMessages::open(const MailBody& part) {
    if (budget_ < 0) return nullptr;
    OwnedMessage message(mailGetHeaderInfo(part.bodyOffset, part.bodySize, fp_));
    if (message) budget_ -= costOf(*message);
    return message;
}

}  // namespace attalven

using namespace attalven;

MailInfo* mailGetHeaderInfo(int offset, int size, FILE* fp) {
    OwnedMessage message = fp ? newMessage() : nullptr;
    if (!message) return nullptr;
    LineReader reader(fp, kHeaderLineLimit);
    if (reader.failed()) return nullptr;
    reader.seek(offset);
    StreamLines lines{reader};
    unfoldHeaders(lines, [&message](string_view header) {
        readField(*message, header);
        return true;
    });
    message->offset = offset;
    message->size = size;
    message->bodyOffset = clampInt(reader.position());
    message->bodySize = clampInt(int64_t{offset} + size - reader.position());
    return message.release();
}

MailInfo* mailProcessing(int offset, int size, const char* msgId, FILE* fp) {
    OwnedMessage message(mailGetHeaderInfo(offset, size, fp));
    if (!message) return nullptr;
    mailParseBody(message.get(), fp);
    MailInfo* found = mailGetRFC822MessageInfo(message.get(), fp, msgId);
    return found && found != message.get() ? found : message.release();
}

MailInfo* mailGetRFC822MessageInfo(MailInfo* msg, FILE* fp, const char* msgId) {
    if (!msg) return nullptr;
    NestedMessages nested(*msg, fp);
    return findNested(*msg, viewOf(msgId), nested, fp);
}
