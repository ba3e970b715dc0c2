// Users: who there is, new ones, their passwords. Nobody's mail is ever deleted here.

#include "cmd/user_id.h"
#include "host_texts.h"
#include "kit/accounts.h"
#include "kit/passwords.h"
#include "kit/text.h"
#include "mail/mail.h"
#include "mailadm.h"

namespace host {

namespace {

constexpr size_t kPasswordLeast = 8, kIdMax = 15;
constexpr int kHtmlBody = 2, kNormalPriority = 3;

std::string takePassword(SettingsForm& form, const Request& request, const char* field) {
    std::string password = request.value(field);
    if (password.size() < kPasswordLeast || password.size() > kPasswordMax)
        form.complain(field, kTextPasswordLength);
    return password;
}

/// The id of a user that exists, or a complaint.
std::string takeUser(SettingsForm& form, const Request& request, const char* field) {
    form.takeLine(request, field, kIdMax);
    if (existingHome(form[field]).empty()) form.complain(field, kTextNoSuchUser);
    return form[field];
}

/// The site's greeting, a whole HTML document: behind one, the library leaves the site's signature
/// the HTML that it is.
void sendWelcome(const std::string& id) {
    if (admOptions.admMailFlag != 1 || !admOptions.admMail || !*admOptions.admMail) return;
    std::string body = "<HTML><BODY>\n";
    for (char c : escaped(toUtf8(admOptions.admMail, "UTF-8")))
        body += c == '\n' ? std::string("<BR>\n") : std::string(1, c);
    body += "</BODY></HTML>";
    std::string from = std::string(conf.adminId) + "@" + conf.mailDomainName;
    std::string to = id + "@" + conf.mailDomainName;
    mailSendMsg(from.c_str(), to.c_str(), kNormalPriority, kHtmlBody, admOptions.admMailSubject,
                body.c_str(), 0, "UTF-8", conf.mailDomainName);
}

void runAddUser(SettingsForm& form, const Request& request) {
    form.takeLine(request, "new_id", kIdMax);
    std::string id = form["new_id"], password = takePassword(form, request, "new_id_password");
    if (!cmd::isPlainUserId(id))
        form.complain("new_id", kTextBadUserId);
    else if (!existingHome(id).empty())
        form.complain("new_id", kTextUserExists);
    if (!form.isGood()) return;
    if (!addUser(id) || !setPassword(id, password)) throw PageError(507, kTextStorageFull);
    sendWelcome(id);
}

void runSetPassword(SettingsForm& form, const Request& request) {
    std::string id = takeUser(form, request, "user_id");
    std::string password = takePassword(form, request, "user_password");
    if (form.isGood() && !setPassword(id, password)) throw PageError(507, kTextStorageFull);
}

void runLock(SettingsForm& form, const Request& request) {
    std::string id = request.value("locked_id");
    if (existingHome(id).empty()) throw PageError(400, kTextBadRequest);
    if (id == conf.adminId) return form.complain("locked_id", kTextLockYourself);
    if (!setPassword(id, "")) throw PageError(507, kTextStorageFull);
}

std::string lockForm(const std::string& id, const std::string& token) {
    return "<form method=\"post\" action=\"mailadm.cgi\" accept-charset=\"utf-8\">"
           "<input type=\"hidden\" name=\"token\" value=\"" +
           escaped(token) +
           "\"><input type=\"hidden\" name=\"form\" value=\"lock\">"
           "<button name=\"locked_id\" value=\"" +
           escaped(id) + "\">" + escaped(message(kTextLockUser, id)) + "</button></form>";
}

}  // namespace

std::string userRows(const std::string& token) {
    std::string rows;
    std::set<std::string> open = usersWithPassword();
    for (const std::string& id : userIds()) {
        bool isOpen = open.contains(id), isAdmin = id == conf.adminId;
        rows += "<tr><th scope=\"row\">" + escaped(id) + "</th><td>" +
                escaped(message(isAdmin  ? kTextStateAdmin
                                : isOpen ? kTextStateOpen
                                         : kTextStateLocked)) +
                "</td><td>" + (isOpen && !isAdmin ? lockForm(id, token) : "") + "</td></tr>\n";
    }
    return rows;
}

const AdminAction kAddUser = {"add", runAddUser};
const AdminAction kSetPassword = {"password", runSetPassword};
const AdminAction kLockUser = {"lock", runLock};

}  // namespace host
