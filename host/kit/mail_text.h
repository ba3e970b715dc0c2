#ifndef ATTALVEN_HOST_KIT_MAIL_TEXT_H
#define ATTALVEN_HOST_KIT_MAIL_TEXT_H

// Texts of a mail in UTF-8. The library gives each text in the page character set of its family,
// so that the texts of one mail may be in several; here each is read from the header as it was
// written, by the character set that is named beside it.

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "mail/mail.h"

namespace host {

/// Text of a mail in the character set `set`, NUL bytes dropped. For a set that is missing, unknown
/// or US-ASCII: UTF-8 if valid, ISO-2022 by its designators, else the first likely set.
std::string mailToUtf8(std::string_view bytes, const std::string& set);

/// The header block of a message or part at `offset`; at most 1 MiB of `size` bytes.
std::string readHeader(FILE* file, long offset, long size);

/// Takes the first line off a text, its LF with it.
std::string_view takeLine(std::string_view& text);

/// Whether a header line goes on with the field before it.
bool isFolded(std::string_view line);

/// Whether a header line starts the field `name` (without colon).
bool isField(std::string_view line, std::string_view name);

/// The unfolded value of the first field `name` (without colon) as written, "" without one; and of
/// several fields.
std::string headerValue(std::string_view block, std::string_view name);
std::vector<std::string> headerValues(std::string_view block,
                                      const std::vector<std::string_view>& names);

/// The character set of what names none: its name, or what finds it once a text needs it.
class CharSet {
  public:
    CharSet(std::string name) : name_(std::move(name)) {}
    explicit CharSet(std::function<std::string()> find) : find_(std::move(find)) {}
    const std::string& name() const {
        if (find_) name_ = std::exchange(find_, nullptr)();
        return name_;
    }

  private:
    mutable std::function<std::string()> find_;
    mutable std::string name_;
};

/// What a header value says: its encoded words (RFC 2047) read each by its own set, everything else
/// by `set`, unless that is UTF-16 or UTF-32, in which no header is; no control bytes but TAB.
std::string headerText(const std::string& value, const CharSet& set);

/// The addresses of a header value as mailGetAddrList() reads them, with names in UTF-8.
using Addresses = std::unique_ptr<MailAddress, void (*)(MailAddress*)>;
Addresses headerAddresses(const std::string& value, const CharSet& set);

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
