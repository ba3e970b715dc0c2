#include "mailwrite_source.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <sstream>

#include "host_texts.h"
#include "kit/folder.h"
#include "kit/mail_text.h"
#include "kit/page.h"
#include "kit/text.h"
#include "mailwrite_entries.h"
#include "mailwrite_lines.h"
#include "support/support.h"

namespace host {

namespace {

constexpr int kMessageType = 4, kTextType = 6;    // places in mime_types
constexpr int kQuotedPrintable = 2, kBase64 = 3;  // places in encoding
constexpr int kBodyMax = 1 << 20, kQuoteMax = 256 << 10;
constexpr size_t kImagePrefix = 17;  // of the name that an inline image has in a mail

bool isType(const MailBody& part, int type, const char* subType) {
    return part.type == type && strCaseCmp(part.subType, subType) == 0;
}

/// A message of a folder, which stays open, or one that stands in it: "part=2.1" is part 1 of the
/// message that is part 2.
class Source {
  public:
    Source(const User& user, const Request& request)
        : folder_(user, request.value("fldrname")),
          n_(folder_.find(static_cast<int>(request.number("select", 0, FLDR_MAX_MSGS, 0)),
                          request.value("msgid"))),
          info_(nullptr, [](MailInfo* info) { mailFree(&info); }) {
        if (!n_) throw PageError(404, kTextNoSuchMessage);
        load(entry().offset, entry().size);
        std::istringstream path(request.value("part"));
        for (std::string number; std::getline(path, number, '.');) enter(number);
    }
    const FldrMsg& entry() const { return folder_.entry(n_); }
    const Folder& folder() const { return folder_; }
    const MailInfo& info() const { return *info_; }
    const std::vector<MailBody*>& parts() const { return parts_; }
    std::string value(const char* field) const { return headerValue(header_, field); }
    std::string subject() const { return oneLine(headerText(value("Subject"), charSet_)); }
    std::vector<Address> addresses(const char* field) const {
        return parseAddresses(value(field), charSet_);
    }

    /// The first text of that kind which is no attachment, in UTF-8, at most kBodyMax bytes of it.
    std::string text(const char* subType) const {
        for (const MailBody* part : parts_) {
            if (!isType(*part, kTextType, subType) || part->fileName) continue;
            MailBody start = *part;
            start.bodySize = std::min(start.bodySize, kBodyMax);
            char* bytes = nullptr;
            size_t size = 0;
            FILE* out = open_memstream(&bytes, &size);
            if (!out) throw std::bad_alloc();
            mailDecodeAttachFile(&start, folder_.file(), out);
            bool good = fclose(out) == 0;
            std::string decoded(bytes ? bytes : "", bytes && good ? size : 0);
            free(bytes);
            return plainLines(mailToUtf8(decoded, strSafeAssign(part->charSet)));
        }
        return {};
    }
    std::string nameOf(const MailBody& part) const {
        std::string block =
            readHeader(folder_.file(), part.offset, part.bodyOffset - long{part.offset});
        return headerParameter(headerValue(block, "Content-Type"), "name", charSet_);
    }

    /// The message as it lies in the folder, with a From_ line.
    void copy(FILE* out) const {
        bool hasFromLine = offset_ == entry().offset;
        if (!hasFromLine) fprintf(out, "From - %s\n", mailGetRFC822FromDate(info().date));
        if (fseeko(folder_.file(), offset_, SEEK_SET) == 0) strmXBit(out, folder_.file(), size_);
    }

  private:
    void load(int offset, int size) {
        offset_ = offset;
        size_ = size;
        info_.reset(mailGetHeaderInfo(offset, size, folder_.file()));
        if (!info_) throw std::bad_alloc();
        mailParseBody(info_.get(), folder_.file());
        charSet_ = mailGetCharSet(info_->body);
        header_ =
            readHeader(folder_.file(), info_->offset, info_->bodyOffset - long{info_->offset});
        parts_.clear();
        MailBodyList** index = mailGetBody(info_->body);
        for (MailBodyList** at = index; at && *at; at++) parts_.push_back((*at)->body);
        mailFreeBodyIdx(index);
    }
    void enter(const std::string& number) {
        size_t n = strtoul(number.c_str(), nullptr, 10);
        bool isMessage =
            n >= 1 && n <= parts_.size() && isType(*parts_[n - 1], kMessageType, "rfc822") &&
            parts_[n - 1]->encoding != kQuotedPrintable && parts_[n - 1]->encoding != kBase64;
        if (!isMessage) throw PageError(404, kTextNoSuchMessage);
        load(parts_[n - 1]->bodyOffset, parts_[n - 1]->bodySize);
    }

    Folder folder_;
    int n_, offset_ = 0, size_ = 0;
    std::unique_ptr<MailInfo, void (*)(MailInfo*)> info_;
    std::string header_, charSet_;
    std::vector<MailBody*> parts_;
};

/// "Re: " or "Fwd: " and the subject, which may have it already.
std::string prefixed(const char* prefix, std::initializer_list<const char*> known,
                     const std::string& subject) {
    for (const char* word : known)
        if (strNCaseCmp(subject.c_str(), word, static_cast<int>(strlen(word))) == 0) return subject;
    return prefix + subject;
}

void addOthers(std::vector<Address>& list, const std::vector<Address>& more,
               const std::vector<Address>& unwanted, const std::string& own) {
    auto stands = [](const std::vector<Address>& in, const Address& a) {
        return std::any_of(in.begin(), in.end(),
                           [&](const Address& b) { return b.isSame(a.mail); });
    };
    for (const Address& a : more)
        if (!a.isSame(own) && !stands(unwanted, a) && !stands(list, a)) list.push_back(a);
}

std::string quoted(const Source& source, const std::string& sender) {
    char date[64] = "";
    time_t sent = source.info().date;
    struct tm local;
    if (localtime_r(&sent, &local)) strftime(date, sizeof date, "%Y-%m-%d %H:%M", &local);
    std::string text = source.text("plain");
    if (text.empty()) text = textOfHtml(source.text("html"));
    text = text.substr(0, text.find_last_not_of("\n \t") + 1);
    if (text.size() > kQuoteMax) text = text.substr(0, text.rfind('\n', kQuoteMax)) + "\n[...]";
    std::string line = message(kTextWroteOn);
    line = takeText(strConvTokenStr(line.c_str(), "[date]", date));
    line = takeText(strConvTokenStr(line.c_str(), "[name]", sender.c_str()));
    std::string lines = takeText(strConvTokenStr(text.c_str(), "\n", "\n> "));
    return "\n\n" + line + "\n> " + lines + "\n";
}

void reply(Form& form, const Source& source, const User& user, bool toAll) {
    std::string own = user.address();
    std::vector<Address> from = source.addresses("From"), to = source.addresses("Reply-To");
    if (to.empty()) to = from;
    bool isOwn = !from.empty() && from[0].isSame(own);
    if (isOwn) to = source.addresses("To");
    std::vector<Address> cc;
    if (toAll) {
        if (!isOwn) addOthers(to, source.addresses("To"), {}, own);
        addOthers(cc, source.addresses("Cc"), to, own);
    }
    form.to = addressText(to);
    form.cc = addressText(cc);
    form.subject = prefixed("Re: ", {"re:", "re["}, source.subject());
    std::string name = from.empty() ? "" : from[0].name.empty() ? from[0].mail : from[0].name;
    form.body = quoted(source, name);
}

/// The message goes along as it lies in the folder.
void forward(Form& form, const Source& source, FormFolder& folder) {
    std::string subject = source.subject(), name = subject.empty() ? "mail" : subject;
    form.subject = prefixed("Fwd: ", {"fwd:", "fw:"}, subject);
    std::replace(name.begin(), name.end(), '/', '_');
    File out(fopen(folder.newFile(FileKind::kForwarded, name).c_str(), "wxe"), fclose);
    if (!out) throw PageError(507, kTextStorageFull);
    source.copy(out.get());
    checkWritten(out.get());
}

/// Stores a part of a draft as a file of the form; the number of its key.
int storePart(const Source& source, MailBody& part, FileKind kind, FormFolder& folder) {
    std::string name = source.nameOf(part);
    bool isImage = kind == FileKind::kImage && name.size() > kImagePrefix && name[16] == '-';
    if (isImage) name.erase(0, kImagePrefix);
    std::string path = folder.newFile(kind, name);
    File out(fopen(path.c_str(), "wxe"), fclose);
    if (!out) throw PageError(507, kTextStorageFull);
    if (kind == FileKind::kForwarded) fprintf(out.get(), "From - %s\n", mailGetRFC822FromDate(0));
    mailDecodeAttachFile(&part, source.folder().file(), out.get());
    checkWritten(out.get());
    return atoi(path.c_str() + path.rfind('/') - 2);
}

void goOn(Form& form, const Source& source, FormFolder& folder) {
    std::string packed = source.value(kDraftField);
    form.to = addressText(source.addresses("To"));
    form.cc = addressText(source.addresses("Cc"));
    form.bcc = addressText(source.addresses("Bcc"));
    form.subject = source.subject();
    std::string html = source.text("html");
    form.isHtml = !html.empty();
    if (!packed.empty()) form.unpack(packed);
    form.body = form.isHtml ? html : source.text("plain");
    for (MailBody* part : source.parts()) {
        bool isText = part->type == kTextType && !part->fileName;
        if (isText) continue;
        FileKind kind = part->contentId                         ? FileKind::kImage
                        : isType(*part, kMessageType, "rfc822") ? FileKind::kForwarded
                                                                : FileKind::kAttached;
        int number = storePart(source, *part, kind, folder);
        if (kind == FileKind::kImage) form.body = withoutImage(form.body, part->contentId, number);
    }
    if (form.isHtml && form.body.starts_with(kHtmlStart)) {
        form.body.erase(0, strlen(kHtmlStart));
        form.body.resize(std::min(form.body.rfind(kHtmlEnd), form.body.size()));
    }
    form.body.resize(form.body.find_last_not_of('\n') + 1);
    folder.setNote("draft", messageKey(source.entry()));
}

std::string mailtoAddress(const std::string& text) {
    std::string address = strNCaseCmp(text.c_str(), "mailto:", 7) == 0 ? text.substr(7) : text;
    return oneLine(address.substr(0, address.find('?')));
}

}  // namespace

void fillForm(Form& form, const Request& request, const User& user, FormFolder& folder) {
    std::string command = request.value("cmd");
    if (command.empty() || command == "new") {
        form.to = mailtoAddress(request.value("to"));
        return;
    }
    bool isReply = command == "reply" || command == "replyall";
    if (!isReply && command != "forward" && command != "draft")
        throw PageError(400, kTextBadRequest);
    if (command == "draft" && request.value("fldrname") != "drafts")
        throw PageError(400, kTextBadRequest);
    Source source(user, request);
    if (isReply) return reply(form, source, user, command == "replyall");
    return command == "forward" ? forward(form, source, folder) : goOn(form, source, folder);
}

}  // namespace host
