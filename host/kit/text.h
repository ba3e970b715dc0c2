#ifndef ATTALVEN_HOST_KIT_TEXT_H
#define ATTALVEN_HOST_KIT_TEXT_H

// Texts of the sample web mail. Inside, every text is valid UTF-8; it comes in from a character set
// and goes out into one at the edge of the program. No text stops anything: what is invalid becomes
// U+FFFD, what a set cannot hold becomes a character reference (pages) or "?" (mail).

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

constexpr const char* kReplacement = "\xEF\xBF\xBD";  // U+FFFD

/// `bytes` of the character set `set` ("" and unknown names: UTF-8 if valid, else ISO-8859-1).
std::string toUtf8(std::string_view bytes, const char* set);

/// Whether `bytes` is well-formed UTF-8 (RFC 3629).
bool isUtf8(std::string_view bytes);

/// Whether the character set can hold all of the text.
bool fitsInto(const std::string& utf8, const char* set);

/// Markup or escaped text for a page in `set`: other characters become decimal references.
std::string toPage(const std::string& utf8, const char* set);

/// Plain text in `set`, other characters become "?".
std::string toSet(const std::string& utf8, const char* set);

/// `&`, `<`, `>`, `"` and `'` as character references, control bytes but TAB and LF dropped.
std::string escaped(std::string_view utf8);

/// For one component of a query: all bytes but unreserved ones as %XX (RFC 3986).
std::string urlEncoded(std::string_view utf8);

/// The first `most` characters, "..." behind what was cut.
std::string shortened(const std::string& utf8, size_t most);

/// The first characters, no more than `most` bytes.
std::string_view firstBytes(std::string_view utf8, size_t most);

/// A size as people read it: "12 B", "3.4 MB".
std::string sizeText(uint64_t bytes);

/// Whether the text is an address mailbox@host in ASCII that needs no quotes (RFC 5321).
bool isPlainAddress(std::string_view text);

/// The character `code`; U+FFFD for what is none.
std::string utf8Of(unsigned long code);

/// What the bytes of a C++ owner's heap text say; frees it. "" for NULL.
std::string takeText(char* heapText);

}  // namespace host

#endif
