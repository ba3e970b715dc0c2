#include "terminal_text.h"

#include <strings.h>

#include <cstdlib>
#include <memory>

#include "mail/mail.h"

namespace cmd {

namespace {

struct FreeText {
    void operator()(char* p) const { free(p); }
};
using HeapText = std::unique_ptr<char, FreeText>;

// No converter knows this name, so the library leaves the decoded bytes of such words as they are.
constexpr std::string_view kUnconverted = "x-undecoded";

bool startsWithNoCase(std::string_view s, std::string_view prefix) {
    return s.size() >= prefix.size() && strncasecmp(s.data(), prefix.data(), prefix.size()) == 0;
}

bool isUtf8(const std::string& text) {
    return HeapText(strConvCharSet("UTF-8", "UTF-8", text.c_str())) != nullptr;
}

struct Relabelled {
    std::string value, charset;
};

/// Gives every encoded word the unconvertible label and tells the set that the last one named.
Relabelled relabel(const std::string& value) {
    Relabelled r;
    size_t from = 0;
    for (size_t at; (at = value.find("=?", from)) != std::string::npos;) {
        size_t end = value.find('?', at + 2);
        size_t text = end == std::string::npos ? end : value.find('?', end + 1);
        if (text == std::string::npos) break;
        size_t close = value.find("?=", text + 1);
        r.charset = value.substr(at + 2, end - at - 2);
        r.value.append(value, from, at - from).append("=?").append(kUnconverted);
        size_t next = close == std::string::npos ? value.size() : close + 2;
        r.value.append(value, end, next - end);
        from = next;
    }
    r.value.append(value, from);
    return r;
}

std::string charsetOf(const std::string& decoded, const std::string& named,
                      std::string_view fallback) {
    if (!named.empty()) return named;
    if (SearchISO2022KRDesignator(decoded.c_str())) return "ISO-2022-KR";
    if (SearchISO2022JPDesignator(decoded.c_str())) return "ISO-2022-JP";
    return std::string(fallback);
}

}  // namespace

std::string toUtf8(std::string_view text, std::string_view charset) {
    std::string source(text);
    if (!charset.empty())
        if (HeapText converted{
                strConvCharSet("UTF-8", std::string(charset).c_str(), source.c_str())})
            return converted.get();
    if (isUtf8(source)) return source;
    for (char& c : source)
        if (static_cast<unsigned char>(c) >= 0x80) c = '?';
    return source;
}

std::string pageToUtf8(std::string_view text, std::string_view charset) {
    std::string set(charset), source(text);
    if (set.size() < 4 || strncasecmp(set.c_str(), "utf-", 4) != 0)
        return toUtf8(text, getDefaultCharSet(set.c_str()));
    for (const char* page : {"EUC-KR", "SHIFT-JIS", "GB2312", "BIG5"})
        if (HeapText converted{strConvCharSet("UTF-8", page, source.c_str())})
            return converted.get();
    return toUtf8(text, "");
}

std::string printable(std::string text) {
    for (char& c : text)
        if ((static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t') || c == 0x7F) c = '?';
    return text;
}

std::string headerValue(std::string_view block, std::string_view name) {
    std::string value;
    bool open = false, seen = false, isSubject = name == "Subject";
    for (size_t at = 0; at < block.size();) {
        size_t end = block.find('\n', at);
        std::string_view line = block.substr(at, (end == block.npos ? block.size() : end) - at);
        at = end == block.npos ? block.size() : end + 1;
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (line.empty()) break;
        if (line.front() == ' ' || line.front() == '\t') {
            if (open)
                value.append(line.substr(std::min(line.find_first_not_of(" \t"), line.size())));
            continue;
        }
        open = startsWithNoCase(line, name) && line.size() > name.size() &&
               line[name.size()] == ':' && !(seen && isSubject);
        if (!open) continue;
        seen = true;
        line.remove_prefix(name.size() + 1);
        value = line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
    }
    return value;
}

std::string decodeHeader(const std::string& value, std::string_view charset) {
    Relabelled r = relabel(value);
    HeapText decoded(mailDecodeSubject(r.value.c_str()));
    std::string text = decoded ? decoded.get() : "";
    if (r.charset.empty()) text = value;  // raw ISO-2022 text would come back converted already
    return printable(toUtf8(text, charsetOf(text, r.charset, charset)));
}

std::string senderOf(const std::string& value, std::string_view charset) {
    Relabelled r = relabel(value);
    MailAddress* list = mailGetAddrList(r.value.c_str());
    std::string text;
    if (list && list->name) {
        text = toUtf8(list->name, charsetOf(list->name, r.charset, charset));
    } else if (list) {
        text = toUtf8(mailGetStrOneAddr(list), charset);
    }
    mailFreeAddress(&list);
    return printable(text);
}

}  // namespace cmd
