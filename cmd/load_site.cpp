#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "mail/config/system_config.h"
#include "mail/mail.h"
#include "site.h"

namespace cmd {

void loadSite() {
    const char* site = getenv("ATTALVEN_SITE");
    std::string folder = site && *site ? std::string(site) + "/conf" : ATTALVEN_SYSCONFDIR;
    if (!attalven::loadSystemConfig(folder.c_str(), conf))
        throw Failure("no site: " + folder + "/" + attalven::kSystemConfigFiles[0] +
                      " does not open; make a site with \"attalven site init DIR\" and name it in "
                      "ATTALVEN_SITE");
    checkSettingsFile(std::string(conf.mboxRootDir) + "/admin_preference.ini");
    mailFreeAdminPreference(&admOptions);
    mailGetAdminPreference(&admOptions);
}

void checkSettingsFile(const std::string& path) {
    bool exists = access(path.c_str(), F_OK) == 0;
    std::string place = exists ? path : path.substr(0, path.rfind('/'));
    if (access(place.c_str(), exists ? R_OK | W_OK : W_OK | X_OK) != 0)
        throw Failure(place + ": " + strerror(errno));
}

}  // namespace cmd
