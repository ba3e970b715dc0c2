// The CGI request and its answer's header. Everything of the request comes from a client: values
// that are too long, or hold bytes that have no place in them, read as missing, never as cut.

#include <climits>
#include <cstdio>
#include <cstdlib>

#include "language.h"
#include "mail/base/bounded_text.h"
#include "mail/base/page_sink.h"
#include "mail/base/text.h"
#include "page.h"
#include "support.h"

using namespace attalven;

namespace {

constexpr size_t kCookieMax = 4096, kTypeMax = 255;

/// The variable's value, "" when it is missing or longer than `max`.
const char* variable(const char* name, size_t max) {
    const char* value = getenv(name);
    return value && strnlen(value, max + 1) <= max ? value : "";
}

bool isAddressByte(char c) {
    return isDigit(c) || (toLower(c) >= 'a' && toLower(c) <= 'f') || c == '.' || c == ':' ||
           c == '%';
}

BoundedText<kTypeMax> printableType(string_view contentType) {
    BoundedText<kTypeMax> type;
    for (char c : contentType)
        if (!isControl(c)) type.append(c);
    if (type.empty()) type.assign("application/octet-stream");
    return type;
}

/// The value of the first cookie `name` in a Cookie header (RFC 6265, 4.2.1).
std::optional<string_view> findCookie(string_view header, string_view name) {
    while (!header.empty()) {
        size_t end = header.find(';');
        string_view pair = trim(head(header, end));
        header = end == string_view::npos ? string_view() : tail(header, end + 1);
        size_t equals = pair.find('=');
        if (equals == string_view::npos || trimTail(head(pair, equals)) != name) continue;
        string_view value = trimHead(tail(pair, equals + 1));
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
            value = head(tail(value, 1), value.size() - 2);
        return value;
    }
    return std::nullopt;
}

}  // namespace

std::optional<string_view> attalven::requestCookie(string_view name) {
    std::optional<string_view> value = findCookie(variable("HTTP_COOKIE", 64 * 1024), name);
    bool usable = value && value->size() <= kCookieMax &&
                  std::none_of(value->begin(), value->end(), isControl);
    return usable ? value : std::nullopt;
}

void cgiMimeHeader(const char* contentType) {
    BoundedText<kTypeMax> type = printableType(viewOf(contentType));
    const char* charset = pageCharSet();
    bool label = *charset && startsWithNoCase(type.view(), "text/") &&
                 findNoCase(type.view(), "charset=") == string_view::npos;
    printf("Content-Type: %s%s%s\n\n", type.c_str(), label ? "; charset=" : "",
           label ? charset : "");
}

void cgiGetEnv(CgiEnv* env) {
    if (!env) return;
    const char* address = variable("REMOTE_ADDR", 64);
    string_view bytes = address;
    if (!std::all_of(bytes.begin(), bytes.end(), isAddressByte)) address = "";
    string_view length = variable("CONTENT_LENGTH", 18);
    bool digits = std::all_of(length.begin(), length.end(), isDigit);
    *env = {};
    env->remoteAddr = address;
    env->userAgent = variable("HTTP_USER_AGENT", 1024);
    env->requestMethod = variable("REQUEST_METHOD", 16);
    env->queryString = variable("QUERY_STRING", 64 * 1024);
    env->cookie = variable("HTTP_COOKIE", 64 * 1024);
    env->contentType = variable("CONTENT_TYPE", 1024);
    env->contentLength = digits ? strtol(length.data(), nullptr, 10) : 0;
}

float cgiGetMSIEVer(void) {
    string_view agent = variable("HTTP_USER_AGENT", 1024);
    size_t at = findNoCase(agent, "MSIE");
    if (at == string_view::npos) return 0;
    agent = trimHead(tail(agent, at + 4));
    float version = 0, unit = 0;
    for (char c : head(agent, 8)) {
        if (isDigit(c) && unit == 0) {
            version = version * 10 + static_cast<float>(c - '0');
        } else if (isDigit(c)) {
            version += static_cast<float>(c - '0') * unit;
            unit /= 10;
        } else if (c == '.' && unit == 0) {
            unit = 0.1F;
        } else {
            break;
        }
    }
    return version;
}

int cgiGetBrowserLangType(void) {
    string_view accept = variable("HTTP_ACCEPT", 4096);
    auto accepts = [accept](string_view type) {
        return findNoCase(accept, type) != string_view::npos;
    };
    bool wml = accepts("text/vnd.wap.wml") && !accepts("text/html") && !accepts("xhtml+xml");
    return wml ? 2 : 1;
}

char* cgiCkGetVal(const char* name) {
    // Four values in turn, so that a caller can look at a few cookies side by side.
    static BoundedText<kCookieMax> values[4];
    static unsigned next;
    if (!name || !*name) return nullptr;
    std::optional<string_view> value = requestCookie(name);
    if (!value) return nullptr;
    BoundedText<kCookieMax>& slot = values[next++ % 4];
    slot.assign(*value);
    return slot.data();
}

char* cgiCharToHex(const char* text) {
    if (!text) return nullptr;
    constexpr char kHex[] = "0123456789ABCDEF";
    Text out;
    for (const char* p = text; *p; p++) {
        unsigned char c = byteOf(*p);
        if (isAlpha(*p) || isDigit(*p) || *p == '-' || *p == '_' || *p == '.' || *p == ' ') {
            out.append(*p);
        } else {
            const char escape[] = {'%', kHex[c >> 4], kHex[c & 15]};
            out.append(string_view(escape, sizeof escape));
        }
    }
    return out.take();
}

char* cgiSpcToPlus(char* text) {
    for (char* p = text; p && *p; p++)
        if (*p == ' ') *p = '+';
    return text;
}
