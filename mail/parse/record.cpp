// The records of a message, their release, and the body index. Lists are walked through `next`;
// only `child` is entered by recursion, which the parser bounds at kMaxNesting levels.

#include "record.h"

#include <cstdlib>

extern "C" {

const char* const mime_types[9] = {"x-unknown", "audio", "application", "image", "message",
                                   "multipart", "text",  "video",       nullptr};
const char* const encoding[6] = {"7bit",   "8bit",   "quoted-printable",
                                 "base64", "binary", "x-unknown"};
}

namespace attalven {
namespace {

template <typename Record>
Record* newRecord() {
    return allocate<Record>().release();
}

/// Frees a chain link by link; `freeFields` frees what one record owns.
template <typename Record, typename FreeFields>
void freeChain(Record** p, FreeFields freeFields) {
    if (!p) return;
    Record* record = std::exchange(*p, nullptr);
    while (record) {
        Record* next = record->next;
        freeFields(*record);
        free(record);
        record = next;
    }
}

template <typename... Texts>
void freeTexts(Texts*... texts) {
    (free(texts), ...);
}

void freeEntries(MailBodyList** p) {
    freeChain(p, [](MailBodyList&) {});
}
using EntryChain = Chain<MailBodyList, freeEntries>;

/// Appends the leaves of a chain in index order; false when memory is out.
bool appendLeaves(MailBody* node, EntryChain& entries) {
    for (; node; node = node->next) {
        if (node->type == kMultipart) {
            if (!appendLeaves(node->child, entries)) return false;
            continue;
        }
        Owned<MailBodyList, freeEntries> entry(newRecord<MailBodyList>());
        if (!entry) return false;
        entry->body = node;
        entries.append(std::move(entry));
    }
    return true;
}

}  // namespace
}  // namespace attalven

using namespace attalven;

MailInfo* mailNewHeader(void) {
    MailInfo* message = newRecord<MailInfo>();
    if (message) message->priority = 3;
    return message;
}

void mailFree(MailInfo** p) {
    if (!p) return;
    MailInfo* m = std::exchange(*p, nullptr);
    if (!m) return;
    for (MailAddress** list : {&m->from, &m->to, &m->cc, &m->auxAddr, &m->replyTo, &m->faxNum})
        mailFreeAddress(list);
    freeTexts(m->dateStr, m->mailer, m->smime, m->voiceId, m->auxStr2);
    mailFreeBody(&m->body);
    freeTexts(m->subject, m->messageId, m->auxStr);
    free(m);
}

MailBody* mailNewBody(void) {
    MailBody* node = newRecord<MailBody>();
    if (node) node->isAttachment = 1;
    return node;
}

void mailFreeBody(MailBody** p) {
    freeChain(p, [](MailBody& b) {
        mailFreeBody(&b.child);
        mailFreeParam(&b.params);
        freeTexts(b.fileName, b.subType, b.description, b.location, b.contentId, b.content,
                  b.charSet);
    });
}

MailAddress* mailNewAddress(void) {
    return newRecord<MailAddress>();
}

void mailFreeAddress(MailAddress** p) {
    freeChain(p, [](MailAddress& a) { freeTexts(a.name, a.mailbox, a.host); });
}

MailParam* mailNewParam(void) {
    return newRecord<MailParam>();
}

void mailFreeParam(MailParam** p) {
    freeChain(p, [](MailParam& param) { freeTexts(param.name, param.value); });
}

MailState* mailNewState(void) {
    return newRecord<MailState>();
}

void mailFreeState(MailState** p) {
    if (p) free(*p);
}

char* mailGetParam(const char* name, MailParam* list) {
    if (!name) return nullptr;
    for (string_view wanted = name; list; list = list->next)
        if (list->name && equalNoCase(list->name, wanted)) return list->value;
    return nullptr;
}

MailBodyList* mailGenBodyList(MailBody* first) {
    EntryChain entries;
    appendLeaves(first, entries);
    return entries.take();
}

MailBodyList** mailGetBody(MailBody* root) {
    MailBodyList* chain = mailGenBodyList(root);
    size_t count = 0;
    for (MailBodyList* entry = chain; entry; entry = entry->next) count++;
    auto** index = static_cast<MailBodyList**>(calloc(count + 1, sizeof(void*)));
    size_t filled = 0;
    for (MailBodyList *entry = chain, *next; entry; entry = next) {
        next = entry->next;
        if (index)
            index[filled++] = entry;
        else
            free(entry);
    }
    return index;
}

void mailFreeBodyIdx(MailBodyList** index) {
    if (!index) return;
    for (MailBodyList** entry = index; *entry; entry++) free(*entry);
    free(index);
}
