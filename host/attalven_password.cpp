// attalven-password ID: sets the password of a user of the site whose folder the environment
// variable ATTALVEN_SITE names, else of the system's own. The password is the first line of
// standard input; an empty one locks the user out. Exit code: 0 done, 1 failed, 2 wrong use.

#include <cstdio>
#include <iostream>
#include <string>

#include "cmd/site.h"
#include "kit/accounts.h"
#include "kit/passwords.h"

namespace {

void setFor(const std::string& id) {
    cmd::loadSite();
    if (host::existingHome(id).empty())
        throw cmd::Failure("no user \"" + id + "\" here (attalven user add)");
    std::string password;
    if (!std::getline(std::cin, password)) throw cmd::Failure("no password on standard input");
    if (!password.empty() && password.back() == '\r') password.pop_back();
    if (password.size() > host::kPasswordMax)
        throw cmd::Failure("a password has at most " + std::to_string(host::kPasswordMax) +
                           " bytes");
    if (!host::setPassword(id, password)) throw cmd::Failure("the password was not written");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        fputs("usage: attalven-password ID < PASSWORD\n", stderr);
        return cmd::kUsage;
    }
    try {
        setFor(argv[1]);
        return cmd::kDone;
    } catch (const std::exception& error) {
        fprintf(stderr, "attalven-password: %s\n", error.what());
        return cmd::kFailed;
    }
}
