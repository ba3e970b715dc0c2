#include "composed.h"

#include <regex>

#include "site.h"

namespace kit {

std::string composed(const ComposeForm& f) {
    std::vector<std::string> entries = f.attachments;
    std::vector<char*> list;
    for (std::string& entry : entries) list.push_back(entry.data());
    list.push_back(nullptr);
    File out(tmpfile());
    mailCompose(f.from.c_str(), f.to.c_str(), f.replyTo.c_str(), f.cc.c_str(), f.faxTo.c_str(),
                f.priority, f.bodyType, f.subject.c_str(), f.body.c_str(),
                entries.empty() ? nullptr : list.data(), f.headerEncoding, f.bodyEncoding,
                f.sendMode, f.charset.c_str(), f.messageId.c_str(), f.mailDomain.c_str(),
                f.readReceipt, out.get());
    return contentOf(out.get());
}

std::string masked(std::string message) {
    using std::regex;
    const std::string clock = "\\d\\d:\\d\\d:\\d\\d";
    message = std::regex_replace(
        message, regex("(^|\n)(From [^ ]+) \\w{3} \\w{3} \\d\\d " + clock + " \\d{4}\n"),
        "$1$2 DATE\n");
    message = std::regex_replace(
        message, regex("\nDate: \\w{3}, \\d+ \\w{3} \\d{4} " + clock + " [+-]\\d{4}\n"),
        "\nDate: DATE\n");
    message = std::regex_replace(message, regex("\\d{8}\\.AAA\\d+@"), "MSGID@");
    std::smatch hit;
    for (int n = 1; std::regex_search(message, hit, regex("_NextPart_[A-Z0-9]{24}")); n++)
        message = std::regex_replace(message, regex(hit.str()), "_NextPart_" + std::to_string(n));
    return message;
}

namespace {

std::string dumpOf(const MailBody* body) {
    std::string text;
    for (; body; body = body->next) {
        text += mime_types[body->type] + std::string("/") + (body->subType ? body->subType : "");
        if (body->fileName) text += " \"" + std::string(body->fileName) + "\"";
        if (body->contentId) text += " <" + std::string(body->contentId) + ">";
        if (body->child) text += "[" + dumpOf(body->child) + "]";
        if (body->next) text += " ";
    }
    return text;
}

}  // namespace

std::string structureOf(std::string_view message) {
    File file = fileOf(message);
    MailInfo* mail = mailProcessing(0, static_cast<int>(message.size()), "(top)", file.get());
    std::string text = dumpOf(mail->body);
    mailFree(&mail);
    return text;
}

}  // namespace kit
