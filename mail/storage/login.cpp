// What the programs need around a user's visit. Cookies, ids and codes come from the client: a
// cookie names a template only with harmless characters, and an id that does not fit is nobody's.

#include <cstdio>

#include "mail/base/file.h"
#include "mail/folder.h"
#include "mail/storage.h"
#include "support/host.h"
#include "support/support.h"
#include "user_paths.h"

using namespace attalven;

namespace {

constexpr const char* kScriptStart = "<SCRIPT LANGUAGE=\"JavaScript\">\n";

/// The language of the page as the cookie has it, empty when it is no plain name.
BoundedText<3> cookieLanguage() {
    BoundedText<3> language;
    language.append(viewOf(cgiCkGetVal("lang")));
    for (char c : language.view())
        if (!isAlpha(c) && !isDigit(c) && c != '_' && c != '-') return {};
    return language;
}

void printTemplate(const char* language, int number) {
    char name[64];
    snprintf(name, sizeof name, "%s%d/t_login_fail.html", language, number);
    FilePath path;
    path.append(conf.docRootDir);
    path.append("/template/");
    path.append(name);
    OwnedFile file = openRegular(path.c_str());
    if (!file) return;
    // A callback gets the address of a slot, which holds a text or is itself the integer.
    void* pLang = const_cast<char*>(language);
    const Directive directives[] = {
        {"LANG", pfnPrtStr, &pLang, 0},
        {"TNUM", pfnPrtInt, reinterpret_cast<void**>(&number), 0},
        {"DEFAULT", pfnPrtStr, nullptr, 0},
        {},
    };
    strmParseDirective(file.get(), directives);
}

FilePath spoolFile(const char* id, const char* domain) {
    FilePath path;
    if (admOptions.passwdFlag == 1) {
        path.append("/var/spool/mail/");
    } else {
        path.append(conf.spoolRootDir);
        path.append('/');
        path.append(smGetUserLogicalSpoolPath(id, domain));
        path.append('/');
    }
    path.append(pathComponent(viewOf(id)).view());
    return path;
}

}  // namespace

void mailLoginFail(const char* message) {
    BoundedText<3> chosen = cookieLanguage();
    const char* language = chosen.empty() ? conf.defaultTemplateLang : chosen.c_str();
    int number = decimal(viewOf(cgiCkGetVal("tnum")));
    if (number == 0) number = conf.defaultTemplateNum;
    printf("%salert('%s');\n</SCRIPT>", kScriptStart, message ? message : "");
    printTemplate(language, number);
}

int mailAuthUserId(const char* id, const char* authCode) {
    static BoundedText<15> userId;
    userId.assign(viewOf(strGetAuthCodeVal(authCode ? authCode : "", conf.adminKey)));
    return !userId.empty() && userId.view() == viewOf(id);
}

int mailUserLevel(const char* id) {
    return id && viewOf(id) == conf.adminId ? 0 : 2;
}

void mailChkMemo(const char* id) {
    FilePath path = userFilePath(id, "", "memo");
    char record[4024];
    if (!chkExistFile(path.c_str()) || fileGetRecord(path.c_str(), record, sizeof record, 1) == -1)
        return;
    printf("%smemoViewWin();</SCRIPT>\n", kScriptStart);
}

int mailNewMailChk(const char* id, const char* domain, int mode) {
    if (!id || !*id) return 0;
    FilePath path = spoolFile(id, domain);
    if (!chkExistFile(path.c_str())) return 0;
    Fldr* folder = fldrOpen(path.c_str());
    if (!folder) return 0;
    int count = mode == 1 ? fldrMsgNewNum(folder) : 0;
    fldrClose(folder);
    return count;
}
