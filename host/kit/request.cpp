#include "request.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>

#include "form_reader.h"
#include "host_texts.h"
#include "language.h"
#include "support/support.h"
#include "text.h"

namespace host {

namespace {

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    c = static_cast<char>(c | 0x20);
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

/// application/x-www-form-urlencoded; a "%" without two digits stands for itself.
std::string urlDecoded(std::string_view text) {
    std::string out;
    for (size_t i = 0; i < text.size(); i++) {
        int high = i + 2 < text.size() ? hexDigit(text[i + 1]) : -1;
        int low = high >= 0 ? hexDigit(text[i + 2]) : -1;
        if (text[i] == '%' && low >= 0) {
            out += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            out += text[i] == '+' ? ' ' : text[i];
        }
    }
    return out;
}

std::string readInput(long length) {
    if (length > kFormTextMax) throw PageError(413, kTextTooLarge);
    std::string body(static_cast<size_t>(length), 0);
    if (fread(body.data(), 1, body.size(), stdin) != body.size())
        throw PageError(400, kTextBadRequest);
    return body;
}

std::string boundaryOf(const std::string& contentType) {
    const char* at = strCaseStr(contentType.c_str(), "boundary=");
    std::string_view value = at ? std::string_view(at).substr(9) : std::string_view();
    if (value.starts_with('"')) {
        value.remove_prefix(1);
        value = value.substr(0, value.find('"'));
    } else {
        value = value.substr(0, value.find_first_of("; \t,"));
    }
    if (value.empty() || value.size() > 70) throw PageError(400, kTextBadRequest);
    return std::string(value);
}

/// `&#N;` as the characters that a browser could not write in the page's set.
std::string withoutReferences(const std::string& utf8) {
    std::string out;
    for (size_t i = 0; i < utf8.size(); i++) {
        std::string digits = utf8.compare(i, 2, "&#") == 0 ? utf8.substr(i + 2, 8) : "";
        digits.resize(std::min(digits.find(';'), digits.size()));
        size_t end = i + 2 + digits.size();
        bool number = !digits.empty() && end < utf8.size() && utf8[end] == ';' &&
                      digits.find_first_not_of("0123456789") == digits.npos;
        unsigned code = number ? static_cast<unsigned>(std::stoul(digits)) : 0;
        if (code >= 0x80 && code < 0x110000 && (code < 0xD800 || code > 0xDFFF)) {
            out += utf8Of(code);
            i = end;
        } else {
            out += utf8[i];
        }
    }
    return out;
}

/// The name of an uploaded file: old browsers send the path that it has there.
std::string fileName(const std::string& path) {
    std::string name = path.substr(std::min(path.size(), path.find_last_of("/\\") + 1));
    std::erase_if(name, [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; });
    return name;
}

}  // namespace

Request::Request(const std::string& uploadFolder) {
    CgiEnv env;
    cgiGetEnv(&env);
    post_ = strCaseCmp(env.requestMethod, "POST") == 0;
    try {
        if (post_) readBody(env.contentType, env.contentLength, uploadFolder);
        readPairs(env.queryString);
        convertTexts();
    } catch (...) {
        for (const Upload& upload : uploads_) unlink(upload.path.c_str());
        throw;
    }
}

Request::~Request() {
    for (const Upload& upload : uploads_) unlink(upload.path.c_str());
}

void Request::readBody(const std::string& contentType, long length,
                       const std::string& uploadFolder) {
    if (strNCaseCmp(contentType.c_str(), "multipart/form-data", 19) != 0) {
        readPairs(readInput(length));
        return;
    }
    FormReader(*this, boundaryOf(contentType), length, uploadFolder).read();
}

void Request::readPairs(std::string_view text) {
    while (!text.empty()) {
        std::string_view pair = text.substr(0, text.find('&'));
        text.remove_prefix(std::min(text.size(), pair.size() + 1));
        if (pair.empty()) continue;
        if (fields_.size() >= kFieldMax) throw PageError(400, kTextBadRequest);
        size_t equals = std::min(pair.find('='), pair.size());
        std::string_view value = pair.substr(std::min(pair.size(), equals + 1));
        fields_.push_back({urlDecoded(pair.substr(0, equals)), urlDecoded(value), ""});
    }
}

/// Browsers name the set of a form in its field _charset_; without it, what is no UTF-8 came from a
/// page in the language's set.
void Request::convertTexts() {
    std::string set = raw("_charset_");
    bool named = !set.empty();
    bool isUtf = !named || strCaseCmp(set.c_str(), "utf-8") == 0;
    auto convert = [&](const std::string& bytes) {
        if (isUtf && isUtf8(bytes)) return bytes;
        std::string text = toUtf8(bytes, isUtf ? pageLanguage().charSet : set.c_str());
        return named && !isUtf ? withoutReferences(text) : text;
    };
    for (Field& field : fields_) {
        field.name = convert(field.name);
        field.value = convert(field.raw);
    }
    for (Upload& upload : uploads_) upload.name = fileName(convert(upload.name));
}

const Request::Field* Request::find(const std::string& name) const {
    auto field = std::find_if(fields_.begin(), fields_.end(),
                              [&](const Field& f) { return f.name == name; });
    return field == fields_.end() ? nullptr : &*field;
}

std::string Request::value(const std::string& name) const {
    const Field* field = find(name);
    return field ? field->value : "";
}

std::string Request::raw(const std::string& name) const {
    const Field* field = find(name);
    return field ? field->raw : "";
}

std::vector<std::string> Request::values(const std::string& name) const {
    std::vector<std::string> all;
    for (const Field& field : fields_)
        if (field.name == name) all.push_back(field.value);
    return all;
}

long Request::number(const std::string& name, long least, long most, long otherwise) const {
    std::string text = value(name);
    char* end = nullptr;
    errno = 0;
    long n = strtol(text.c_str(), &end, 10);
    bool good = !text.empty() && !*end && errno == 0 && n >= least && n <= most;
    return good ? n : otherwise;
}

bool Request::has(const std::string& name) const {
    return find(name) != nullptr;
}

}  // namespace host
