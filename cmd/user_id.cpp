#include "user_id.h"

#include "mail/storage.h"

namespace cmd {

bool isPlainUserId(const std::string& id) {
    constexpr const char* plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-";
    return id.size() >= 2 && id[0] != '.' && id[0] != '-' &&
           id.find_first_not_of(plain) == std::string::npos && mailChkValidUserId(id.c_str());
}

}  // namespace cmd
