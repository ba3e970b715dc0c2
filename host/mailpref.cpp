#include "mailpref.h"

#include "host_texts.h"
#include "kit/page.h"
#include "support/host.h"

namespace host {

namespace {

constexpr const PreferenceForm* kForms[] = {&kGeneralForm,    &kSignatureForm, &kVacationForm,
                                            &kForwardingForm, &kPasswordForm,  &kLanguageForm};

/// Whether the site offers the form.
bool isOffered(const PreferenceForm& form) {
    return &form != &kForwardingForm || admOptions.fwdFlag == 1;
}

void show(SettingsForm& form, const User& user, const Request& request) {
    Page page;
    form.bind(page, request);
    page.call("FORWARDING", [&page] {
        if (isOffered(kForwardingForm)) page.print("mailpref_forwarding.html");
    });
    page.call("ADMINISTRATION", [&page, &user] {
        if (user.isAdmin) page.print("mailpref_admin.html");
    });
    page.respond("mailpref.html", user, form.isGood() ? 200 : 422);
}

const PreferenceForm& formOf(const Request& request) {
    for (const PreferenceForm* form : kForms)
        if (request.value("form") == form->name && isOffered(*form)) return *form;
    throw PageError(400, kTextBadRequest);
}

void run() {
    User user = currentUser();
    Request request;
    SettingsForm form;
    for (const PreferenceForm* each : kForms) each->load(form, user);
    if (request.isPost()) {
        checkToken(request, user);
        const PreferenceForm& sent = formOf(request);
        sent.take(form, user, request);
        if (form.isGood()) {
            sent.save(form, user);
            return redirect("mailpref.cgi?saved=1");
        }
    }
    show(form, user, request);
}

}  // namespace

}  // namespace host

int main() {
    return host::runProgram(host::run);
}
