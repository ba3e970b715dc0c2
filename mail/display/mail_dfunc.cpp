// The print callbacks of page templates: each prints one piece of a message to standard output.
// The data slot that the engine binds is the only state; the two list callbacks move it to the end
// of the list. Bodies are printed as they were sent, whatever markup an HTML mail holds: the page
// that shows them is isolated by its response headers. Every other text of a mail stays text.

#include "mail/display.h"
#include "mail/storage/message_text.h"
#include "message_questions.h"
#include "page_links.h"
#include "support/support.h"

namespace attalven {

namespace {

constexpr int kHtmlBody = 2;
constexpr int kWmlBrowser = 2;
constexpr int kHtmlBodyText = 79, kPlainBodyText = 80, kPriorityText = 80;

void print(const char* text) {
    if (text) fputs(text, stdout);
}

template <typename T>
T* boundTo(void** slot) {
    return slot ? static_cast<T*>(*slot) : nullptr;
}

/// Calls `printOne` for each address of the slot's list; the slot is empty afterwards.
template <typename PrintOne>
void walkAddresses(void** slot, PrintOne printOne) {
    for (auto* addr = boundTo<MailAddress>(slot); addr; addr = boundTo<MailAddress>(slot)) {
        *slot = addr->next;
        Text out;
        printOne(out, *addr);
        printText(out);
    }
}

void appendMailbox(Text& out, const MailAddress& addr) {
    appendMarkupSafe(out, viewOf(addr.mailbox));
    out.append('@');
    appendMarkupSafe(out, viewOf(addr.host));
}

void appendOption(Text& out, const MailAddress& addr, bool encodeName) {
    bool named = isNamed(addr);
    OwnedText code = encodeName && named ? urlEncoded(addr.name) : nullptr;
    if (encodeName && named && !code) return;
    out.append("<OPTION VALUE=\"");
    appendMarkupSafe(out, viewOf(code ? code.get() : addr.name));
    out.append('|');
    appendMailbox(out, addr);
    out.append("\">");
    if (named) {
        out.append('(');
        appendMarkupSafe(out, addr.name);
        out.append(") ");
    }
    appendMailbox(out, addr);
}

/// Which text part of a message is its body: the first that fits the message's body type.
class BodyChoice {
  public:
    explicit BodyChoice(const LeafParts& parts) : html_(bodyTypeOf(parts) == kHtmlBody) {}
    bool html() const { return html_; }
    /// Whether `part` is the body; true once in a walk.
    bool takes(const MailBody& part) {
        if (taken_ || !isBodyText(part) || (html_ && !hasSubType(part, "html"))) return false;
        return taken_ = true;
    }

  private:
    bool html_, taken_ = false;
};

bool isDeliveryStatus(const MailBody& part) {
    return part.type == kMessage && hasSubType(part, "delivery-status");
}

/// The support library's page frame around what is printed in its lifetime.
class PageFrame {
  public:
    explicit PageFrame(bool wanted) : wanted_(wanted) {
        if (!wanted_) return;
        htmlStart();
        htmlHeadStart();
        htmlBaseStyle();
        htmlHeadEnd();
        htmlBodyStart("white");
    }
    ~PageFrame() {
        if (!wanted_) return;
        htmlBodyEnd();
        htmlEnd();
    }
    PageFrame(const PageFrame&) = delete;
    PageFrame& operator=(const PageFrame&) = delete;

  private:
    bool wanted_;
};

/// Markup around the link to a part that the browser shows by itself.
struct InlineMedia {
    int type;
    const char *before, *after;
};
constexpr InlineMedia kInlineMedia[] = {
    {kAudio, "<EMBED SRC=\"", "\" AUTOSTART=true HIDDEN=true>\n"},
    {kImage, "<BR><CENTER><HR SIZE=2>\n<IMG SRC=\"", "\" BORDER=0><BR><BR>\n"},
    {kVideo, "<EMBED SRC=\"", "\">\n"},
};

class HtmlBody {
  public:
    explicit HtmlBody(const MailView& view)
        : view_(view),
          file_(view.file ? *view.file : nullptr),
          parts_(view.message),
          body_(parts_),
          showsMedia_(!hasReferences(parts_)),
          cidPrefix_(cidLinkPrefix(view)) {}

    void print() {
        for (MailBody& part : parts_) {
            if (isDeliveryStatus(part))
                printDeliveryStatus(part);
            else if (body_.takes(part))
                printBody(part);
            else if (showsMedia_)
                printMedia(part);
        }
    }

  private:
    void printDecoded(MailBody& part) {
        OwnedText text(mailDecode(&part, 2, cidPrefix_.c_str(), file_));
        attalven::print(text.get());
    }

    void printBody(MailBody& part) {
        PageFrame frame(!body_.html());
        if (!body_.html()) attalven::print("<DIV CLASS=\"textbody\">\n");
        printDecoded(part);
        if (!body_.html()) attalven::print("</DIV>\n");
    }

    void printDeliveryStatus(MailBody& part) {
        PageFrame frame(true);
        attalven::print("<HR SIZE=1 NOSHADE>\n<H3>Delivery Status</H3>\n<PRE>\n");
        printDecoded(part);
        attalven::print("</PRE>\n<HR SIZE=1 NOSHADE>\n");
    }

    void printMedia(const MailBody& part) {
        for (const InlineMedia& media : kInlineMedia) {
            if (media.type != part.type) continue;
            Text out;
            out.append(media.before);
            out.append(fileLink(view_, part.fileName).view());
            out.append(media.after);
            if (part.type == kImage) {
                out.append("<B>File:</B>");
                appendMarkupSafe(out, viewOf(part.fileName));
                out.append("</CENTER>\n");
            }
            printText(out);
        }
    }

    const MailView& view_;
    FILE* file_;
    LeafParts parts_;
    BodyChoice body_;
    bool showsMedia_;
    Text cidPrefix_;
};

void printWml(MailBody& part, FILE* fp) {
    OwnedText text(mailDecode(&part, 1, "", fp));
    if (text) text.reset(strStripHTMLTag(text.get()));
    if (text) text.reset(strConvWMLStr(text.get(), "\\&\"\n"));
    print(text.get());
}

}  // namespace
}  // namespace attalven

using namespace attalven;

void pfnMailPriority(const char*, void** slot) {
    auto* msg = boundTo<MailInfo>(slot);
    bool named = msg && msg->priority >= 1 && msg->priority <= 5;
    print(named ? messageText(kPriorityText + msg->priority) : "&nbsp;");
}

void pfnMailBodyType(const char*, void** slot) {
    auto* root = boundTo<MailBody>(slot);
    if (!root) return print("&nbsp;");
    print(messageText(mailChkBodyType(root) == kHtmlBody ? kHtmlBodyText : kPlainBodyText));
}

void pfnMailFromRcpt(const char*, void** slot) {
    OwnedText list(mailGetStrHTMLAddr(boundTo<MailAddress>(slot)));
    print(list ? list.get() : "&nbsp;");
}

void pfnAddrComboBoxList(const char* arg, void** slot) {
    bool encodeName = equalNoCase(viewOf(arg), "ENCODE");
    walkAddresses(slot, [encodeName](Text& out, const MailAddress& addr) {
        appendOption(out, addr, encodeName);
    });
}

void pfnWAPAddrList(const char*, void** slot) {
    walkAddresses(slot, appendMailbox);
}

void pfnMailBody(const char*, void** slot) {
    auto* view = boundTo<MailView>(slot);
    if (!view || !view->message) return print("&nbsp;");
    HtmlBody(*view).print();
}

void pfnWAPMailBody(const char*, void** slot) {
    auto* view = boundTo<MailView>(slot);
    if (!view || !view->message || cgiGetBrowserLangType() != kWmlBrowser) return;
    FILE* fp = view->file ? *view->file : nullptr;
    LeafParts parts(view->message);
    BodyChoice body(parts);
    for (MailBody& part : parts) {
        if (isDeliveryStatus(part))
            print("<b>Delivery Status</b><br/>\n");
        else if (!body.takes(part))
            continue;
        printWml(part, fp);
    }
}

void pfnPrtName(const char*, void** slot) {
    if (!slot) return;
    Text name;
    appendMarkupSafe(name, viewOf(mailGetUserName(boundTo<const char>(slot))));
    printText(name);
}
