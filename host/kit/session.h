#ifndef ATTALVEN_HOST_KIT_SESSION_H
#define ATTALVEN_HOST_KIT_SESSION_H

// Who asks. The session is an authentication code of the support library in the cookie "auth"
// (HttpOnly, SameSite=Strict, path /cgi-auth/, eight hours; Secure where the request came by
// HTTPS); a form's token is bound to that cookie. A code made before the user's last log-out or
// change of password, or of a user who cannot log in, is refused.

#include <ctime>
#include <string>

#include "request.h"

namespace host {

struct User {
    std::string id;
    bool isAdmin;
    /// The mailbox directory of the user, made when it is missing.
    std::string home() const;
    /// The mail address, id@mail-domain.
    std::string address() const;
};

/// Loads the site: mailGetConf(), mailGetAdminPreference(). Every program calls it first.
void loadSite();

/// The user of the session. PageError 403 with the text "Your session has ended" otherwise.
User currentUser();

/// The token for the forms of the session's pages, and the check of every POST that changes
/// something: PageError 403 unless the request is a POST with this session's token in "token".
std::string formToken(const User& user);
void checkToken(const Request& request, const User& user);

/// The header line "Set-Cookie: ..." that starts or ends the session, LF at the end.
std::string startSessionLine(const std::string& id, time_t now);
std::string endSessionLine(const User& user, time_t now);

/// Ends all sessions of the user. False when that could not be written.
bool endSessions(const User& user, time_t now);

}  // namespace host

#endif
