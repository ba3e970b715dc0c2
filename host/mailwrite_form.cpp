#include "mailwrite_form.h"

#include <algorithm>
#include <map>
#include <sstream>

#include "kit/file.h"
#include "kit/mail_text.h"
#include "kit/page.h"
#include "kit/text.h"
#include "support/host.h"
#include "support/support.h"

namespace host {

namespace {

constexpr size_t kSubjectMax = 250, kNameMax = 60;  // characters
constexpr size_t kSignatureMax = 16 << 10;
constexpr const char* kSets[] = {kAutomaticSet, "us-ascii", "iso-8859-1", "euc-kr",
                                 "iso-2022-jp", "gb2312",   "big5",       "UTF-8"};

bool isControl(char c) {
    return (c >= 0 && c < ' ') || c == '\x7F';
}

void choose(std::string& value, const std::string& wanted) {
    for (const char* set : kSets)
        if (wanted == set) value = wanted;
}

void choose(int& value, const std::string& wanted, int most) {
    if (wanted.size() == 1 && wanted[0] >= '1' && wanted[0] - '0' <= most) value = wanted[0] - '0';
}

/// Length of the piece of an address list at the start of `text`, its separator left out.
size_t pieceLength(std::string_view text) {
    bool quoted = false;
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] == '\\')
            i++;
        else if (text[i] == '"')
            quoted = !quoted;
        else if (!quoted && (text[i] == ',' || text[i] == ';'))
            return i;
    }
    return text.size();
}

/// Puts a name of several words, as people type it before <address>, into quotes: the parser joins
/// the words of an unquoted one.
std::string quotedName(std::string_view piece) {
    size_t start = std::min(piece.find_first_not_of(" \t"), piece.size());
    size_t bracket = piece.find('<');
    if (bracket == std::string_view::npos || start >= bracket || piece[start] == '"')
        return std::string(piece);
    size_t end = piece.find_last_not_of(" \t", bracket - 1) + 1;
    std::string name(piece.substr(start, end - start));
    if (name.find_first_of("\"\\(") != std::string::npos) return std::string(piece);
    return "\"" + name + "\" " + std::string(piece.substr(bracket));
}

}  // namespace

std::string oneLine(const std::string& text) {
    std::string line = text;
    std::replace_if(line.begin(), line.end(), isControl, ' ');
    return line;
}

std::string plainLines(const std::string& text) {
    std::string lines;
    for (size_t i = 0; i < text.size(); i++) {
        bool isBreak = text[i] == '\r' && !(i + 1 < text.size() && text[i + 1] == '\n');
        if (isBreak || text[i] == '\n' || text[i] == '\t' || !isControl(text[i]))
            lines += isBreak ? '\n' : text[i];
    }
    return lines;
}

Form::Form(const MailPreference& preference) {
    choose(headerEncoding, std::to_string(preference.headerEncoding), 3);
    choose(bodyEncoding, std::to_string(preference.bodyEncoding), 3);
}

void Form::read(const Request& request) {
    id = request.value("form");
    to = oneLine(request.value("to"));
    cc = oneLine(request.value("cc"));
    bcc = oneLine(request.value("bcc"));
    subject = shortened(oneLine(request.value("subject")), kSubjectMax);
    body = plainLines(request.value("body"));
    isHtml = request.value("format") == "html";
    receipt = request.has("receipt");
    signature = request.has("signature");
    choose(charSet, request.value("charset"));
    choose(headerEncoding, request.value("header_encoding"), 3);
    choose(bodyEncoding, request.value("body_encoding"), 3);
    choose(priority, request.value("priority"), 5);
}

std::string Form::packed() const {
    std::string lines;
    auto add = [&](const char* name, const std::string& value) {
        lines += std::string(name) + "=" + value + "\n";
    };
    add("to", to);
    add("cc", cc);
    add("bcc", bcc);
    add("subject", subject);
    add("format", isHtml ? "html" : "plain");
    add("receipt", receipt ? "1" : "");
    add("signature", signature ? "1" : "");
    add("charset", charSet);
    add("header_encoding", std::to_string(headerEncoding));
    add("body_encoding", std::to_string(bodyEncoding));
    add("priority", std::to_string(priority));
    std::string packed = takeText(mailEncodeBase64(lines.c_str()));
    // A line end behind the last line would become an empty header line.
    return packed.substr(0, packed.find_last_not_of('\n') + 1);
}

void Form::unpack(const std::string& text) {
    std::istringstream lines(takeText(mailDecodeBase64(text.c_str())));
    std::map<std::string, std::string> fields;
    for (std::string line; std::getline(lines, line);) {
        size_t equals = std::min(line.find('='), line.size());
        fields[line.substr(0, equals)] =
            oneLine(toUtf8(line.substr(std::min(equals + 1, line.size())), "UTF-8"));
    }
    to = fields["to"];
    cc = fields["cc"];
    bcc = fields["bcc"];
    subject = fields["subject"];
    isHtml = fields["format"] == "html";
    receipt = !fields["receipt"].empty();
    signature = !fields["signature"].empty();
    choose(charSet, fields["charset"]);
    choose(headerEncoding, fields["header_encoding"], 3);
    choose(bodyEncoding, fields["body_encoding"], 3);
    choose(priority, fields["priority"], 5);
}

Sender::Sender(const User& user) : address(user.address()) {
    mailGetPreference(user.id.c_str(), conf.mailDomainName, &preference);
    auto utf8 = [](const char* text) {
        return oneLine(isUtf8(text) ? text : toUtf8(text, pageLanguage().charSet));
    };
    name = utf8(preference.emailName);
    // The composer writes this text as it stands: bare addresses are ASCII.
    for (const Address& a : parseAddresses(utf8(preference.replyTo)))
        if (a.isValid()) replyTo += (replyTo.empty() ? "" : ", ") + a.mail;
    std::string text = readFile(user.home() + "/signature.txt", kSignatureMax).value_or("");
    signature = plainLines(toUtf8(text, "UTF-8"));
    while (!signature.empty() && signature.back() == '\n') signature.pop_back();
}

std::string Address::text() const {
    if (name.empty()) return mail;
    std::string quoted;
    for (char c : name) {
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return "\"" + quoted + "\" <" + mail + ">";
}

bool Address::isValid() const {
    return mail.size() <= 254 && isPlainAddress(mail);
}

bool Address::isSame(const std::string& other) const {
    return strCaseCmp(mail.c_str(), other.c_str()) == 0;
}

std::vector<Address> parseAddresses(const std::string& text, const std::string& charSet) {
    std::string quoted;
    for (std::string_view rest = text; !rest.empty();) {
        size_t length = pieceLength(rest);
        if (!quoted.empty()) quoted += ',';
        quoted += quotedName(rest.substr(0, length));
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    std::vector<Address> list;
    Addresses parsed = headerAddresses(quoted, charSet);
    for (const MailAddress* a = parsed.get(); a; a = a->next)
        list.push_back({shortened(oneLine(toUtf8(strSafeAssign(a->name), "UTF-8")), kNameMax),
                        toUtf8(strSafeAssign(a->mailbox), "UTF-8") + "@" +
                            toUtf8(strSafeAssign(a->host), "UTF-8")});
    return list;
}

std::string addressText(const std::vector<Address>& list) {
    std::string text;
    for (const Address& a : list) text += (text.empty() ? "" : ", ") + a.text();
    return text;
}

}  // namespace host
