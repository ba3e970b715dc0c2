// Sinks for texts of a mail in pages, and the part-download links. File names, folder names and
// Message-IDs are whatever a sender wrote: nothing here lets them leave the attribute, the address
// or the line in which they stand.

#include "page_links.h"

#include <cstring>

#include "mail/base/sink.h"
#include "support/host.h"
#include "support/support.h"

namespace attalven {

namespace {

constexpr char kCgiPath[] = "/cgi-auth";

/// The start that both links share, up to the message's number.
Text linkStart(const MailView& view) {
    Text link;
    link.append("http://");
    appendUrlSafe(link, viewOf(conf.serverName));
    link.appendFormat(":%d%s/mailview.cgi?cmd=down&fldrname=", conf.httpdPort, kCgiPath);
    appendUrlSafe(link, {view.fldrName, strnlen(view.fldrName, sizeof view.fldrName)});
    link.appendFormat("&select=%d", view.select);
    return link;
}

}  // namespace

void appendWithoutControls(Text& out, string_view s) {
    appendWithout(out, s, isControl);
}

OwnedText urlEncoded(const char* text) {
    OwnedText code(text ? cgiCharToHex(text) : nullptr);
    if (code) cgiSpcToPlus(code.get());
    return code;
}

Text cidLinkPrefix(const MailView& view) {
    Text link = linkStart(view);
    link.append("&msgid=");
    appendUrlSafe(link, viewOf(view.msgId));
    link.append("&cid=");
    return link;
}

Text fileLink(const MailView& view, const char* fileName) {
    Text link = linkStart(view);
    link.append("&filename=");
    appendUrlSafe(link, viewOf(urlEncoded(fileName).get()));
    link.append("&msgid=");
    appendUrlSafe(link, viewOf(view.msgId));
    return link;
}

void printText(const Text& text) {
    if (!text.empty()) fwrite(text.view().data(), 1, text.size(), stdout);
}

}  // namespace attalven
