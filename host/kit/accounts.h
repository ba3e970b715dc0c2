#ifndef ATTALVEN_HOST_KIT_ACCOUNTS_H
#define ATTALVEN_HOST_KIT_ACCOUNTS_H

// The users of the site's main mail domain: those who have a mailbox directory.

#include <string>
#include <vector>

namespace host {

/// The user's mailbox directory, which is not made; "" unless it is there. Any text may be asked
/// for.
std::string existingHome(const std::string& id);

/// All users, sorted.
std::vector<std::string> userIds();

/// Makes the places of a new user, with the site's default preferences. False when they could not
/// be made. `id` is valid (cmd::isPlainUserId()).
bool addUser(const std::string& id);

}  // namespace host

#endif
