#ifndef ATTALVEN_CMD_COMMANDS_H
#define ATTALVEN_CMD_COMMANDS_H

// The commands of the program `attalven`, one table per source file; main.cpp joins the tables.

#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace cmd {

/// Exit codes: 0 done, 1 the operation failed, 2 the command line was wrong.
enum ExitCode { kDone = 0, kFailed = 1, kUsage = 2 };

/// The arguments after the command's name.
using Args = std::vector<std::string>;

struct Command {
    const char* name;
    const char* synopsis;  // arguments, for the usage line
    const char* purpose;   // one line of --help
    int (*run)(const Args& args);
};

/// Thrown by a command for a wrong command line: main prints the text and the usage line, exit
/// code 2.
struct UsageError : std::runtime_error {
    using runtime_error::runtime_error;
};
/// Thrown by a command that cannot do its work: main prints the text, exit code 1.
struct Failure : std::runtime_error {
    using runtime_error::runtime_error;
};

std::span<const Command> readCommands();
std::span<const Command> folderCommands();
std::span<const Command> composeCommands();
std::span<const Command> deliverCommands();
std::span<const Command> siteCommands();
std::span<const Command> displayCommands();

/// A decimal number of at least `least`, or a UsageError that names `what`.
int numberOf(const std::string& text, const char* what, int least = 1);

}  // namespace cmd

#endif
