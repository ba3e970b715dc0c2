#include "text.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "support/support.h"

namespace host {

namespace {

class Converter {
  public:
    Converter(const char* target, const char* source) : handle_(msiconv_open(target, source)) {}
    ~Converter() {
        if (isOpen()) msiconv_close(handle_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    bool isOpen() const { return handle_ != reinterpret_cast<msiconv_t>(-1); }

    /// Converts up to the end, or the first byte that cannot be: takes what it read off `in`.
    bool convert(std::string_view& in, std::string& out) {
        char* from = const_cast<char*>(in.data());
        size_t left = in.size();
        bool done = step(&from, &left, out);
        in = in.substr(in.size() - left);
        return done;
    }
    /// Back to the initial shift state.
    void close(std::string& out) { step(nullptr, nullptr, out); }

  private:
    bool step(char** from, size_t* left, std::string& out) {
        char block[4096];
        for (;;) {
            char* to = block;
            size_t room = sizeof block;
            size_t result = msiconv(handle_, from, left, &to, &room);
            int error = errno;
            out.append(block, sizeof block - room);
            if (result != static_cast<size_t>(-1)) return true;
            if (error != E2BIG) return false;
        }
    }
    msiconv_t handle_;
};

/// Length of the character that starts the valid text `utf8`, and its code point.
std::pair<size_t, unsigned> firstCharacter(std::string_view utf8) {
    auto lead = static_cast<unsigned char>(utf8[0]);
    size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    unsigned code = length == 1 ? lead : lead & (0x7FU >> length);
    for (size_t i = 1; i < length && i < utf8.size(); i++)
        code = code << 6 | (static_cast<unsigned char>(utf8[i]) & 0x3F);
    return {std::min(length, utf8.size()), code};
}

std::string repaired(std::string_view bytes, Converter& converter) {
    std::string out;
    while (!converter.convert(bytes, out) && !bytes.empty()) {
        out += kReplacement;
        bytes.remove_prefix(1);
    }
    return out;
}

/// `utf8` in `set`; what it cannot hold is written by `other`, in ASCII.
template <typename Other>
std::string converted(const std::string& utf8, const char* set, Other other) {
    Converter converter(set, "UTF-8");
    if (!converter.isOpen()) return converted(utf8, "US-ASCII", other);
    std::string out, valid = isUtf8(utf8) ? std::string() : toUtf8(utf8, "UTF-8");
    std::string_view rest = valid.empty() ? utf8 : valid;
    // A converter looks far ahead before it refuses a character: behind one the next are few, too.
    for (size_t window = rest.size(); !rest.empty(); window *= 2) {
        size_t size = std::min(window, rest.size());
        while (size < rest.size() && (rest[size] & 0xC0) == 0x80) size++;
        std::string_view piece = rest.substr(0, size);
        bool done = converter.convert(piece, out);
        rest.remove_prefix(size - piece.size());
        if (done || rest.empty()) continue;
        converter.close(out);
        auto [length, code] = firstCharacter(rest);
        out += other(code);
        rest.remove_prefix(length);
        window = 1;
    }
    converter.close(out);
    return out;
}

bool isAscii(std::string_view bytes) {
    return std::none_of(bytes.begin(), bytes.end(), [](char c) { return c < 0; });
}

bool isUnreserved(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

}  // namespace

bool isUtf8(std::string_view bytes) {
    if (isAscii(bytes)) return true;
    Converter check("UTF-8", "UTF-8");
    std::string out;
    return check.convert(bytes, out) && bytes.empty();
}

std::string toUtf8(std::string_view bytes, const char* set) {
    if (set && strcmp(set, "UTF-8") == 0 && isAscii(bytes)) return std::string(bytes);
    Converter named("UTF-8", set && *set ? set : "");
    if (named.isOpen()) return repaired(bytes, named);
    if (isUtf8(bytes)) return std::string(bytes);
    Converter latin("UTF-8", "ISO-8859-1");
    return repaired(bytes, latin);
}

bool fitsInto(const std::string& utf8, const char* set) {
    Converter converter(set, "UTF-8");
    std::string_view rest = utf8;
    std::string out;
    return converter.isOpen() && converter.convert(rest, out) && rest.empty();
}

std::string toPage(const std::string& utf8, const char* set) {
    return converted(utf8, set, [](unsigned code) { return "&#" + std::to_string(code) + ";"; });
}

std::string toSet(const std::string& utf8, const char* set) {
    return converted(utf8, set, [](unsigned) { return "?"; });
}

std::string escaped(std::string_view utf8) {
    std::string out;
    out.reserve(utf8.size() + utf8.size() / 8);
    for (size_t i = 0; i < utf8.size(); i++) {
        char c = utf8[i];
        bool c1 =
            c == '\xC2' && i + 1 < utf8.size() && static_cast<unsigned char>(utf8[i + 1]) < 0xA0;
        if (c1) i++;  // U+0080 to U+009F
        if (c1 || (c >= 0 && c < ' ' && c != '\t' && c != '\n') || c == '\x7F') continue;
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&#39;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::string urlEncoded(std::string_view utf8) {
    constexpr const char* kHex = "0123456789ABCDEF";
    std::string out;
    for (char c : utf8) {
        auto byte = static_cast<unsigned char>(c);
        if (isUnreserved(c)) {
            out += c;
        } else {
            out += {'%', kHex[byte >> 4], kHex[byte & 15]};
        }
    }
    return out;
}

std::string shortened(const std::string& utf8, size_t most) {
    size_t end = 0;
    for (size_t n = 0; n < most && end < utf8.size(); n++)
        end += firstCharacter(std::string_view(utf8).substr(end)).first;
    return end < utf8.size() ? utf8.substr(0, end) + "..." : utf8;
}

std::string_view firstBytes(std::string_view utf8, size_t most) {
    if (utf8.size() <= most) return utf8;
    while (most > 0 && (utf8[most] & 0xC0) == 0x80) most--;
    return utf8.substr(0, most);
}

std::string sizeText(uint64_t bytes) {
    constexpr const char* kUnits[] = {"B", "KB", "MB", "GB"};
    double size = static_cast<double>(bytes);
    int unit = 0;
    for (; size >= 1000 && unit < 3; unit++) size /= 1024;
    char text[32];
    snprintf(text, sizeof text, unit ? "%.1f %s" : "%.0f %s", size, kUnits[unit]);
    return text;
}

std::string utf8Of(unsigned long code) {
    if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return kReplacement;
    if (code < 0x80) return {static_cast<char>(code)};
    int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    std::string out(1, static_cast<char>((0xF00UL >> (more + 1) & 0xFF) | code >> (6 * more)));
    for (int shift = 6 * (more - 1); shift >= 0; shift -= 6)
        out += static_cast<char>(0x80 | (code >> shift & 0x3F));
    return out;
}

bool isPlainAddress(std::string_view text) {
    constexpr std::string_view letters =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-.!#$%&'*+/=?^_`{|}~";
    size_t at = text.find('@');
    if (at == 0 || at >= text.size() - 1) return false;
    std::string_view mailbox = text.substr(0, at), host = text.substr(at + 1);
    return mailbox.find_first_not_of(letters) == mailbox.npos &&
           host.find_first_not_of(letters.substr(0, letters.find('!'))) == host.npos;
}

std::string takeText(char* heapText) {
    std::string text = heapText ? heapText : "";
    free(heapText);
    return text;
}

}  // namespace host
