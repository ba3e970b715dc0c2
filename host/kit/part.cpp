#include "part.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <exception>
#include <memory>
#include <new>

#include "support/support.h"
#include "text.h"

namespace host {

namespace {

constexpr size_t kNameMax = 120, kEndingMax = 12;
constexpr size_t kBlock = 1 << 16;

/// The receiver of a decoder's output. No exception passes through the library.
class Receiver {
  public:
    Receiver(const Take& take, bool delimited) : take_(take), delimited_(delimited) {}

    static ssize_t write(void* self, const char* bytes, size_t size) {
        auto& receiver = *static_cast<Receiver*>(self);
        try {
            return receiver.pass({bytes, size}) ? static_cast<ssize_t>(size) : 0;
        } catch (...) {
            receiver.failure_ = std::current_exception();
            return 0;
        }
    }

    void finish() {
        if (failure_) std::rethrow_exception(failure_);
        if (held_ == "\r") take_(held_);
    }

  private:
    /// Holds back what may be the line break at the end.
    bool pass(std::string_view bytes) {
        if (!delimited_) return take_(bytes);
        std::string piece = std::move(held_) + std::string(bytes);
        size_t end = piece.size();
        if (end > 0 && piece[end - 1] == '\n') end--;
        if (end > 0 && piece[end - 1] == '\r') end--;
        held_ = piece.substr(end);
        return end == 0 || take_(std::string_view(piece).substr(0, end));
    }

    const Take& take_;
    bool delimited_;
    std::string held_;
    std::exception_ptr failure_;
};

constexpr auto kCrcTable = [] {
    std::array<uint32_t, 256> table{};
    for (uint32_t n = 0; n < table.size(); n++) {
        uint32_t c = n;
        for (int bit = 0; bit < 8; bit++) c = c & 1 ? 0xEDB88320U ^ (c >> 1) : c >> 1;
        table[n] = c;
    }
    return table;
}();

/// U+200E, U+200F, U+202A to U+202E, U+2066 to U+2069: a name that is shown in another order than
/// it is written ("gpj.exe" as "exe.jpg").
bool isDirection(std::string_view at) {
    if (at.size() < 3 || at[0] != '\xE2') return false;
    auto low = static_cast<unsigned char>(at[2]);
    if (at[1] == '\x80') return low == 0x8E || low == 0x8F || (low >= 0xAA && low <= 0xAE);
    return at[1] == '\x81' && low >= 0xA6 && low <= 0xA9;
}

bool isReserved(char c) {
    return (c >= 0 && c < ' ') ||
           std::string_view("\x7F\"*/:<>?\\|").find(c) != std::string_view::npos;
}

template <size_t N>
bool isOneOf(const std::string& type, const char* const (&names)[N]) {
    return std::any_of(names, names + N,
                       [&](const char* name) { return strCaseCmp(type.c_str(), name) == 0; });
}

}  // namespace

bool isType(const MailBody& part, int type, const char* subType) {
    return part.type == type && (!subType || strCaseCmp(part.subType, subType) == 0);
}

std::string typeText(const MailBody& part) {
    bool known = part.type >= kAudioType && part.type <= kVideoType;
    std::string subType = strSafeAssign(part.subType);
    std::erase_if(subType, [](char c) {
        return !isalnum(static_cast<unsigned char>(c)) && c != '-' && c != '+' && c != '.' &&
               c != '_';
    });
    if (subType.empty() || subType.size() > 80) subType = "x-unknown";
    return std::string(mime_types[known ? part.type : 0]) + "/" + subType;
}

bool isPlainPicture(const MailBody& part) {
    static constexpr const char* kPictures[] = {"image/png",   "image/jpeg", "image/jpg",
                                                "image/pjpeg", "image/gif",  "image/webp",
                                                "image/bmp",   "image/avif"};
    return isOneOf(typeText(part), kPictures);
}

std::string downloadType(const MailBody& part) {
    static constexpr const char* kTypes[] = {"application/pdf", "application/zip", "text/plain"};
    std::string type = typeText(part);
    bool passive = isPlainPicture(part) || isOneOf(type, kTypes) || isType(part, kAudioType) ||
                   isType(part, kVideoType);
    return passive ? type : "application/octet-stream";
}

bool isEncoded(const MailBody& part) {
    return part.encoding == 2 || part.encoding == 3 || part.encoding == 7;
}

std::string cleanName(const std::string& name) {
    std::string clean;
    for (size_t i = name.find_last_of("/\\") + 1; i < name.size(); i++) {
        if (isDirection(std::string_view(name).substr(i))) {
            i += 2;
        } else if (!isReserved(name[i])) {
            clean += name[i];
        }
    }
    clean.erase(0, std::min(clean.size(), clean.find_first_not_of(". ")));
    clean.erase(clean.find_last_not_of(". ") + 1);
    size_t dot = clean.rfind('.');
    std::string ending =
        dot != std::string::npos && clean.size() - dot <= kEndingMax ? clean.substr(dot) : "";
    std::string cut = shortened(clean, kNameMax);
    return cut == clean ? clean : cut + ending;
}

std::string attachmentDisposition(const std::string& name) {
    std::string ascii = toSet(name, "US-ASCII");
    std::replace_if(
        ascii.begin(), ascii.end(), [](char c) { return isReserved(c) || c == '%'; }, '_');
    return "attachment; filename=\"" + ascii + "\"; filename*=UTF-8''" + urlEncoded(name);
}

void decodePart(MailBody& part, FILE* file, bool delimited, const Take& take) {
    Receiver receiver(take, delimited);
    FILE* out = fopencookie(&receiver, "w", {nullptr, Receiver::write, nullptr, nullptr});
    if (!out) throw std::bad_alloc();
    setvbuf(out, nullptr, _IOFBF, kBlock);
    mailDecodeAttachFile(&part, file, out);
    fclose(out);
    receiver.finish();
}

void Measure::add(std::string_view bytes) {
    size_ += bytes.size();
    for (char c : bytes)
        crc_ = kCrcTable[(crc_ ^ static_cast<unsigned char>(c)) & 0xFF] ^ (crc_ >> 8);
}

}  // namespace host
