#ifndef ATTALVEN_HOST_KIT_PASSWORDS_H
#define ATTALVEN_HOST_KIT_PASSWORDS_H

// The password file: lines "id:hash", hashes by crypt(3) with yescrypt; admOptions.authDbFilePath,
// or "auth.db" in conf.mboxRootDir. Beside it lies what guards against guessing.

#include <ctime>
#include <set>
#include <string>

namespace host {

constexpr size_t kPasswordMax = 255;

/// Sets the user's password, or removes the user's line for an empty one; the file is replaced as
/// a whole, and the user's sessions end. False when that could not be written.
bool setPassword(const std::string& id, const std::string& password);

/// Whether the password is the user's. Takes as long for a user that does not exist.
bool checkPassword(const std::string& id, const std::string& password);

/// Whether the user can log in: a user without a line is locked out, and one whose hash starts with
/// "!" or "*".
bool hasPassword(const std::string& id);
/// All who can, by one reading of the file.
std::set<std::string> usersWithPassword();

/// Guessing: after 5 failures in 15 minutes of one user id or 20 of one address, more attempts are
/// refused until 15 minutes passed since the last one. Every check of a password starts with
/// beginAttempt(), which is false when it is refused and counts the attempt as failed, so that
/// attempts at the same time count too; a right password takes that back by attemptSucceeded().
bool beginAttempt(const std::string& id, const std::string& address, time_t now);
void attemptSucceeded(const std::string& id, const std::string& address, time_t now);

}  // namespace host

#endif
