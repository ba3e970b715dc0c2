#ifndef ATTALVEN_CMD_USER_ID_H
#define ATTALVEN_CMD_USER_ID_H

#include <string>

namespace cmd {

/// Whether new users may have this id. The library lets more characters into an id than a mail
/// address should have; here it is a plain one: 2 to 15 letters, digits, dots, hyphens and
/// underscores, with neither a dot nor a hyphen in front, and valid for the library.
bool isPlainUserId(const std::string& id);

}  // namespace cmd

#endif
