// Users and settings. Users of an additional mail domain get directories of their own below the
// domain's, where the library looks for them.

#include <sys/stat.h>

#include "mail/config/settings_tables.h"
#include "mail/mail.h"
#include "site.h"
#include "user_id.h"

namespace cmd {

namespace {

/// A user of a mail domain.
struct User {
    std::string id, domain;

    explicit User(const Options& options) : domain(options.value("domain", conf.mailDomainName)) {
        if (options.rest.empty()) throw UsageError("a user id, please");
        id = options.rest[0];
        if (!isPlainUserId(id))
            throw Failure("\"" + id + "\" is no user id here: 2 to 15 " +
                          (admOptions.allowCaseUserIdFlag ? "letters" : "small letters") +
                          ", digits, dots, hyphens, underscores" +
                          (admOptions.passwdFlag == 1 ? "; no digit in front" : ""));
        checkDomain(domain);
    }
    std::string mailbox() const {
        return std::string(conf.mboxRootDir) + "/" +
               smGetUserLogicalMBoxPath(id.c_str(), domain.c_str());
    }
    std::string spoolDirectory() const {
        if (admOptions.passwdFlag == 1) return "/var/spool/mail";
        return std::string(conf.spoolRootDir) + "/" +
               smGetUserLogicalSpoolPath(id.c_str(), domain.c_str());
    }
    std::string spoolFile() const { return spoolDirectory() + "/" + id; }
};

bool isDirectory(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

User existingUser(const Options& options) {
    User user(options);
    if (!isDirectory(user.mailbox()))
        throw Failure("no user \"" + user.id + "\" of " + user.domain + ": " + user.mailbox() +
                      " does not exist (attalven user add)");
    return user;
}

/// Whether the arguments begin with a user id; no id holds "=".
bool namesUser(const Options& options) {
    return !options.rest.empty() && options.rest[0].find('=') == std::string::npos;
}

/// One record with its settings table, loaded; save() writes it back. Without a user: the site's.
struct Preferences {
    explicit Preferences(const Options& options) {
        if (!namesUser(options)) return;
        user = existingUser(options);
        checkSettingsFile(user->mailbox() + "/preference.ini");
        mailGetPreference(user->id.c_str(), user->domain.c_str(), &ofUser);
    }
    attalven::Settings table() const {
        return user ? attalven::userSettings() : attalven::adminSettings();
    }
    void* record() { return user ? static_cast<void*>(&ofUser) : &admOptions; }
    void save() {
        if (user)
            mailSetPreference(user->id.c_str(), user->domain.c_str(), &ofUser);
        else
            mailSetAdminPreference(&admOptions);
    }

    std::optional<User> user;
    MailPreference ofUser = {};
};

std::string textOf(Preferences& preferences) {
    attalven::Text text;
    attalven::writeSettings(preferences.table(), preferences.record(), text);
    const char* lines = text.c_str();
    if (!lines) throw Failure("out of memory");
    return lines;
}

/// Sets KEY=VALUE; the key must be one of the table's, whole, and the value must fit.
void assign(Preferences& preferences, const std::string& setting) {
    size_t equals = setting.find('=');
    if (equals == std::string::npos) throw UsageError("\"" + setting + "\" is not KEY=VALUE");
    std::string key = setting.substr(0, equals), value = setting.substr(equals + 1);
    for (const attalven::Setting& row : preferences.table()) {
        if (row.use == attalven::Use::kReadOnly || !attalven::equalNoCase(row.key, key)) continue;
        attalven::FieldRef field = row.field(preferences.record());
        if (field.number)
            numberOf(value, key.c_str(), INT32_MIN);
        else if (value.size() >= field.text.size() || attalven::firstLine(value) != value)
            throw Failure(key + " takes one line of at most " +
                          std::to_string(field.text.size() - 1) + " bytes");
        attalven::storeSetting(preferences.table(), setting, preferences.record());
        return;
    }
    throw Failure("no setting \"" + key + "\"; \"attalven prefs show\" lists them");
}

}  // namespace

int userAdd(const Args& args) {
    Options options(args, {"domain"});
    if (options.rest.size() != 1) throw UsageError("one user id, please");
    loadSite();
    User user(options);
    if (isDirectory(user.mailbox()))
        throw Failure("\"" + user.id + "\" of " + user.domain +
                      " exists already: " + user.mailbox());
    mailInitPathName(user.mailbox().c_str());
    if (admOptions.passwdFlag != 1) mailInitPathName(user.spoolDirectory().c_str());
    if (!isDirectory(user.mailbox()) || !isDirectory(user.spoolDirectory()))
        throw Failure("cannot make " + user.mailbox() + " and " + user.spoolDirectory());
    MailPreference preference;
    mailGetPreference(user.id.c_str(), user.domain.c_str(), &preference);
    printf("%s@%s: mail arrives in %s\n", user.id.c_str(), user.domain.c_str(),
           user.spoolFile().c_str());
    return kDone;
}

int userShow(const Args& args) {
    Options options(args, {"domain"});
    if (options.rest.size() != 1) throw UsageError("one user id, please");
    loadSite();
    User user = existingUser(options);
    struct stat st;
    bool hasSpool = stat(user.spoolFile().c_str(), &st) == 0;
    printf("user     %s@%s%s\n", user.id.c_str(), user.domain.c_str(),
           mailUserLevel(user.id.c_str()) == 0 ? " (administrator)" : "");
    printf("mailbox  %s\nspool    %s", user.mailbox().c_str(), user.spoolFile().c_str());
    printf(hasSpool ? ", %lld bytes\n" : ", none yet\n", static_cast<long long>(st.st_size));
    printf("new      %d\n", mailNewMailChk(user.id.c_str(), user.domain.c_str(), 1));
    return kDone;
}

int prefsShow(const Args& args) {
    Options options(args, {"domain"});
    if (options.rest.size() > (namesUser(options) ? 1U : 0U))
        throw UsageError("show changes nothing");
    loadSite();
    Preferences preferences(options);
    fputs(textOf(preferences).c_str(), stdout);
    return kDone;
}

int prefsSet(const Args& args) {
    Options options(args, {"domain"});
    size_t first = namesUser(options) ? 1 : 0;
    if (options.rest.size() == first) throw UsageError("at least one KEY=VALUE, please");
    loadSite();
    Preferences preferences(options);
    for (size_t i = first; i < options.rest.size(); i++) assign(preferences, options.rest[i]);
    std::string wanted = textOf(preferences);
    preferences.save();
    loadSite();
    Preferences stored(options);
    if (textOf(stored) != wanted) throw Failure("the settings were not written");
    return kDone;
}

}  // namespace cmd
