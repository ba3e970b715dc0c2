// The body of a message, printed by the library's callback as a response of its own. What a mail
// says about its character sets is often wrong, and its parts can be in different ones: the texts
// that the callback prints are first brought into one page set that holds them, in a file of their
// own, to which the nodes of the message then point.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "host_texts.h"
#include "kit/page.h"
#include "kit/part.h"
#include "kit/text.h"
#include "mailview.h"
#include "support/page.h"

namespace host {

namespace {

constexpr size_t kShownMax = 4 << 20;        // bytes of the texts
constexpr const char* kPageText = "x-page";  // a set that no library knows: text stays as it is
constexpr int kEightBit = 1;

struct Shown {
    MailBody* part;
    std::string text;  // UTF-8
};

void setText(char*& field, const std::string& text) {
    free(field);
    field = strdup(text.c_str());
}

/// Texts that the callback would print with whatever markup they hold.
bool needsEscaping(const Shown& shown) {
    const MailBody& part = *shown.part;
    if (isType(part, kTextType, "html")) return false;
    bool escapes = isType(part, kTextType, "plain") || isType(part, kTextType, "enriched");
    return !escapes || shown.text.find("cid:") != std::string::npos;
}

void escape(Shown& shown) {
    if (isType(*shown.part, kMessageType)) {
        shown.text = escaped(shown.text);
    } else {
        setText(shown.part->subType, "x-page");
        std::string linked = takeText(strToHyperLink(shown.text.c_str()));
        shown.text = takeText(strConvHTMLStr(linked.c_str(), "\n"));
    }
    shown.text = takeText(strConvTokenStr(shown.text.c_str(), "cid:", "cid&#58;"));
}

class Body {
  public:
    explicit Body(const Message& message) : message_(message) {
        if (int n = message.bodyPart()) add(message.part(n));
        for (MailBody* part : message.parts())
            if (isType(*part, kMessageType, "delivery-status")) add(*part);
        choosePageSet();
        rename();
        store();
    }

    const std::string& pageSet() const { return pageSet_; }
    FILE** file() { return &file_; }
    bool isCut() const { return cut_; }
    bool isEmpty() const { return shown_.empty(); }

  private:
    void add(MailBody& part) {
        shown_.push_back({&part, message_.text(part, room_, cut_)});
        room_ -= std::min(room_, shown_.back().text.size());
        if (needsEscaping(shown_.back())) escape(shown_.back());
    }

    /// The set of the body; one for all texts.
    void choosePageSet() {
        std::string all;
        for (const Shown& shown : shown_) all += shown.text;
        const char* own = shown_.empty() ? nullptr : shown_[0].part->charSet;
        pageSet_ = mailPageSet(all, own ? own : message_.charSet());
        if (pageSet_.empty()) pageSet_ = "UTF-8";
    }

    /// Names that stand below pictures.
    void rename() {
        for (MailBody* part : message_.parts())
            if (part->fileName)
                setText(part->fileName, toSet(message_.nameOf(*part), pageSet_.c_str()));
    }

    void store() {
        owned_.reset(tmpfile());
        file_ = owned_.get();
        if (!file_) throw PageError(507, kTextStorageFull);
        for (Shown& shown : shown_) {
            std::string text = toPage(shown.text, pageSet_.c_str());
            shown.text.clear();
            shown.part->bodyOffset = static_cast<int>(ftell(file_));
            shown.part->bodySize = static_cast<int>(text.size());
            shown.part->encoding = kEightBit;
            setText(shown.part->charSet, kPageText);
            fwrite(text.data(), 1, text.size(), file_);
        }
        if (fflush(file_) != 0) throw PageError(507, kTextStorageFull);
    }

    const Message& message_;
    std::vector<Shown> shown_;
    std::string pageSet_;
    std::unique_ptr<FILE, int (*)(FILE*)> owned_{nullptr, fclose};
    FILE* file_ = nullptr;
    size_t room_ = kShownMax;
    bool cut_ = false;
};

/// The language that a page set stands for, as far as the mail has named it.
std::string languageOf(const std::string& charSet) {
    struct Row {
        const char *set, *tag;
    };
    constexpr Row kRows[] = {{"EUC-KR", "ko"},
                             {"SHIFT-JIS", "ja"},
                             {"GB2312", "zh-CN"},
                             {"HZ", "zh-CN"},
                             {"BIG5", "zh-TW"}};
    for (const Row& row : kRows)
        if (strcmp(getDefaultCharSet(charSet.c_str()), row.set) == 0)
            return std::string(" lang=\"") + row.tag + "\"";
    return "";
}

void printNote(int text, const std::string& pageSet) {
    printf("<p>%s</p>\n", toPage(escaped(message(text)), pageSet.c_str()).c_str());
}

void printIsolation(bool remotePictures) {
    const std::string pictures = remotePictures ? "'self' data: http: https:" : "'self' data:";
    headerLine("Content-Security-Policy",
               "sandbox allow-same-origin allow-popups allow-popups-to-escape-sandbox; "
               "default-src 'none'; img-src " +
                   pictures +
                   "; style-src 'unsafe-inline'; "
                   "form-action 'none'; base-uri 'none'; frame-ancestors 'self'");
    headerLine("Referrer-Policy", "no-referrer");
    headerLine("X-Content-Type-Options", "nosniff");
    headerLine("Cache-Control", "private, no-store");
}

}  // namespace

void showBody(const View& view) {
    Message message = view.open();
    std::string charSet = message.charSet();
    Body body(message);
    // Goes into the library's links as it stands.
    std::string id = urlEncoded(view.id());
    if (!view.path.empty()) id += "&part=" + pathText(view.path);
    MailView shown{};
    shown.message = message.root();
    shown.file = body.file();
    shown.select = view.number;
    shown.msgId = id.data();
    snprintf(shown.fldrName, sizeof shown.fldrName, "%s", view.folder.name().c_str());

    printIsolation(view.request.value("images") == "1");
    pageSetCharSet(htmlCharSet(body.pageSet().c_str()));
    startContent("text/html");
    // Links of the mail open outside of the frame, where other sites may not be shown.
    printf("<!DOCTYPE html>\n<html%s>\n<head>\n<title>%s</title>\n<base target=\"_blank\">\n",
           languageOf(charSet).c_str(),
           toPage(escaped(message.subject()), body.pageSet().c_str()).c_str());
    if (body.isEmpty()) printNote(kTextViewNoText, body.pageSet());
    void* slot = &shown;
    pfnMailBody(nullptr, &slot);
    if (body.isCut()) printNote(kTextBodyIsCut, body.pageSet());
}

}  // namespace host
