// What a message gives out besides its page: parts, its raw text, its header.

#include <cstdlib>
#include <cstring>

#include "host_texts.h"
#include "kit/page.h"
#include "kit/part.h"
#include "kit/text.h"
#include "mailview.h"
#include "support/page.h"

namespace host {

namespace {

[[noreturn]] void missing() {
    throw PageError(404, kTextNoSuchPart);
}

void sendPart(const Message& message, int number) {
    MailBody& part = message.part(number);
    printFileHeader(downloadType(part), message.saveName(number), message.measure(part).size());
    message.write(part, stdout);
}

/// The text of the request's query behind the last "&cid=", where the library writes a Content-ID
/// as it stands in the mail: it may hold any byte that has a meaning in a query.
std::string linkedContentId() {
    const char* query = getenv("QUERY_STRING");
    const char* at = query ? strstr(query, "&cid=") : nullptr;
    return at ? percentDecoded(at + 5) : "";
}

void downloadByContentId(const View& view) {
    Message message = view.open();
    std::string id = linkedContentId();
    for (int n = 1; n <= static_cast<int>(message.parts().size()); n++) {
        MailBody& part = message.part(n);
        if (!part.contentId || (id != part.contentId && view.request.raw("cid") != part.contentId))
            continue;
        if (!isPlainPicture(part)) return sendPart(message, n);
        printPassiveHeader();
        return mailViewCIDFile(message.info(), 0, 0, part.contentId, 0, message.file());
    }
    missing();
}

/// Whether a link with the bytes `linked` names the part: in the set of the mail, or of the page in
/// which the link stood.
bool hasName(const Message& message, const MailBody& part, const std::string& linked) {
    if (!part.fileName) return false;
    if (linked == part.fileName) return true;
    std::string name = message.nameOf(part);
    for (const char* set : {"UTF-8", "EUC-KR", "SHIFT-JIS", "GB2312", "BIG5"})
        if (linked == toSet(name, set)) return true;
    return false;
}

void downloadByName(const View& view) {
    Message message = view.open();
    for (const MailBody* part : message.parts()) {
        if (!hasName(message, *part, view.request.raw("filename"))) continue;
        printPassiveHeader();
        return mailSaveAttachFile(message.info(), 0, part->fileName, 0, message.file());
    }
    missing();
}

/// A folder's message begins with the line that separates it from the one before.
void skipFromLine(const Message& message) {
    MailInfo* info = message.info();
    std::string start = readHeader(message.file(), info->offset, 1000);
    size_t length = start.find('\n') + 1;
    if (!start.starts_with("From ") || length == 0) return;
    info->offset += static_cast<int>(length);
    info->size -= static_cast<int>(length);
}

/// The text goes out as it is stored, so its label is the mail's own. Sets in which text that is
/// none would be lost on a browser are not named.
void printTextHeader(const Message& message) {
    std::string set = message.charSet();
    bool readable = !set.empty() && strNCaseCmp(set.c_str(), "utf-", 4) != 0 &&
                    strNCaseCmp(set.c_str(), "iso-2022-", 9) != 0;
    pageSetCharSet(readable ? htmlCharSet(set.c_str()) : "utf-8");
    printPassiveHeader();
    startContent("text/plain");
}

std::string nameOf(const Message& message, const char* ending) {
    std::string name = cleanName(message.subject());
    return (name.empty() ? "message" : name) + ending;
}

}  // namespace

void downloadPart(const View& view) {
    if (view.request.has("cid")) return downloadByContentId(view);
    if (view.request.has("filename")) return downloadByName(view);
    if (view.path.empty()) missing();
    PartPath outer = view.path;
    outer.pop_back();
    sendPart(Message(view.folder, view.number, outer), view.path.back());
}

void showRaw(const View& view) {
    Message message = view.open();
    skipFromLine(message);
    if (view.request.has("down")) {
        printFileHeader("message/rfc822", nameOf(message, ".eml"),
                        static_cast<uint64_t>(message.info()->size));
    } else {
        printTextHeader(message);
    }
    mailViewRFC822(message.info(), 1, 0, message.file());
}

void showHeader(const View& view) {
    Message message = view.open();
    skipFromLine(message);
    printTextHeader(message);
    mailViewRFC822(message.info(), 2, 0, message.file());
}

void saveBody(const View& view) {
    Message message = view.open();
    if (!message.bodyPart()) missing();
    printPassiveHeader();
    bool html = isType(message.part(message.bodyPart()), kTextType, "html");
    headerLine("Content-Disposition",
               attachmentDisposition(nameOf(message, html ? ".html" : ".txt")));
    mailSaveMailBody(message.info(), 0, message.file());
}

}  // namespace host
