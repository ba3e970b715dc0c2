#ifndef ATTALVEN_HOST_KIT_MAIL_TEXT_H
#define ATTALVEN_HOST_KIT_MAIL_TEXT_H

// Texts of a mail in UTF-8. The library gives each text in the page character set of its family,
// so that the texts of one mail may be in several; here each is read from the header as it was
// written, by the character set that is named beside it.

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "mail/mail.h"

namespace host {

/// Text of a mail in the character set `set`, NUL bytes dropped. For a set that is missing, unknown
/// or US-ASCII: UTF-8 if valid, ISO-2022 by its designators, else the first likely set.
std::string mailToUtf8(std::string_view bytes, const std::string& set);

/// The header block of a message or part at `offset`; at most 1 MiB of `size` bytes.
std::string readHeader(FILE* file, long offset, long size);

/// The unfolded value of the first field `name` (without colon) as written, "" without one.
std::string headerValue(const std::string& block, std::string_view name);

/// What a header value says: its encoded words (RFC 2047) read each by its own set, everything else
/// by `set`; no control bytes but TAB.
std::string headerText(const std::string& value, const std::string& set);

/// The addresses of a header value as mailGetAddrList() reads them, with names in UTF-8.
using Addresses = std::unique_ptr<MailAddress, void (*)(MailAddress*)>;
Addresses headerAddresses(const std::string& value, const std::string& set);

/// The parameter `name` of a Content-Type or Content-Disposition value (RFC 2045, RFC 2231, or with
/// encoded words), "" without one.
std::string headerParameter(const std::string& value, const std::string& name,
                            const std::string& set);

/// %XX as the byte; all else, "+" too, as it is (RFC 3986).
std::string percentDecoded(const std::string& text);

/// The page character set that holds all of `utf8`, the text of a mail in `set`: that of the set's
/// family, for other sets the language's own, then the first of EUC-KR, SHIFT-JIS, GB2312 and BIG5.
/// HZ counts as GB2312, which browsers read. "" when none does.
std::string mailPageSet(const std::string& utf8, const std::string& set);

}  // namespace host

#endif
