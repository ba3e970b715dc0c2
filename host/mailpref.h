#ifndef ATTALVEN_HOST_MAILPREF_H
#define ATTALVEN_HOST_MAILPREF_H

// mailpref.cgi: the settings page, made of several forms. Each shows what is stored ("load"), takes
// what was sent and complains ("take"), and, when all is good, stores it ("save"; PageError 507
// when it could not be written).

#include <string>

#include "kit/session.h"
#include "kit/settings_form.h"

namespace host {

struct PreferenceForm {
    const char* name;  // value of the field "form", and the id of the section
    void (*load)(SettingsForm& form, const User& user);
    void (*take)(SettingsForm& form, const User& user, const Request& request);
    void (*save)(SettingsForm& form, const User& user);
};

extern const PreferenceForm kGeneralForm, kSignatureForm, kLanguageForm, kPasswordForm,
    kVacationForm, kForwardingForm;

constexpr size_t kSignatureMax = 4 << 10, kReplyMax = 8 << 10;
std::string signatureOf(const User& user);

/// Writes the Sieve scripts "vacation" and "forward" that the mail server runs (docs/operating.md)
/// from the user's stored settings. PageError 507 when that fails.
void writeMailFilters(const User& user);

/// Whether the text is one mail address that every server takes: mailbox@host in ASCII, at most 100
/// bytes, no quoting.
bool isMailAddress(const std::string& text);

}  // namespace host

#endif
