#include "mailadm.h"

#include "host_texts.h"
#include "kit/page.h"

namespace host {

namespace {

constexpr const AdminAction* kActions[] = {&kAddUser, &kSetPassword, &kLockUser, &kSiteSettings,
                                           &kSiteTexts};

void act(SettingsForm& form, const User& user, const Request& request) {
    checkToken(request, user);
    for (const AdminAction* action : kActions)
        if (request.value("form") == action->name) return action->run(form, request);
    throw PageError(400, kTextBadRequest);
}

void run() {
    User user = currentUser();
    if (!user.isAdmin) throw PageError(403, kTextForbidden);
    Request request;
    SettingsForm form;
    loadSiteSettings(form);
    if (request.isPost()) {
        act(form, user, request);
        if (form.isGood()) return redirect("mailadm.cgi?saved=1");
    }
    Page page;
    form.bind(page, request);
    page.markup("USERS", userRows(formToken(user)));
    page.markup("PARTITIONS", partitionRows());
    page.respond("mailadm.html", user, form.isGood() ? 200 : 422);
}

}  // namespace

}  // namespace host

int main() {
    return host::runProgram(host::run);
}
