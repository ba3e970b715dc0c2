// Settings of the mail that the user writes and of the pages, and the user's password.

#include <cstring>

#include "host_texts.h"
#include "kit/file.h"
#include "kit/passwords.h"
#include "kit/text.h"
#include "mail/mail.h"
#include "mailpref.h"

namespace host {

namespace {

constexpr size_t kPasswordLeast = 8;

MailPreference preferenceOf(const User& user) {
    MailPreference preference = {};
    mailGetPreference(user.id.c_str(), conf.mailDomainName, &preference);
    return preference;
}

template <size_t N>
void setText(char (&field)[N], const std::string& value) {
    snprintf(field, N, "%s", value.c_str());
}

/// Texts of older sites may be in the page character set.
std::string stored(const char* text) {
    return isUtf8(text) ? text : toUtf8(text, pageLanguage().charSet);
}

void loadGeneral(SettingsForm& form, const User& user) {
    MailPreference preference = preferenceOf(user);
    form.set("email_name", stored(preference.emailName));
    form.set("reply_to", stored(preference.replyTo));
    form.set("page_size", preference.pageSize);
    form.set("header_encoding", preference.headerEncoding);
    form.set("body_encoding", preference.bodyEncoding);
}

void takeGeneral(SettingsForm& form, const User&, const Request& request) {
    form.takeLine(request, "email_name", sizeof MailPreference::emailName - 1);
    form.takeLine(request, "reply_to", sizeof MailPreference::replyTo - 1);
    form.takeNumber(request, "page_size", 5, 200);
    form.takeNumber(request, "header_encoding", 1, 3);
    form.takeNumber(request, "body_encoding", 1, 3);
    if (!form["reply_to"].empty() && !isMailAddress(form["reply_to"]))
        form.complain("reply_to", kTextOneAddress);
}

void saveGeneral(SettingsForm& form, const User& user) {
    MailPreference preference = preferenceOf(user);
    setText(preference.emailName, form["email_name"]);
    setText(preference.replyTo, form["reply_to"]);
    preference.pageSize = form.number("page_size");
    preference.headerEncoding = form.number("header_encoding");
    preference.bodyEncoding = form.number("body_encoding");
    MailPreference wanted = preference;
    mailSetPreference(user.id.c_str(), conf.mailDomainName, &preference);
    MailPreference found = preferenceOf(user);
    if (strcmp(found.emailName, wanted.emailName) != 0 ||
        strcmp(found.replyTo, wanted.replyTo) != 0 || found.pageSize != wanted.pageSize ||
        found.headerEncoding != wanted.headerEncoding || found.bodyEncoding != wanted.bodyEncoding)
        throw PageError(507, kTextStorageFull);
}

std::string signatureFile(const User& user) {
    return user.home() + "/signature.txt";
}

void loadSignature(SettingsForm& form, const User& user) {
    form.set("signature", signatureOf(user));
}

void takeSignature(SettingsForm& form, const User&, const Request& request) {
    form.takeLines(request, "signature", kSignatureMax);
}

void saveSignature(SettingsForm& form, const User& user) {
    if (!replaceFile(signatureFile(user), form["signature"]))
        throw PageError(507, kTextStorageFull);
    writeMailFilters(user);
}

void loadLanguage(SettingsForm& form, const User&) {
    form.set("lang", pageLanguage().code);
}

void takeLanguage(SettingsForm& form, const User&, const Request& request) {
    form.takeLine(request, "lang", 3);
}

void saveLanguage(SettingsForm& form, const User&) {
    if (!languageLine(form["lang"])) throw PageError(400, kTextBadRequest);
}

void loadPassword(SettingsForm&, const User&) {}

/// The fields stay empty on the page that shows what was wrong.
void takePassword(SettingsForm& form, const User& user, const Request& request) {
    const char* variable = getenv("REMOTE_ADDR");
    std::string address = variable ? variable : "", wanted = request.value("new_password");
    time_t now = time(nullptr);
    if (!beginAttempt(user.id, address, now))
        return form.complain("old_password", kTextManyAttempts);
    if (checkPassword(user.id, request.value("old_password")))
        attemptSucceeded(user.id, address, now);
    else
        form.complain("old_password", kTextWrongOldPassword);
    if (wanted.size() < kPasswordLeast || wanted.size() > kPasswordMax)
        form.complain("new_password", kTextPasswordLength);
    else if (wanted != request.value("new_password_again"))
        form.complain("new_password_again", kTextPasswordsDiffer);
    if (form.isGood()) form.set("new_password", wanted);
}

/// Ends all sessions of the user but this one.
void savePassword(SettingsForm& form, const User& user) {
    if (!setPassword(user.id, form["new_password"])) throw PageError(507, kTextStorageFull);
    fputs(startSessionLine(user.id, time(nullptr)).c_str(), stdout);
}

}  // namespace

std::string signatureOf(const User& user) {
    return toUtf8(readFile(signatureFile(user)).value_or("").substr(0, kSignatureMax), "UTF-8");
}

const PreferenceForm kGeneralForm = {"general", loadGeneral, takeGeneral, saveGeneral};
const PreferenceForm kSignatureForm = {"signature", loadSignature, takeSignature, saveSignature};
const PreferenceForm kLanguageForm = {"language", loadLanguage, takeLanguage, saveLanguage};
const PreferenceForm kPasswordForm = {"password", loadPassword, takePassword, savePassword};

}  // namespace host
