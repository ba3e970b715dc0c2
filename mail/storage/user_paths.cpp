// Where a user's mail lies, below the roots. Ids and domains come from forms: whatever could leave
// the tree, or miss the level of its own, turns into "=", which no valid id contains, so that such
// an id never meets another user's files.

#include "user_paths.h"

#include "mail/storage.h"
#include "support/host.h"
#include "support/support.h"

namespace attalven {

namespace {

using PathName = BoundedText<255>;

enum class Level { kFirst, kSecond, kUser };

char levelOf(string_view id, size_t n) {
    return n < id.size() ? id[n] : '=';
}

/// The path down to `level` of the tree of the main domain or of an additional one.
char* compose(PathName& path, const char* id, const char* domain, Level level) {
    PathName user = pathComponent(viewOf(id));
    BoundedText<2 * 255 + 8> whole;
    if (smChkMultiMailDomainName(domain)) {
        whole.append(pathComponent(viewOf(domain)).view());
        whole.append('/');
    }
    whole.append(levelOf(user.view(), 0));
    if (level != Level::kFirst) {
        whole.append('/');
        whole.append(levelOf(user.view(), 1));
    }
    if (level == Level::kUser) {
        whole.append('/');
        whole.append(user.empty() ? string_view("=") : user.view());
    }
    path.clear();
    // A cut path would be another user's.
    path.append(path.fits(whole.view()) ? whole.view() : string_view("="));
    return path.data();
}

}  // namespace

PathName pathComponent(string_view name) {
    PathName component;
    if (!component.fits(name)) {
        component.append('=');
        return component;
    }
    bool onlyDots = name == "." || name == "..";
    for (char c : name) component.append(c == '/' || onlyDots ? '=' : c);
    return component;
}

FilePath siteFilePath(string_view name) {
    FilePath path;
    path.append(conf.mboxRootDir);
    path.append('/');
    path.append(name);
    return path;
}

FilePath userDirectory(const char* id, const char* domain) {
    return siteFilePath(smGetUserLogicalMBoxPath(id, domain));
}

FilePath userFilePath(const char* id, const char* domain, string_view name) {
    FilePath path = userDirectory(id, domain);
    path.append('/');
    path.append(name);
    return path;
}

void ensureUserDirectory(const char* id, const char* domain) {
    if (!chkExistFile(userDirectory(id, domain).c_str()))
        smUserMBoxMakeAndLink(id, conf.mboxRootDir, conf.adminId, domain);
}

}  // namespace attalven

using namespace attalven;

int smChkMultiMailDomainName(const char* domain) {
    string_view name = viewOf(domain);
    return name.find('.') != string_view::npos && !equalNoCase(name, conf.mailDomainName);
}

char* smGetUserPhysicalSpoolPath(const char* id, const char* domain) {
    static PathName pathName;
    return compose(pathName, id, domain, Level::kSecond);
}

char* smGetUserLogicalSpoolPath(const char* id, const char* domain) {
    static PathName pathName;
    return compose(pathName, id, domain, Level::kSecond);
}

char* smGetUserLogicalSymLinkSpoolPath(const char* id, const char* domain) {
    static PathName pathName;
    return compose(pathName, id, domain, Level::kFirst);
}

char* smGetUserPhysicalMBoxPath(const char* id, const char* domain) {
    static PathName pathName;
    return compose(pathName, id, domain, Level::kUser);
}

char* smGetUserLogicalMBoxPath(const char* id, const char* domain) {
    static PathName pathName;
    return compose(pathName, id, domain, Level::kUser);
}

char* smGetUserLogicalSymLinkMBoxPath(const char* id, const char* domain) {
    static PathName pathName;
    return compose(pathName, id, domain, Level::kSecond);
}

char* mailGetUserSpoolPath(const char* id) {
    return smGetUserLogicalSpoolPath(id, conf.mailDomainName);
}

char* mailGetUserMBoxPath(const char* id) {
    return smGetUserLogicalMBoxPath(id, conf.mailDomainName);
}
