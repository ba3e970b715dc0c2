#include "mailwrite_source.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "host_texts.h"
#include "kit/form_reader.h"
#include "kit/message.h"
#include "kit/page.h"
#include "kit/text.h"
#include "mailwrite_entries.h"
#include "mailwrite_lines.h"
#include "support/support.h"

namespace host {

namespace {

constexpr size_t kQuoteMax = 256 << 10;
constexpr size_t kImagePrefix = 17;  // of the name that an inline image has in a mail

/// The message that a request names, and its folder, which stays open.
struct Source {
    Source(const User& user, const Request& request)
        : folder(user, request.value("fldrname")),
          number(linkedMessage(folder, request)),
          message(folder, number, partPath(request.value("part"))) {}

    std::string subject() const { return oneLine(message.subject()); }
    std::vector<Address> addresses(const char* field) const {
        return parseAddresses(message.header(field), message.charSet());
    }
    /// The first text of that kind which is no attachment, at most `most` bytes of it.
    std::string text(const char* subType, size_t most) const {
        bool cut = false;
        for (MailBody* part : message.parts())
            if (isType(*part, kTextType, subType) && !part->fileName)
                return plainLines(message.text(*part, most, cut));
        return {};
    }

    Folder folder;
    int number;
    Message message;
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
    time_t sent = source.message.info()->date;
    struct tm local;
    if (localtime_r(&sent, &local)) strftime(date, sizeof date, "%Y-%m-%d %H:%M", &local);
    std::string text = source.text("plain", 2 * kQuoteMax);
    if (text.empty()) text = textOfHtml(source.text("html", 4 * kQuoteMax));
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

/// The message goes along as it is stored.
void forward(Form& form, const Source& source, FormFolder& folder) {
    std::string subject = source.subject(), name = subject.empty() ? "mail" : subject;
    form.subject = prefixed("Fwd: ", {"fwd:", "fw:"}, subject);
    std::replace(name.begin(), name.end(), '/', '_');
    File out(fopen(folder.newFile(FileKind::kForwarded, name).c_str(), "wxe"), fclose);
    if (!out) throw PageError(507, kTextStorageFull);
    const MailInfo& info = *source.message.info();
    FILE* file = source.message.file();
    if (fseeko(file, info.offset, SEEK_SET) == 0) strmXBit(out.get(), file, info.size);
    checkWritten(out.get());
}

/// Stores a part of a draft as a file of the form; the number of its key.
int storePart(const Source& source, MailBody& part, FileKind kind, FormFolder& folder) {
    std::string name = source.message.nameOf(part);
    bool isImage = kind == FileKind::kImage && name.size() > kImagePrefix && name[16] == '-';
    if (isImage) name.erase(0, kImagePrefix);
    std::string path = folder.newFile(kind, name);
    File out(fopen(path.c_str(), "wxe"), fclose);
    if (!out) throw PageError(507, kTextStorageFull);
    source.message.write(part, out.get());
    checkWritten(out.get());
    return atoi(path.c_str() + path.rfind('/') - 2);
}

void goOn(Form& form, const Source& source, FormFolder& folder) {
    std::string packed = source.message.header(kDraftField);
    form.to = addressText(source.addresses("To"));
    form.cc = addressText(source.addresses("Cc"));
    form.bcc = addressText(source.addresses("Bcc"));
    form.subject = source.subject();
    std::string html = source.text("html", kFormTextMax);
    form.isHtml = !html.empty();
    if (!packed.empty()) form.unpack(packed);
    form.body = form.isHtml ? html : source.text("plain", kFormTextMax);
    for (MailBody* part : source.message.parts()) {
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
    folder.setNote("draft", source.folder.nameOf(source.number));
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
