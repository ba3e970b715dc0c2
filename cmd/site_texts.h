#ifndef ATTALVEN_CMD_SITE_TEXTS_H
#define ATTALVEN_CMD_SITE_TEXTS_H

// The texts of a new site in its four languages, in UTF-8; they are stored in the page character
// set of each language.

#include <span>

namespace cmd {

struct SiteLanguage {
    const char* code;     // as files are named after it
    const char* charSet;  // of its pages
    const char* tag;      // of its pages, RFC 5646
    const char* loginFailed;
    const char* back;
};
std::span<const SiteLanguage> siteLanguages();

/// A message of the table by number, in the order of the languages.
struct SiteMessage {
    int number;
    const char* texts[4];
};
std::span<const SiteMessage> siteMessages();

/// A media type and its extensions.
struct SiteMediaType {
    const char *type, *extensions;
};
std::span<const SiteMediaType> siteMediaTypes();

}  // namespace cmd

#endif
