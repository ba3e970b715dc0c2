#include "accounts.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>

#include "cmd/user_id.h"
#include "mail/mail.h"

namespace host {

namespace {

bool isDirectory(const std::string& path) {
    struct stat st;
    return lstat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

std::string homePath(const std::string& id) {
    return std::string(conf.mboxRootDir) + "/" + mailGetUserMBoxPath(id.c_str());
}

std::vector<std::string> namesIn(const std::string& path) {
    std::vector<std::string> names;
    std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(path.c_str()), closedir);
    if (!directory) return names;
    while (const dirent* entry = readdir(directory.get())) names.emplace_back(entry->d_name);
    return names;
}

}  // namespace

std::string existingHome(const std::string& id) {
    if (!cmd::isPlainUserId(id)) return "";
    std::string path = homePath(id);
    return isDirectory(path) ? path : "";
}

std::vector<std::string> userIds() {
    std::vector<std::string> ids;
    std::string root = conf.mboxRootDir;
    for (const std::string& first : namesIn(root)) {
        if (first.size() != 1) continue;
        for (const std::string& second : namesIn(root + "/" + first)) {
            if (second.size() != 1 || second == ".") continue;
            for (const std::string& id : namesIn(root + "/" + first + "/" + second))
                if (id.substr(0, 2) == first + second && !existingHome(id).empty())
                    ids.push_back(id);
        }
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}

bool addUser(const std::string& id) {
    mailInitMBoxPathName(id.c_str());
    if (admOptions.passwdFlag != 1) mailInitSpoolPathName(id.c_str());
    if (existingHome(id).empty()) return false;
    MailPreference preference;
    mailGetPreference(id.c_str(), conf.mailDomainName, &preference);
    return true;
}

}  // namespace host
