#include "mailwrite_compose.h"

#include <algorithm>
#include <cstring>
#include <ctime>

#include "host_texts.h"
#include "kit/page.h"
#include "kit/text.h"
#include "mailwrite_entries.h"
#include "mailwrite_lines.h"
#include "support/host.h"
#include "support/support.h"

namespace host {

namespace {

enum Code { kRaw = 1, kQuotedPrintable = 2, kBase64 = 3 };
constexpr int kPlainBody = 1, kHtmlBody = 2, kAlwaysMultipart = 2;
constexpr size_t kAddressMax = 2000;  // bytes of an address in angle brackets
constexpr size_t kLineMax = 990;      // bytes of a line of mail (RFC 5322 section 2.1.1)

/// The set in which the library takes the texts of a message that is sent in `charSet`.
std::string pageSetOf(const std::string& charSet) {
    return getDefaultCharSet(charSet.c_str());
}

bool isAscii(const std::string& text) {
    return std::none_of(text.begin(), text.end(), [](char c) { return c < 0; });
}

/// Whether `mail` has none of the characters that only the extended forms of its set have (UHC,
/// HKSCS): browsers read them under the set's name, other programs do not.
bool isUnextended(const std::string& mail, const std::string& charSet) {
    bool isKorean = charSet == "euc-kr";
    if (!isKorean && charSet != "big5") return true;
    for (size_t i = 0; i + 1 < mail.size(); i++) {
        if (mail[i] >= 0) continue;
        auto lead = static_cast<unsigned char>(mail[i]),
             trail = static_cast<unsigned char>(mail[++i]);
        int code = lead << 8 | trail;
        bool isPlain =
            isKorean ? lead >= 0xA1 && trail >= 0xA1
                     : (code >= 0xA140 && code <= 0xC67E) || (code >= 0xC940 && code <= 0xF9D5);
        if (!isPlain) return false;
    }
    return true;
}

/// Whether a reader of `charSet` gets the text as it was typed.
bool arrives(const std::string& text, const std::string& charSet, bool mayBeExtended) {
    if (isAscii(text) || charSet == "UTF-8") return true;
    if (charSet == "us-ascii" || !fitsInto(text, pageSetOf(charSet).c_str())) return false;
    std::string page = toSet(text, pageSetOf(charSet).c_str());
    std::string mail = takeText(mailEncodeCharSet(page.c_str(), charSet.c_str()));
    return toUtf8(mail, charSet.c_str()) == text && (mayBeExtended || isUnextended(mail, charSet));
}

std::vector<std::string> candidates(const Form& form) {
    if (form.charSet != kAutomaticSet) return {form.charSet};
    // Kana stand in the Chinese and Korean sets as well, accented letters in the simplified one.
    return {"us-ascii",   mailGetLangCharSet(pageLanguage().code),
            "iso-8859-1", "iso-2022-jp",
            "gb2312",     "big5",
            "euc-kr",     "UTF-8"};
}

/// A name as a word in the page set: some bytes of Shift-JIS and Big5 characters are quotes,
/// backslashes or at signs to the address parser, which decodes words itself.
std::string wordOf(const std::string& name, const std::string& pageSet) {
    std::string text = toSet(name, pageSet.c_str());
    std::string base64(2 * text.size() + 8, '\0');
    funcEncodeBase64(base64.data(), text.c_str(), 0, 1);
    return "=?" + pageSet + "?B?" + base64.c_str() + "?=";
}

std::string addressesFor(const std::vector<Address>& list, const std::string& pageSet) {
    std::string text;
    for (const Address& a : list) {
        bool isWord = !isAscii(a.name) && pageSet != "UTF-8";
        Address written = isWord ? Address{wordOf(a.name, pageSet), a.mail} : a;
        text += (text.empty() ? "" : ", ") + written.text();
    }
    return text;
}

/// The composer takes markup off plain text. A "<" that would start a tag gets a blank behind it,
/// so that nothing typed is lost; addresses in angle brackets lose only these, and stay.
std::string guarded(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); i++) {
        out += text[i];
        if (text[i] != '<' || i + 1 == text.size()) continue;
        char next = text[i + 1];
        bool isTag =
            (next >= 'a' && next <= 'z') || (next >= 'A' && next <= 'Z') || strchr("/!?", next);
        if (!isTag) continue;
        std::string inner = text.substr(i, kAddressMax);
        inner.resize(std::min(inner.find_first_of("> \t\n"), inner.size() - 1) + 1);
        bool isAddress =
            inner.back() == '>' && next != '/' && next != '!' &&
            (inner.find('@') != std::string::npos || inner.find("://") != std::string::npos) &&
            takeText(strStripHTMLTag(inner.c_str())) == inner.substr(1, inner.size() - 2);
        if (!isAddress) out += ' ';
    }
    return out;
}

std::string lineBreaksAsTags(const std::string& escapedText) {
    return takeText(strConvTokenStr(escapedText.c_str(), "\n", "<br>\n"));
}

std::string plainBody(const Form& form, const Sender& sender) {
    std::string text = form.body;
    if (form.signature && !sender.signature.empty()) text += "\n\n-- \n" + sender.signature;
    return guarded(text);
}

/// A document, which the composer sends as it is; what is none it would take for plain text.
std::string htmlBody(const Form& form, const Sender& sender, const FormFolder& folder) {
    std::string text = withImages(form.body, imagesOf(folder));
    if (form.signature && !sender.signature.empty())
        text += "\n<p>-- <br>\n" + lineBreaksAsTags(escaped(sender.signature)) + "</p>\n";
    bool isDocument = strCaseStr(text.c_str(), "<HTML>") && strCaseStr(text.c_str(), "</HTML>");
    return isDocument ? text : kHtmlStart + text + kHtmlEnd;
}

bool hasRawTrouble(const std::string& text, const std::string& charSet) {
    // The composer calls raw text of all "iso-" sets 7-bit.
    if (charSet == "iso-8859-1" && !isAscii(text)) return true;
    for (size_t at = 0; at < text.size();) {
        size_t end = std::min(text.find('\n', at), text.size());
        if (end - at > kLineMax / 2 || text.compare(at, 5, "From ") == 0) return true;
        at = end + 1;
    }
    return false;
}

}  // namespace

std::optional<std::string> chooseCharSet(const Form& form, const Sender& sender,
                                         const Recipients& recipients,
                                         const std::vector<FormFile>& files) {
    std::string all = form.subject + form.body + sender.name;
    if (form.signature) all += sender.signature;
    for (const auto* list : {&recipients.to, &recipients.cc, &recipients.bcc})
        for (const Address& a : *list) all += a.name;
    for (const FormFile& file : files)
        if (file.kind != FileKind::kForwarded) all += file.name;
    for (const std::string& charSet : candidates(form))
        if (arrives(all, charSet, form.charSet != kAutomaticSet)) return charSet;
    return std::nullopt;
}

ComposedMessage::ComposedMessage(const Form& form, const Sender& sender,
                                 const Recipients& recipients, const FormFolder& folder,
                                 const std::string& charSet)
    : id_(FormFolder::newId().substr(0, 12) + "." + mailGetMsgId()),
      charSet_(charSet),
      composed_(temporaryFile()) {
    std::string pageSet = pageSetOf(charSet);
    Entries entries(folder, pageSet, form.isHtml);
    std::string from = addressesFor({{sender.name, sender.address}}, pageSet);
    std::string body = form.isHtml ? htmlBody(form, sender, folder) : plainBody(form, sender);
    bool isRawSafe = form.bodyEncoding != kRaw || !hasRawTrouble(body, charSet);
    int encoding = isRawSafe ? form.bodyEncoding : int{kQuotedPrintable};
    // The receipt is a picture in the HTML part, so plain text gets one; only the parts of a
    // multipart message are converted from the page set.
    int bodyType = form.isHtml || form.receipt ? kHtmlBody : kPlainBody;
    int sendMode = strCaseCmp(pageSet.c_str(), charSet.c_str()) == 0 ? 0 : kAlwaysMultipart;
    mailCompose(from.c_str(), addressesFor(recipients.to, pageSet).c_str(), sender.replyTo.c_str(),
                addressesFor(recipients.cc, pageSet).c_str(), "", form.priority, bodyType,
                toSet(form.subject, pageSet.c_str()).c_str(), toSet(body, pageSet.c_str()).c_str(),
                entries.list(), form.headerEncoding, encoding, sendMode, charSet.c_str(),
                id_.c_str(), conf.mailDomainName, form.receipt, composed_.get());
    checkWritten(composed_.get());
    if (fileStrmGetSize(composed_.get()) == 0) throw PageError(507, kTextStorageFull);
}

File ComposedMessage::sent() const {
    File out = temporaryFile();
    copyMessage(composed_.get(), "", CopyFor::kSending, out.get());
    checkWritten(out.get());
    return out;
}

File ComposedMessage::kept(const Kept& additions) const {
    std::string fields;
    if (!additions.bcc.empty()) {
        MailAddress* list =
            mailGetAddrList(addressesFor(additions.bcc, pageSetOf(charSet_)).c_str());
        fields = "Bcc: " + takeText(mailGetAddrStr(list, charSet_.c_str())) + "\n";
        mailFreeAddress(&list);
    }
    if (!additions.draft.empty())
        fields += std::string(kDraftField) + ": " +
                  takeText(strConvTokenStr(additions.draft.c_str(), "\n", "\n\t")) + "\n";
    File out = temporaryFile();
    copyMessage(composed_.get(), fields, CopyFor::kFolder, out.get());
    checkWritten(out.get());
    return out;
}

}  // namespace host
