// login.cgi: the login form, logging in and out, and the choice of the pages' language. Forms of
// the login page carry no token, since nobody is known yet; instead they are taken from our own
// pages only.

#include <algorithm>
#include <cstdlib>
#include <ctime>

#include "host_texts.h"
#include "kit/page.h"
#include "kit/passwords.h"
#include "mail/mail.h"
#include "support/support.h"

using namespace host;

namespace {

// Login errors of the library (mailGetLoginErrMsg), which fills 110 and 111 with these limits.
constexpr int kNoId = 101, kNoPassword = 102, kWrong = 103, kLocked = 105, kLongId = 110,
              kLongPassword = 111;
constexpr size_t kIdMax = 15;

void showForm(const std::string& id, const std::string& notice, int status) {
    Page page;
    page.text("ID", id);
    page.call("NOTICE", [&] {
        if (!notice.empty()) page.text("TEXT", notice).print("login_notice.html");
    });
    page.markup("DESCRIBED", notice.empty() ? "" : " aria-describedby=\"notice\"");
    page.respond("login.html", status);
}

/// Old browsers send no Sec-Fetch-Site, but an Origin with each form, which is then compared with
/// the host that they asked.
void checkOrigin() {
    auto variable = [](const char* name) { return std::string(strSafeAssign(getenv(name))); };
    std::string site = variable("HTTP_SEC_FETCH_SITE"), origin = variable("HTTP_ORIGIN");
    std::string host = origin.substr(std::min(origin.size(), origin.find("//") + 2));
    bool ours = site.empty()
                    ? origin.empty() || strCaseCmp(host.c_str(), variable("HTTP_HOST").c_str()) == 0
                    : site == "same-origin" || site == "none";
    if (!ours) throw PageError(403, kTextFormExpired);
}

std::string idOf(const Request& request) {
    std::string id = request.value("userid");
    if (!admOptions.allowCaseUserIdFlag) strToLwr(id.data());
    return id;
}

/// 0 for a user name and password that are right, else the login error.
int loginError(const std::string& id, const std::string& password) {
    if (id.empty()) return kNoId;
    if (password.empty()) return kNoPassword;
    if (id.size() > kIdMax) return kLongId;
    if (password.size() > kPasswordMax) return kLongPassword;
    if (!mailChkValidUserId(id.c_str())) return kWrong;
    CgiEnv env;
    cgiGetEnv(&env);
    time_t now = time(nullptr);
    if (!beginAttempt(id, env.remoteAddr, now)) return kLocked;
    if (!checkPassword(id, password)) return kWrong;
    attemptSucceeded(id, env.remoteAddr, now);
    return 0;
}

void logIn(const Request& request) {
    checkOrigin();
    std::string id = idOf(request);
    if (int error = loginError(id, request.value("password"))) {
        std::string text = toUtf8(mailGetLoginErrMsg(error), pageLanguage().charSet);
        showForm(id, text, error == kLocked ? 429 : error == kWrong ? 403 : 422);
        return;
    }
    fputs(startSessionLine(id, time(nullptr)).c_str(), stdout);
    redirect("maillist.cgi?fldrname=inbox");
}

void logOut(const Request& request) {
    User user = currentUser();
    checkToken(request, user);
    fputs(endSessionLine(user, time(nullptr)).c_str(), stdout);
    redirect("login.cgi?cmd=out");
}

void chooseLanguage(const Request& request) {
    checkOrigin();
    (void)languageLine(request.value("lang"));
    redirect("login.cgi");
}

}  // namespace

int main() {
    return runProgram([] {
        Request request;
        if (!request.isPost()) {
            bool out = request.value("cmd") == "out";
            showForm("", out ? message(kTextLoggedOut) : "", 200);
        } else if (request.value("cmd") == "logout") {
            logOut(request);
        } else if (request.has("lang")) {
            chooseLanguage(request);
        } else {
            logIn(request);
        }
    });
}
