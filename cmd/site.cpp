#include "site.h"

#include "mail/base/ascii.h"

namespace cmd {

Options::Options(const Args& args, const std::vector<std::string>& names) {
    for (size_t i = 0; i < args.size(); i++) {
        if (args[i].compare(0, 2, "--") != 0) {
            rest.push_back(args[i]);
            continue;
        }
        std::string name = args[i].substr(2);
        bool known = false;
        for (const std::string& n : names) known |= n == name;
        if (!known) throw UsageError("no option \"" + args[i] + "\"");
        if (i + 1 == args.size()) throw UsageError("\"" + args[i] + "\" needs a value");
        if (!given.emplace(name, args[++i]).second)
            throw UsageError("\"--" + name + "\" stands twice");
    }
}

std::string Options::value(const std::string& name, const std::string& otherwise) const {
    auto found = given.find(name);
    return found == given.end() ? otherwise : found->second;
}

int runAction(const Args& args, const std::map<std::string, int (*)(const Args&)>& actions) {
    auto found = args.empty() ? actions.end() : actions.find(args[0]);
    if (found == actions.end()) throw UsageError("an action, please");
    return found->second(Args(args.begin() + 1, args.end()));
}

void checkDomain(const std::string& domain) {
    bool good = !domain.empty() && domain.front() != '.' && domain.front() != '-';
    for (char c : domain)
        good &= attalven::isAlpha(c) || attalven::isDigit(c) || c == '.' || c == '-';
    if (!good || domain.size() > 200)
        throw Failure("\"" + domain + "\" is no domain name (letters, digits, dots and hyphens)");
}

namespace {

int runSite(const Args& args) {
    return runAction(args, {{"init", siteInit}});
}
int runUser(const Args& args) {
    return runAction(args, {{"add", userAdd}, {"show", userShow}});
}
int runPrefs(const Args& args) {
    return runAction(args, {{"show", prefsShow}, {"set", prefsSet}});
}

}  // namespace

std::span<const Command> siteCommands() {
    static const Command table[] = {
        {"site",
         "init DIR [--host HOST] [--domain DOMAIN] [--admin ID] [--port PORT] [--lang LANG]",
         "make a whole working site in DIR, which must be new or empty", runSite},
        {"user", "add|show ID [--domain DOMAIN]",
         "make the places of a user, or tell where they are and what is new", runUser},
        {"prefs", "show|set [ID] [--domain DOMAIN] [KEY=VALUE...]",
         "show or change the settings of a user, or without ID those of the site", runPrefs},
    };
    return table;
}

}  // namespace cmd
