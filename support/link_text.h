#ifndef ATTALVEN_SUPPORT_LINK_TEXT_H
#define ATTALVEN_SUPPORT_LINK_TEXT_H

// Web and mail addresses in text, and the one form in which pages link them. What is recognised in
// a text and what is let through as a link are the same functions, so that neither can be wider.

#include "mail/base/ascii.h"

namespace attalven {

// A link is kLinkOpen URL kLinkMiddle TEXT kLinkClose.
constexpr string_view kLinkOpen = "<A HREF=\"";
constexpr string_view kLinkMiddle = "\" TARGET=\"_blank\" REL=\"noopener noreferrer\">";
constexpr string_view kLinkClose = "</A>";
constexpr string_view kMailto = "mailto:";

/// An address found in a text.
struct Address {
    size_t begin = 0, end = 0;
    bool isMail = false;
    explicit operator bool() const { return end > begin; }
};

/// The web address whose scheme ends with the ":" at `colon`, the mail address of the "@" at `at`;
/// bytes before `floor` belong to something else.
Address webAddressAt(string_view s, size_t colon, size_t floor);
Address mailAddressAt(string_view s, size_t at, size_t floor);

/// The address that makes up "<" address ">" at the start of `s`, its brackets left out; "mailto:"
/// may stand before a mail address.
Address bracketedAddress(string_view s);

/// The link that starts `s`, if it has the canonical form: its URL and its text, and all its bytes.
struct Link {
    string_view url, text;
    size_t length = 0;
    explicit operator bool() const { return length > 0; }
};
Link canonicalLink(string_view s);

}  // namespace attalven

#endif
