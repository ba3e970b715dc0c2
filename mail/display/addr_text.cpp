// Addresses as text: for pages, for mail, bare. Lists grow at their end; a name that cannot be
// prepared for a page is left away, never taken from the address before.

#include "mail/base/bounded_text.h"
#include "mail/base/page_sink.h"
#include "mail/display.h"
#include "mail/parse/mail_addr.h"
#include "support/support.h"

namespace attalven {
namespace {

/// All addresses of the list, each written by `append`, joined by ","; NULL for none.
template <typename Append>
char* joined(const MailAddress* list, Append append) {
    if (!list) return nullptr;
    Text text;
    for (; list; list = list->next) {
        append(text, *list);
        if (list->next) text.append(',');
    }
    return text.take();
}

void appendForPage(Text& page, const MailAddress& a) {
    OwnedText name(isNamed(a) ? strConvHTMLStr(a.name, "\n") : nullptr);
    if (name) {
        page.append("&quot;");
        page.append(name.get());
        page.append("&quot; &lt;");
    }
    appendMarkupSafe(page, viewOf(a.mailbox));
    page.append('@');
    appendMarkupSafe(page, viewOf(a.host));
    if (name) page.append("&gt;");
}

void appendForMail(Text& text, const MailAddress& a) {
    if (isNamed(a)) {
        text.append('"');
        text.append(a.name);
        text.append("\" <");
    }
    text.append(viewOf(a.mailbox));
    text.append('@');
    text.append(viewOf(a.host));
    if (isNamed(a)) text.append('>');
}

}  // namespace
}  // namespace attalven

using namespace attalven;

char* mailGetStrHTMLAddr(MailAddress* list) {
    return joined(list, appendForPage);
}

char* mailGetStrAddr(MailAddress* list) {
    return joined(list, appendForMail);
}

char* mailGetStrOneAddr(MailAddress* addr) {
    static BoundedText<1000> oneAddr;
    oneAddr = bareAddress(addr);
    return oneAddr.data();
}

char* mailGetUserName(const char* text) {
    static BoundedText<100> userName;
    BoundedText<100> copy;
    copy.assign(viewOf(text));
    string_view id = head(copy.view(), copy.view().find('|'));
    string_view name = tail(copy.view(), id.size() + 1);
    userName.assign(name.empty() ? id : name);
    return userName.data();
}
