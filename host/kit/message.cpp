#include "message.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <new>

#include "host_texts.h"
#include "support/support.h"
#include "text.h"

namespace host {

namespace {

constexpr size_t kLevelsMax = 100;

[[noreturn]] void missing() {
    throw PageError(404, kTextNoSuchPart);
}

/// Texts that are forms of one body where they stand side by side.
bool isBodyForm(const MailBody& part) {
    return !part.fileName && (isType(part, kTextType, "plain") || isType(part, kTextType, "html") ||
                              isType(part, kTextType, "enriched"));
}

/// Whether `part` is one of several forms of a text: a direct part of a multipart/alternative.
bool isAlternative(const MailBody* node, const MailBody& part) {
    for (; node; node = node->next) {
        if (isType(*node, kMultipartType, "alternative"))
            for (const MailBody* child = node->child; child; child = child->next)
                if (child == &part) return true;
        if (isAlternative(node->child, part)) return true;
    }
    return false;
}

/// The ending for a part that brings no name.
std::string extensionOf(const MailBody& part) {
    if (isType(part, kMessageType, "rfc822")) return ".eml";
    if (isType(part, kTextType, "html")) return ".html";
    if (isType(part, kTextType, "calendar")) return ".ics";
    if (isType(part, kTextType) || isType(part, kMessageType)) return ".txt";
    if (isType(part, kImageType)) return "." + typeText(part).substr(strlen("image/"));
    return ".bin";
}

}  // namespace

PartPath partPath(const std::string& text) {
    PartPath path;
    const char *at = text.data(), *end = at + text.size();
    while (at != end) {
        int number = 0;
        auto [rest, error] = std::from_chars(at, end, number);
        if (error != std::errc() || number < 1 || path.size() == kLevelsMax) missing();
        path.push_back(number);
        at = rest;
        if (at != end && (*at++ != '.' || at == end)) missing();
    }
    return path;
}

std::string pathText(const PartPath& path) {
    std::string text;
    for (int number : path) text += (text.empty() ? "" : ".") + std::to_string(number);
    return text;
}

int linkedMessage(const Folder& folder, const Request& request) {
    int n = folder.find(static_cast<int>(request.number("select", 1, FLDR_MAX_MSGS, 0)),
                        request.value("msgid"));
    if (!n) throw PageError(404, kTextNoSuchMessage);
    return n;
}

Message::Message(const Folder& folder, int n, const PartPath& path)
    : file_(folder.file(), [](FILE*) {}), info_(nullptr, [](MailInfo* info) { mailFree(&info); }) {
    read(folder.entry(n).offset, folder.entry(n).size);
    for (int number : path) enter(part(number));
}

void Message::read(int offset, int size) {
    info_.reset(mailGetHeaderInfo(offset, size, file()));
    if (!info_) throw std::bad_alloc();
    mailParseBody(info_.get(), file());
    parts_.clear();
    MailBodyList** index = mailGetBody(root());
    for (MailBodyList** at = index; at && *at; at++) parts_.push_back((*at)->body);
    mailFreeBodyIdx(index);
    charSet_ = mailGetCharSet(root());
    header_ = readHeader(file(), info_->offset, info_->bodyOffset - long{info_->offset});
}

/// Goes on with the message inside a part. One that is encoded, which RFC 2046 forbids but some
/// programs do, is decoded into a file of its own.
void Message::enter(MailBody& part) {
    if (!isType(part, kMessageType, "rfc822")) missing();
    int offset = part.bodyOffset, size = part.bodySize;
    if (isEncoded(part)) {
        std::shared_ptr<FILE> copy(tmpfile(), [](FILE* f) { f ? fclose(f) : 0; });
        if (!copy) throw PageError(507, kTextStorageFull);
        write(part, copy.get());
        if (fflush(copy.get()) != 0 || ferror(copy.get())) throw PageError(507, kTextStorageFull);
        offset = 0;
        size = static_cast<int>(fileStrmGetSize(copy.get()));
        info_.reset();
        file_ = copy;
    }
    read(offset, size);
}

MailBody& Message::part(int number) const {
    if (number < 1 || static_cast<size_t>(number) > parts_.size()) missing();
    return *parts_[static_cast<size_t>(number) - 1];
}

std::string Message::nameOf(const MailBody& part) const {
    std::string block = header_;
    if (&part != root())
        block = readHeader(file(), part.offset, part.bodyOffset - long{part.offset});
    for (auto [field, parameter] :
         {std::pair{"Content-Disposition", "filename"}, std::pair{"Content-Type", "name"}}) {
        std::string name = headerParameter(headerValue(block, field), parameter, charSet_);
        if (!name.empty()) return name;
    }
    return part.fileName ? mailToUtf8(part.fileName, charSet_) : "";
}

std::string Message::saveName(int number) const {
    MailBody& body = part(number);
    std::string name = cleanName(nameOf(body));
    if (name.empty() && isType(body, kMessageType, "rfc822") && !isEncoded(body)) {
        std::string header = readHeader(file(), body.bodyOffset, body.bodySize);
        name = cleanName(headerText(headerValue(header, "Subject"), charSet_));
        if (!name.empty()) name += ".eml";
    }
    return name.empty() ? "part-" + std::to_string(number) + extensionOf(body) : name;
}

/// What ends a part of a multipart is the line break before its delimiter, and what ends a whole
/// message is the empty line before the next one in the folder. Base64 takes no notice of them, and
/// a quoted-printable line that ends with "=" has none.
bool Message::isDelimited(const MailBody& part) const {
    constexpr int kQuotedPrintable = 2;
    bool whole = &part == root() || root()->type == kMultipartType;
    if (!whole || (isEncoded(part) && part.encoding != kQuotedPrintable)) return false;
    if (part.encoding != kQuotedPrintable) return true;
    std::string end = readHeader(file(), long{part.bodyOffset} + part.bodySize - 3, 3);
    return !end.ends_with("=\n") && !end.ends_with("=\r\n");
}

void Message::decode(MailBody& part, const Take& take) const {
    decodePart(part, file(), isDelimited(part), take);
}

Measure Message::measure(MailBody& part) const {
    Measure m;
    decode(part, [&m](std::string_view bytes) {
        m.add(bytes);
        return true;
    });
    return m;
}

void Message::write(MailBody& part, FILE* out) const {
    decode(part, [out](std::string_view bytes) {
        return fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size();
    });
}

std::string Message::text(MailBody& part, size_t most, bool& cut) const {
    std::string bytes;
    bool longer = false;
    decode(part, [&](std::string_view piece) {
        longer = piece.size() > most - bytes.size();
        bytes += piece.substr(0, most - bytes.size());
        return !longer;
    });
    if (longer) bytes.resize(std::min(bytes.size(), bytes.rfind('\n')));  // no half character
    cut = cut || longer;
    return mailToUtf8(bytes, strSafeAssign(part.charSet));
}

int Message::bodyPart() const {
    auto isBody = [html = mailChkBodyType(root()) == 2](const MailBody* part) {
        return !part->fileName && isType(*part, kTextType, html ? "html" : nullptr);
    };
    auto found = std::find_if(parts_.begin(), parts_.end(), isBody);
    return found == parts_.end() ? 0 : static_cast<int>(found - parts_.begin()) + 1;
}

std::vector<int> Message::attachments() const {
    std::vector<int> numbers;
    int body = bodyPart();
    for (int n = 1; n <= static_cast<int>(parts_.size()); n++) {
        const MailBody& one = part(n);
        bool shown = n == body || isType(one, kMessageType, "delivery-status") ||
                     (body && isBodyForm(one) && isAlternative(root(), one));
        if (!shown) numbers.push_back(n);
    }
    return numbers;
}

}  // namespace host
