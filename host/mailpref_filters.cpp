// The Sieve scripts (RFC 5228) that the mail server runs. Exim does not expand their strings, so
// that a text of the user only has to stay inside its quotes.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "host_texts.h"
#include "kit/file.h"
#include "kit/text.h"
#include "mail/mail.h"
#include "mailpref.h"

namespace host {

namespace {

constexpr const char* kFirstLine = "# Sieve filter\n";  // how Exim knows the language

/// quoted-string of RFC 5228: `"` and `\` behind a backslash, no other control bytes than TAB and
/// LF.
std::string quoted(const std::string& utf8) {
    std::string out = "\"";
    for (char c : toUtf8(utf8, "UTF-8")) {
        if ((c >= 0 && c < ' ' && c != '\n' && c != '\t') || c == '\x7F') continue;
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + "\"";
}

/// Without script there is no file, and the mail server does nothing.
void putScript(const std::string& path, const std::string& script) {
    bool done = script.empty() ? unlink(path.c_str()) == 0 || errno == ENOENT
                               : replaceFile(path, kFirstLine + script);
    if (!done) throw PageError(507, kTextStorageFull);
}

/// RFC 5230. The mail itself goes on to the next router, so that it is neither kept nor dropped
/// here.
std::string vacationScript(const User& user) {
    MailVacationPref vacation = {};
    mailGetVacationPref(user.id.c_str(), conf.mailDomainName, &vacation);
    std::string text = vacation.replyText ? vacation.replyText : "", subject = vacation.subject;
    mailFreeVacationPref(&vacation);
    if (vacation.flag != 1) return "";
    std::string signature = vacation.signFlag == 1 ? signatureOf(user) : "";
    if (!signature.empty()) text += "\n-- \n" + signature;
    return "require \"vacation\";\nvacation :days 7" +
           (subject.empty() ? "" : " :subject " + quoted(subject)) + " " + quoted(text) +
           ";\ndiscard;\n";
}

/// RFC 3894.
std::string forwardScript(const User& user) {
    MailPreference preference = {};
    mailGetPreference(user.id.c_str(), conf.mailDomainName, &preference);
    std::string target = preference.forwarding;
    if (!isMailAddress(target)) return "";
    if (preference.copyForwardingFlag != 1) return "redirect " + quoted(target) + ";\n";
    return "require \"copy\";\nredirect :copy " + quoted(target) + ";\n";
}

/// Where the mail server remembers whom it has answered.
void makeAnsweredFolder(const std::string& path) {
    bool made = mkdir(path.c_str(), 0700) == 0;
    if ((!made && errno != EEXIST) || (made && chmod(path.c_str(), 0700) != 0))
        throw PageError(507, kTextStorageFull);
}

}  // namespace

void writeMailFilters(const User& user) {
    makeAnsweredFolder(user.home() + "/answered");
    putScript(user.home() + "/vacation", vacationScript(user));
    putScript(user.home() + "/forward", forwardScript(user));
}

}  // namespace host
