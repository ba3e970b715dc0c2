#ifndef ATTALVEN_CMD_SITE_H
#define ATTALVEN_CMD_SITE_H

// The site that a command works on, and the options that such commands take.

#include <map>
#include <string>
#include <vector>

#include "commands.h"

namespace cmd {

/// Loads `conf` and `admOptions`: of the site in the folder that the environment variable
/// ATTALVEN_SITE names, else of the system's site. Failure when there is none.
void loadSite();

/// A Failure unless the settings file can be read and written, or made: the library would end the
/// process with a page.
void checkSettingsFile(const std::string& path);

/// Arguments taken apart: "--name value" for each of `names`, and the rest in order. UsageError for
/// an option that is unknown, given twice or without value.
struct Options {
    Options(const Args& args, const std::vector<std::string>& names);
    /// The option's value, or `otherwise`.
    std::string value(const std::string& name, const std::string& otherwise) const;
    bool has(const std::string& name) const { return given.count(name) != 0; }

    std::map<std::string, std::string> given;
    Args rest;
};

/// The command's own name for an action, looked up in `actions`; UsageError when it is none.
int runAction(const Args& args, const std::map<std::string, int (*)(const Args&)>& actions);

/// A Failure unless `domain` is made of letters, digits, dots and hyphens.
void checkDomain(const std::string& domain);

int siteInit(const Args& args);
int userAdd(const Args& args);
int userShow(const Args& args);
int prefsShow(const Args& args);
int prefsSet(const Args& args);

}  // namespace cmd

#endif
