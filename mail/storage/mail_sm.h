#ifndef ATTALVEN_MAIL_STORAGE_MAIL_SM_H
#define ATTALVEN_MAIL_STORAGE_MAIL_SM_H

namespace attalven {

/// Whether a line of the file of local host names equals `domain`, ignoring case and white space.
bool listsDomain(const char* path, const char* domain);

}  // namespace attalven

#endif
