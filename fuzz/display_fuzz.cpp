// A message of any bytes, shown and downloaded. Byte 1 stands for a marker: whatever the mail says
// in its names and plain text, no page holds the marker as markup, and no name leaves its header
// line.

#include "fuzz.h"
#include "mail/mail.h"

namespace {

using fuzz::require;

constexpr char kMarker[] = "<x-mark\">";

template <typename Call>
std::string outputOf(Call call) {
    return fuzz::written([&](FILE* out) {
        std::swap(stdout, out);
        call();
        std::swap(stdout, out);
    });
}

std::string printed(void (*callback)(const char*, void**), void* bound, const char* arg = nullptr) {
    return outputOf([&] { callback(arg, &bound); });
}

/// Bodies that are shown as they stand: HTML, reports, subtypes without page form, and texts with
/// references to inline parts.
bool isShownRaw(MailBody* part, FILE* fp) {
    if (part->type == 4 || !part->subType || strcasecmp(part->subType, "plain") != 0) return true;
    char* text = mailDecode(part, 1, nullptr, fp);
    return text && fuzz::taken(text).find("cid:") != std::string::npos;
}

void checkDownload(MailInfo* msg, MailBody* part, FILE* fp) {
    if (!part->fileName) return;
    std::string out = outputOf([&] { mailSaveAttachFile(msg, 0, part->fileName, 0, fp); });
    constexpr char kType[] = "Content-Type: application/octet-stream\nContent-disposition: ";
    require(out.starts_with(kType));
    size_t end = out.find("\n", sizeof kType - 1);
    require(end != out.npos && out[end + 1] == '\n');
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
    std::string message;
    for (size_t i = 0; i < size; i++)
        data[i] == 1 ? message += kMarker : message += static_cast<char>(data[i]);
    FILE* fp = fmemopen(message.data(), message.size(), "r");
    if (!fp) return 0;
    MailInfo* msg = mailProcessing(0, static_cast<int>(message.size()), "", fp);
    MailView view = {};
    view.message = msg->body;
    view.file = &fp;
    view.msgId = msg->messageId;
    std::string page = printed(pfnAddrComboBoxList, msg->from) +
                       printed(pfnAddrComboBoxList, msg->to, "ENCODE") +
                       printed(pfnMailFromRcpt, msg->cc) + printed(pfnWAPAddrList, msg->replyTo);
    std::string body = printed(pfnMailBody, &view);
    bool raw = false;
    MailBodyList** index = mailGetBody(msg->body);
    for (MailBodyList** e = index; e && *e; e++) {
        checkDownload(msg, (*e)->body, fp);
        raw |= (*e)->body->type != 3 && isShownRaw((*e)->body, fp);
    }
    require((raw ? page : page + body).find(kMarker) == page.npos);
    printed(pfnWAPMailBody, &view);
    outputOf([&] { mailSaveMailBody(msg, 0, fp); });
    mailAttachListFree(mailGetAttachList(msg, 0, fp));
    mailFreeBodyIdx(index);
    mailFree(&msg);
    fclose(fp);
    return 0;
}
