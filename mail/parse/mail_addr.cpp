// Address lists. The scanner's state: the address and the name collected so far, and whether it
// stands inside double quotes or inside a comment; both flags clear means outside, both set can
// happen, because a quote counts inside a comment too. Survives texts of a million addresses and
// addresses of any length.

#include "mail_addr.h"

#include <cstdio>

#include "mail_mime_field.h"
#include "support/host.h"

namespace attalven {

//   address-list = [ address ] *( ( "," / ";" ) [ address ] )
//   address      = [ phrase ] "<" mailbox ">" / mailbox [ "(" comment ")" ]
// White space outside quotes is dropped, so that an unquoted phrase runs together; there are no
// groups and no nested comments.
bool AddressScanner::next() {
    do {
        address_.clear();
        name_.clear();
        quoted_ = comment_ = false;
        while (!rest_.empty() && take()) {
        }
    } while (address_.empty() && !rest_.empty());
    return !address_.empty();
}

/// Takes one character; false when it ends the address.
bool AddressScanner::take() {
    char c = rest_.front();
    rest_.remove_prefix(1);
    if (c == '"')
        quoted_ = !quoted_;
    else if (quoted_)
        takeQuoted(c);
    else if (comment_)
        takeComment(c);
    else
        return takeOutside(c);
    return true;
}

void AddressScanner::takeQuoted(char c) {
    if (c == '\\') {
        if (rest_.empty()) return;
        c = rest_.front();
        rest_.remove_prefix(1);
    }
    name_.append(c);
}

void AddressScanner::takeComment(char c) {
    if (c == ')')
        comment_ = false;
    else if (c != '(' && c != '\\')
        name_.append(c);
}

bool AddressScanner::takeOutside(char c) {
    switch (c) {
        case ' ':
        case '\r':
        case '\n':
        case '>':
        case ')':
        case '\\':
            return true;
        case ',':
        case ';':
            return false;
        case '(':
            comment_ = true;
            return true;
        case '<':
            if (address_.empty()) return true;
            name_ = address_;
            address_.clear();
            return true;
        default:
            address_.append(c);
            return true;
    }
}

string_view AddressScanner::mailbox() const {
    string_view address = cut(address_);
    return head(address, address.find('@'));
}

string_view AddressScanner::host() const {
    string_view host = tail(cut(address_), mailbox().size() + 1);
    return host.empty() ? viewOf(conf.mailDomainName) : host;
}

BoundedText<1000> bareAddress(const MailAddress* address) {
    BoundedText<1000> text;
    if (!address) return text;
    char whole[1002];  // one byte more than is kept shows whether the cut splits a character
    auto orEmpty = [](const char* part) { return part ? part : ""; };
    snprintf(whole, sizeof whole, "%s@%s", orEmpty(address->mailbox), orEmpty(address->host));
    text.assign(whole);
    return text;
}

namespace {

/// Sets `field` to a copy of `s`, NULL for an empty one; false when memory is out.
bool copyField(char*& field, string_view s) {
    if (!s.empty()) field = copyText(s).release();
    return field || s.empty();
}

OwnedAddress newAddress(const AddressScanner& found) {
    OwnedAddress address(mailNewAddress());
    if (!address || !copyField(address->mailbox, found.mailbox()) ||
        !copyField(address->host, found.host()))
        return nullptr;
    address->name = decodeValue(found.name()).release();
    return address;
}

}  // namespace

OwnedAddress parseAddresses(string_view text) {
    Chain<MailAddress, mailFreeAddress> list;
    AddressScanner scanner(text);
    while (scanner.next()) {
        OwnedAddress address = newAddress(scanner);
        if (!address) break;
        list.append(std::move(address));
    }
    return OwnedAddress(list.take());
}

}  // namespace attalven

MailAddress* mailGetAddrList(const char* text) {
    return attalven::parseAddresses(attalven::viewOf(text)).release();
}
