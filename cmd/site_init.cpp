// attalven site init: everything that the library and its hosts read, in one new folder:
//
//   conf/    attalven.conf, mime.types, the message table of each language
//   doc/     template/<language>1/: page templates
//   mbox/    settings of the site, user directories
//   spool/   incoming mail

#include <sys/random.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "mail/base/bounded_text.h"
#include "mail/config/settings_tables.h"
#include "mail/mail.h"
#include "site.h"
#include "site_texts.h"
#include "support/support.h"

namespace cmd {

namespace {

namespace fs = std::filesystem;

void writeFile(const std::string& path, const std::string& content, int mode = 0644) {
    std::ofstream out(path, std::ios::binary);
    chmod(path.c_str(), static_cast<mode_t>(mode));
    out << content;
    out.close();
    if (!out) throw Failure(path + ": " + strerror(errno));
}

/// `utf8` in a language's page character set.
std::string pageText(const std::string& utf8, const SiteLanguage& language) {
    char* converted = strConvCharSet(language.charSet, "UTF-8", utf8.c_str());
    if (!converted) throw Failure(std::string("cannot convert texts into ") + language.charSet);
    std::string text = converted;
    free(converted);
    return text;
}

std::string messageTable(size_t language) {
    std::string table;
    for (const SiteMessage& message : siteMessages())
        table += std::to_string(message.number) + "\t" + message.texts[language] + "\n";
    return table;
}

std::string loginFailPage(const SiteLanguage& l) {
    return std::string("<!DOCTYPE html>\n<html lang=\"") + l.tag + "\">\n<head>\n<meta charset=\"" +
           l.charSet +
           "\">\n<meta name=\"viewport\" content=\"width=device-width, "
           "initial-scale=1\">\n<title>" +
           l.loginFailed + "</title>\n</head>\n<body>\n<h1>" + l.loginFailed +
           "</h1>\n<p><a href=\"/cgi-auth/login.cgi\">" + l.back + "</a></p>\n</body>\n</html>\n";
}

/// 13 letters and digits for signing login codes.
std::string newKey() {
    constexpr char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    constexpr unsigned count = sizeof letters - 1;
    std::string key;
    while (key.size() < sizeof conf.adminKey - 1) {
        unsigned char byte;
        if (getrandom(&byte, 1, 0) != 1) throw Failure("no random numbers");
        if (byte < 256 / count * count) key += letters[byte % count];
    }
    return key;
}

void setText(std::span<char> field, const std::string& value, const char* what) {
    if (value.size() >= field.size())
        throw Failure(std::string(what) + " \"" + value + "\" is longer than " +
                      std::to_string(field.size() - 1) + " bytes");
    attalven::cutCopy(field, value);
}

void fillConf(const Options& options, const std::string& dir) {
    conf = {};
    std::string host = options.value("host", "mail.localhost");
    checkDomain(host);
    size_t dot = host.find('.');
    if (dot == std::string::npos) throw Failure("the host \"" + host + "\" has no domain");
    std::string domain = options.value("domain", host.substr(dot + 1));
    checkDomain(domain);
    setText(conf.hostName, host.substr(0, dot), "the host");
    setText(conf.domainName, host.substr(dot + 1), "the host's domain");
    setText(conf.mailDomainName, domain, "the mail domain");
    setText(conf.rootDir, dir, "the folder");
    setText(conf.docRootDir, dir + "/doc", "the folder");
    setText(conf.spoolRootDir, dir + "/spool", "the folder");
    setText(conf.mboxRootDir, dir + "/mbox", "the folder");
    setText(conf.adminId, options.value("admin", "sysop"), "the administrator's id");
    setText(conf.adminKey, newKey(), "the key");
    std::string lang = options.value("lang", "eng");
    bool known = false;
    for (const SiteLanguage& l : siteLanguages()) known |= lang == l.code;
    if (!known || !mailChkValidUserId(conf.adminId))
        throw UsageError(known ? "a bad administrator's id"
                               : "the language is eng, jpn, chn or kor");
    setText(conf.defaultTemplateLang, lang, "the language");
    conf.defaultTemplateNum = 1;
    conf.httpdPort = numberOf(options.value("port", "80"), "the port");
    conf.httpdAdmPort = conf.httpdPort;
}

void makeDirectories(const std::string& dir) {
    umask(022);
    fs::create_directories(dir + "/conf");
    for (const SiteLanguage& l : siteLanguages())
        fs::create_directories(dir + "/doc/template/" + l.code + "1");
    for (const char* path : {conf.mboxRootDir, conf.spoolRootDir})
        if (mailInitPathName(path); !fs::is_directory(path))
            throw Failure(std::string("cannot make ") + path);
}

void writeTexts(const std::string& dir) {
    std::string types;
    for (const SiteMediaType& t : siteMediaTypes())
        types += std::string(t.type) + "\t" + t.extensions + "\n";
    writeFile(dir + "/conf/mime.types", types);
    for (size_t i = 0; i < siteLanguages().size(); i++) {
        const SiteLanguage& l = siteLanguages()[i];
        writeFile(dir + "/conf/msg." + l.code, pageText(messageTable(i), l));
        writeFile(dir + "/doc/template/" + l.code + "1/t_login_fail.html",
                  pageText(loginFailPage(l), l));
    }
}

/// The site's own settings: users have mail below the site, not system accounts.
void writeSiteSettings() {
    std::string mbox = conf.mboxRootDir;
    writeFile(mbox + "/storage.ini", std::string("[default]\nSPOOL = ") + conf.spoolRootDir +
                                         "\nMAILBOX = " + mbox + "\n");
    writeFile(mbox + "/smtp_server_list.ini", "localhost\n");
    checkSettingsFile(mbox + "/admin_preference.ini");
    mailGetAdminPreference(&admOptions);
    admOptions.passwdFlag = 0;
    mailSetAdminPreference(&admOptions);
}

/// Last, since it makes the folder a site. It holds the key of the login codes.
void writeConf(const std::string& path) {
    attalven::Text text;
    text.append("# System configuration of this mail site. Keys start their lines.\n");
    attalven::writeSettings(attalven::systemSettings(), &conf, text);
    if (!text.c_str()) throw Failure("out of memory");
    writeFile(path, text.c_str(), 0600);
}

}  // namespace

int siteInit(const Args& args) {
    Options options(args, {"host", "domain", "admin", "port", "lang"});
    if (options.rest.size() != 1) throw UsageError("one folder, please");
    fs::path dir = fs::absolute(options.rest[0]).lexically_normal();
    std::string folder = (dir.has_filename() ? dir : dir.parent_path()).string();
    if (fs::exists(folder) && !fs::is_empty(folder)) throw Failure(folder + " is not empty");
    fillConf(options, folder);
    makeDirectories(folder);
    writeTexts(folder);
    writeSiteSettings();
    writeConf(folder + "/conf/attalven.conf");
    printf("%s: a site for mail of %s\nuse it:  export ATTALVEN_SITE=%s\n", folder.c_str(),
           conf.mailDomainName, folder.c_str());
    return kDone;
}

}  // namespace cmd
