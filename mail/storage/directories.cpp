// The makers of directories: every one gets mode 0700, the administrator as owner and the group
// "mail". They work by path, below the configured roots only; a path that does not fit whole is
// not made. The file-creation mask is set anew before each directory, because the settings writers
// leave one behind under which a directory could not be entered.

#include <sys/stat.h>

#include <cerrno>

#include "mail/storage.h"
#include "support/host.h"
#include "support/support.h"
#include "user_paths.h"

using namespace attalven;

namespace {

constexpr const char* kGroup = "mail";
constexpr mode_t kMask = 022;
constexpr int kMode = 0700;
constexpr size_t kPathLimit = 255;

/// `rootDir`/`relative`, unless it exists or is not a path of its own.
void makeBelow(const char* rootDir, string_view relative, const char* owner) {
    BoundedText<kPathLimit> path;
    if (relative == "=" || !path.fits(viewOf(rootDir))) return;
    path.append(viewOf(rootDir));
    path.append('/');
    if (path.view().back() != '/' || !path.fits(relative)) return;
    path.append(relative);
    if (!chkExistFile(path.c_str())) smInitPathName(path.c_str(), owner);
}

}  // namespace

int smInitPathName(const char* path, const char* owner) {
    string_view whole = viewOf(path);
    BoundedText<kPathLimit> part;
    if (whole.empty() || !part.fits(whole)) return 1;
    int result = 1;
    for (size_t end = 1; end <= whole.size(); end++) {
        if (end < whole.size() && whole[end] != '/') continue;
        part.assign(head(whole, end));
        result = chkExistFile(part.c_str());
        if (result) continue;
        umask(kMask);
        // Whatever kept chkExistFile() from seeing it, a directory that exists stays as it is.
        if (mkdir(part.c_str(), kMode) == 0 || errno != EEXIST)
            result = fileChgStat(part.c_str(), owner, kGroup, kMode);
    }
    return result;
}

int smUserSpoolMakeAndLink(const char* id, const char* rootDir, const char* owner,
                           const char* domain) {
    (void)domain;  // the physical tree is shared by all domains
    makeBelow(rootDir, smGetUserPhysicalSpoolPath(id, ""), owner);
    return 1;
}

int smUserMBoxMakeAndLink(const char* id, const char* rootDir, const char* owner,
                          const char* domain) {
    (void)domain;
    makeBelow(rootDir, smGetUserPhysicalMBoxPath(id, ""), owner);
    return 1;
}

int mailInitPathName(const char* path) {
    return smInitPathName(path, conf.adminId);
}

int mailInitSpoolPathName(const char* id) {
    return smUserSpoolMakeAndLink(id, conf.spoolRootDir, conf.adminId, conf.mailDomainName);
}

int mailInitMBoxPathName(const char* id) {
    return smUserMBoxMakeAndLink(id, conf.mboxRootDir, conf.adminId, conf.mailDomainName);
}

int mailMakeDir(const char* path) {
    if (!path || !*path) return -1;
    umask(kMask);
    mkdir(path, kMode);
    return fileChgStat(path, conf.adminId, kGroup, kMode);
}
