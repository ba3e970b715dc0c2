#ifndef ATTALVEN_CMD_DELIVER_H
#define ATTALVEN_CMD_DELIVER_H

#include <cstdio>
#include <string>

namespace cmd {

/// Where mail leaves: the server ("" for the site's choice), and the name with which the adapter
/// for strict servers greets it ("": no adapter).
struct Outlet {
    std::string server, helo;
};

/// Delivers the message in `message` to the addresses of `to` and prints one line a recipient with
/// the server's reply code. Result: the command's exit code, kFailed unless every recipient was
/// taken.
int deliver(FILE* message, const std::string& from, const std::string& to, const Outlet& outlet);

}  // namespace cmd

#endif
