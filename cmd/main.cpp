// attalven: the operator's and the developer's tool over the library's public interface.

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "commands.h"
#include "mail/mail.h"

MailConf conf;
MailAdminPreference admOptions;

namespace cmd {

namespace {

std::vector<Command> allCommands() {
    std::vector<Command> all;
    for (std::span<const Command> table : {readCommands(), folderCommands(), composeCommands(),
                                           deliverCommands(), siteCommands(), displayCommands()})
        all.insert(all.end(), table.begin(), table.end());
    return all;
}

void printHelp(FILE* out) {
    fputs("usage: attalven COMMAND ARGUMENT...\n\ncommands:\n", out);
    for (const Command& c : allCommands())
        fprintf(out, "  %s %s\n      %s\n", c.name, c.synopsis, c.purpose);
    fputs(
        "\nFOLDER is an mbox file, N a message number from 1, K a part number from 0.\n"
        "site, user and prefs work on the site whose folder the environment variable "
        "ATTALVEN_SITE\nnames, else on the system's own.\n"
        "Texts are printed in UTF-8. Exit code: 0 done, 1 failed, 2 wrong command line.\n",
        out);
}

int runCommand(const Command& command, const Args& args) {
    try {
        return command.run(args);
    } catch (const UsageError& e) {
        fprintf(stderr, "attalven %s: %s\nusage: attalven %s %s\n", command.name, e.what(),
                command.name, command.synopsis);
        return kUsage;
    } catch (const std::exception& e) {
        fprintf(stderr, "attalven %s: %s\n", command.name, e.what());
        return kFailed;
    }
}

}  // namespace

int numberOf(const std::string& text, const char* what, int least) {
    char* end = nullptr;
    errno = 0;
    long n = strtol(text.c_str(), &end, 10);
    if (text.empty() || *end || errno || n < least || n > INT32_MAX)
        throw UsageError(std::string(what) + " must be a number of at least " +
                         std::to_string(least) + ", not \"" + text + "\"");
    return static_cast<int>(n);
}

}  // namespace cmd

int main(int argc, char** argv) {
    // For commands that need no site: the names of this host, as mail sent from it gives them.
    if (gethostname(conf.serverName, sizeof conf.serverName - 1) != 0 || !conf.serverName[0])
        snprintf(conf.serverName, sizeof conf.serverName, "localhost");
    snprintf(conf.mailDomainName, sizeof conf.mailDomainName, "localhost");
    std::string name = argc > 1 ? argv[1] : "";
    if (name == "--help" || name == "-h" || name == "help") {
        cmd::printHelp(stdout);
        return cmd::kDone;
    }
    for (const cmd::Command& c : cmd::allCommands()) {
        if (name != c.name) continue;
        int code = cmd::runCommand(c, cmd::Args(argv + 2, argv + argc));
        if (fflush(stdout) != 0 || ferror(stdout)) {
            fprintf(stderr, "attalven %s: writing the output: %s\n", c.name, strerror(errno));
            return cmd::kFailed;
        }
        return code;
    }
    if (!name.empty()) fprintf(stderr, "attalven: no command \"%s\"\n\n", name.c_str());
    cmd::printHelp(stderr);
    return cmd::kUsage;
}
