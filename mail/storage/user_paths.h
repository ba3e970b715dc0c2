#ifndef ATTALVEN_MAIL_STORAGE_USER_PATHS_H
#define ATTALVEN_MAIL_STORAGE_USER_PATHS_H

#include "mail/base/bounded_text.h"

namespace attalven {

/// Wide enough for a root directory, a path below it and a file name, 255 bytes each, so that no
/// path of this library is ever cut.
using FilePath = BoundedText<1023>;

/// A user id or domain as one component of a path: "/" and the dots of "." and ".." turn into "=".
/// At most 255 bytes: a longer one turns into "=".
BoundedText<255> pathComponent(string_view name);

/// `conf.mboxRootDir` / `name`: a file of the site.
FilePath siteFilePath(string_view name);
/// `conf.mboxRootDir` / the user's mailbox directory / `name`.
FilePath userFilePath(const char* id, const char* domain, string_view name);
/// `conf.mboxRootDir` / the user's mailbox directory.
FilePath userDirectory(const char* id, const char* domain);
/// Makes the user's mailbox directory when it does not exist.
void ensureUserDirectory(const char* id, const char* domain);

}  // namespace attalven

#endif
