// Address lists. The scanner's state: the address and the name collected so far, and whether it
// stands inside double quotes or inside a comment; both flags clear means outside, both set can
// happen, because a quote counts inside a comment too. Survives texts of a million addresses and
// addresses of any length.

#include "mail_addr.h"

#include <cstdio>

#include "mail/base/byte_set.h"
#include "mail/codec/encoded_word_decode.h"
#include "support/host.h"

namespace attalven {
namespace {

/// The characters that mean something outside quotes and comments, inside quotes, inside comments.
constexpr ByteSet kOutside(" \r\n>\"()\\,;<"), kQuoted("\"\\"), kComment("\"()\\");

}  // namespace

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

/// Takes a run of ordinary characters and the special one behind it; false when that one ends the
/// address.
bool AddressScanner::take() {
    bool outside = !quoted_ && !comment_;
    const ByteSet& specials = outside ? kOutside : quoted_ ? kQuoted : kComment;
    size_t run = specials.find(rest_);
    collect(outside ? address_ : name_, head(rest_, run));
    rest_ = tail(rest_, run);
    if (rest_.empty()) return true;
    char c = rest_.front();
    rest_.remove_prefix(1);
    if (c == '"') {
        quoted_ = !quoted_;
    } else if (quoted_) {  // a backslash
        collect(name_, head(rest_, 1));
        rest_ = tail(rest_, 1);
    } else if (c == '(' || c == ')') {
        comment_ = c == '(';
    } else if (outside) {
        return takeOutside(c);
    }
    return true;
}

bool AddressScanner::takeOutside(char special) {
    if (special == '<' && !address_.empty()) {
        name_ = address_;
        address_.clear();
    }
    return special != ',' && special != ';';
}

/// Appends byte by byte where the text does not fit, so that all bytes up to the limit are there
/// when the cut looks for the end of a character.
void AddressScanner::collect(Buffer& buffer, string_view text) {
    if (buffer.fits(text)) return buffer.append(text);
    for (char c : head(text, kLimit + 1)) buffer.append(c);
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
    address->name = decodeWords(found.name()).release();
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
