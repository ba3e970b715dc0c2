#ifndef ATTALVEN_HOST_MAILWRITE_FORM_H
#define ATTALVEN_HOST_MAILWRITE_FORM_H

// The fields of the compose form, and the addresses in them. All texts are UTF-8; texts of one line
// hold no control bytes, so that nothing typed there can start a header line.

#include <string>
#include <vector>

#include "kit/request.h"
#include "kit/session.h"
#include "mail/mail.h"

namespace host {

constexpr const char* kAutomaticSet = "auto";

struct Form {
    std::string id;  // of the form's folder
    std::string to, cc, bcc, subject, body;
    bool isHtml = false, receipt = false, signature = true;
    std::string charSet = kAutomaticSet;
    int headerEncoding = 3, bodyEncoding = 3, priority = 3;

    /// An empty form as the user's preferences want it.
    explicit Form(const MailPreference& preference);
    /// Takes the fields of a request. What is no choice of the form keeps its value.
    void read(const Request& request);

    /// All fields but the id and the body, as a draft carries them: lines in base64. The reverse
    /// takes no harm from made-up text.
    std::string packed() const;
    void unpack(const std::string& text);
};

/// The user's preferences, with the site's defaults; the sender's name in UTF-8.
struct Sender {
    explicit Sender(const User& user);
    MailPreference preference = {};
    std::string name, address, replyTo, signature;
};

struct Address {
    std::string name, mail;  // mail: mailbox@host
    /// "name" <mailbox@host>
    std::string text() const;
    /// Whether SMTP can carry it: ASCII, without blanks and specials, host included.
    bool isValid() const;
    bool isSame(const std::string& mail) const;
};

/// The addresses of a field of the form, or of a header value with text in `charSet`.
std::vector<Address> parseAddresses(const std::string& text, const std::string& charSet = "UTF-8");
std::string addressText(const std::vector<Address>& list);

/// Without control bytes; line breaks become blanks.
std::string oneLine(const std::string& text);
/// LF line ends, no other control bytes than TAB.
std::string plainLines(const std::string& text);

}  // namespace host

#endif
