#include "composed.h"

#include <regex>
#include <sstream>

#include "site.h"

namespace kit {

std::string composed(const ComposeForm& form) {
    auto value = [&](const char* key, const char* otherwise) {
        auto found = form.find(key);
        return found == form.end() ? otherwise : found->second.c_str();
    };
    auto number = [&](const char* key, int otherwise) {
        return atoi(value(key, std::to_string(otherwise).c_str()));
    };
    std::vector<std::string> entries;
    std::istringstream attach(value("attach", ""));
    for (std::string entry; std::getline(attach, entry);) entries.push_back(entry);
    std::vector<char*> list;
    for (std::string& entry : entries) list.push_back(entry.data());
    list.push_back(nullptr);
    const char *from = value("from", "kim@example.org"), *to = value("to", "lee@example.net"),
               *replyTo = value("replyTo", ""), *cc = value("cc", nullptr),
               *subject = value("subject", nullptr), *charset = value("charset", "euc-kr"),
               *id = value("messageId", "id@example.org");
    int headers = number("headerEncoding", 3), texts = number("bodyEncoding", 3),
        mode = number("sendMode", 0), priority = number("priority", 3);
    File out(tmpfile());
    std::string call = value("call", "mailCompose");
    if (call == "smimeMailCompose")
        smimeMailCompose(from, nullptr, to, replyTo, cc, priority, 0, subject, nullptr, list.data(),
                         headers, texts, mode, charset, value("messageId", nullptr), "", 0,
                         out.get());
    else if (call == "mailSMimeHdrWrite")
        mailSMimeHdrWrite(from, from, value("to", nullptr), replyTo, cc, priority, subject, id,
                          mode, out.get());
    else
        mailCompose(from, to, replyTo, cc, value("faxTo", nullptr), priority, number("bodyType", 1),
                    subject, value("body", "Hi"), list.data(), headers, texts, mode, charset, id,
                    value("mailDomain", "example.org"), number("readReceipt", 0), out.get());
    return contentOf(out.get());
}

std::string masked(std::string message) {
    using std::regex;
    static const std::string clock = "\\d\\d:\\d\\d:\\d\\d";
    static const std::pair<regex, const char*> masks[] = {
        {regex("(^|\n)(From [^ ]+) \\w{3} \\w{3} \\d\\d " + clock + " \\d{4}\n"), "$1$2 DATE\n"},
        {regex("\nDate: \\w{3}, \\d+ \\w{3} \\d{4} " + clock + " [+-]\\d{4}\n"), "\nDate: DATE\n"},
        {regex("\\d{8}\\.AAA\\d+@"), "MSGID@"}};
    static const regex boundary("_NextPart_[A-Z0-9]{24}");
    for (const auto& [made, mask] : masks) message = std::regex_replace(message, made, mask);
    std::smatch hit;
    for (int n = 1; std::regex_search(message, hit, boundary); n++)
        message = replaced(message, hit.str(), "_NextPart_" + std::to_string(n));
    return message;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

}  // namespace kit
