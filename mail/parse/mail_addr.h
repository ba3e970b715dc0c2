#ifndef ATTALVEN_MAIL_PARSE_MAIL_ADDR_H
#define ATTALVEN_MAIL_PARSE_MAIL_ADDR_H

// The scanner under mailGetAddrList, for callers that want less than records.

#include "mail/base/bounded_text.h"
#include "record.h"

namespace attalven {

/// Addresses of a header value, one after another. The views of the last address stay valid until
/// the next call.
class AddressScanner {
  public:
    explicit AddressScanner(string_view text) : rest_(head(text, text.find('\0'))) {}

    /// Finds the next address; false at the end of the text.
    bool next();
    string_view name() const { return cut(name_); }  // not decoded; may be empty
    string_view mailbox() const;                     // before the first at sign
    string_view host() const;  // after it; conf.mailDomainName when there is none

  private:
    static constexpr size_t kLimit = 300;  // bytes of an address or name; what follows is dropped
    using Buffer = BoundedText<kLimit + 1>;

    static string_view cut(const Buffer& b) { return head(b.view(), cutLength(b.view(), kLimit)); }
    bool take();
    bool takeOutside(char special);
    static void collect(Buffer& buffer, string_view text);

    string_view rest_;
    Buffer address_, name_;
    bool quoted_ = false, comment_ = false;
};

/// mailGetAddrList on a text that is not terminated.
OwnedAddress parseAddresses(string_view text);

/// "mailbox@host" of an address, cut at 1000 bytes; empty for NULL.
BoundedText<1000> bareAddress(const MailAddress* address);

}  // namespace attalven

#endif
