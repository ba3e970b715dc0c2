#include "session.h"

#include <sodium.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>

#include "file.h"
#include "host_texts.h"
#include "mail/mail.h"
#include "page.h"
#include "passwords.h"
#include "support/auth_code.h"
#include "support/support.h"
#include "text.h"

namespace host {

namespace {

constexpr time_t kLifetime = 8 * 3600L;
constexpr const char* kDefaultKey = "kQwZbn";  // of mailGetConf(), known to everybody
constexpr int kSessionEnded = 104;             // in every site's message table

std::string cookie(const char* name) {
    const char* value = cgiCkGetVal(name);
    return value ? value : "";
}

std::string sessionCookie(const char* name, const std::string& value, time_t lifetime) {
    return cookieLine(name, value, "Strict", lifetime);
}

std::string logOutFile(const User& user) {
    return user.home() + "/session";
}
time_t lastLogOut(const User& user) {
    return strtol(readFile(logOutFile(user)).value_or("0").c_str(), nullptr, 10);
}

/// When a code that strGetAuthCodeVal() has accepted ends: the field between its dots.
time_t expiryOf(const std::string& code) {
    return strtol(code.c_str() + std::min(code.find('.') + 1, code.size()), nullptr, 10);
}

std::string randomName() {
    unsigned char bytes[16];
    randombytes_buf(bytes, sizeof bytes);
    char hex[2 * sizeof bytes + 1];
    return sodium_bin2hex(hex, sizeof hex, bytes, sizeof bytes);
}

/// The key of a session's form tokens. The cookie "session" stays the same when the code in the
/// cookie "auth" is renewed, so that a form that was open meanwhile is still good.
std::string tokenKey() {
    return std::string(conf.adminKey) + ":form:" + cookie("session");
}

std::string authLine(const User& user, time_t made) {
    std::string code = takeText(authCodeMake(user.id.c_str(), conf.adminKey, made + kLifetime));
    return sessionCookie("auth", code, kLifetime);
}

}  // namespace

std::string User::home() const {
    std::string path = std::string(conf.mboxRootDir) + "/" + mailGetUserMBoxPath(id.c_str());
    struct stat st;
    if (stat(path.c_str(), &st) != 0) mailInitMBoxPathName(id.c_str());
    return path;
}

std::string User::address() const {
    return id + "@" + conf.mailDomainName;
}

void loadSite() {
    mailGetConf(&conf);
    mailGetAdminPreference(&admOptions);
    if (sodium_init() < 0) throw PageError(500, kTextInternalError);
    if (!*conf.adminKey || std::string(conf.adminKey) == kDefaultKey)
        throw PageError(500, kTextSiteKey);
}

User currentUser() {
    std::string code = cookie("auth");
    const char* carried = strGetAuthCodeVal(code.c_str(), conf.adminKey);
    User user{carried ? carried : "", false};
    if (user.id.empty() || !mailChkValidUserId(user.id.c_str()) ||
        !mailAuthUserId(user.id.c_str(), code.c_str()) || !hasPassword(user.id))
        throw PageError(403, kSessionEnded);
    // The time is taken first: a code that is renewed while the user logs out must not outlive
    // that.
    time_t expiry = expiryOf(code), now = time(nullptr);
    if (expiry - kLifetime <= lastLogOut(user)) throw PageError(403, kSessionEnded);
    user.isAdmin = mailUserLevel(user.id.c_str()) == 0;
    if (expiry - now < kLifetime / 2) {
        fputs(authLine(user, now).c_str(), stdout);
        std::string session = cookie("session");
        bool isOurs = session.size() == 32 &&
                      session.find_first_not_of("0123456789abcdef") == std::string::npos;
        if (isOurs) fputs(sessionCookie("session", session, kLifetime).c_str(), stdout);
    }
    return user;
}

std::string formToken(const User& user) {
    return takeText(authCodeMake(user.id.c_str(), tokenKey().c_str(), time(nullptr) + kLifetime));
}

void checkToken(const Request& request, const User& user) {
    const char* carried =
        strGetAuthCodeVal(request.value("token").c_str(), tokenKey().c_str());  // signature first
    std::string id = carried ? carried : "";
    bool same =
        id.size() == user.id.size() && sodium_memcmp(id.data(), user.id.data(), id.size()) == 0;
    if (!request.isPost() || !same) throw PageError(403, kTextFormExpired);
}

std::string startSessionLine(const std::string& id, time_t now) {
    User user{id, false};
    return authLine(user, std::max(now, lastLogOut(user) + 1)) +
           sessionCookie("session", randomName(), kLifetime);
}

bool endSessions(const User& user, time_t now) {
    time_t ended = std::max(now, lastLogOut(user) + 1);
    return replaceFile(logOutFile(user), std::to_string(ended) + "\n");
}

std::string endSessionLine(const User& user, time_t now) {
    if (!endSessions(user, now)) throw PageError(507, kTextStorageFull);
    return sessionCookie("auth", "", 0) + sessionCookie("session", "", 0);
}

}  // namespace host
