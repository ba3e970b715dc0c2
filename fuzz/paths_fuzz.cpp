// Names from forms as parts of paths: whatever a user id, a domain, the name of a record or of an
// upload holds, no path leaves its root, and no file outside is read, written or removed. The
// fields are separated by NULs; byte 1 stands for the folder beside the root, which holds a file,
// byte 2 for a link below /tmp that leads there.

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "fuzz.h"
#include "mail/base/bounded_text.h"
#include "mail/compose/attachment_ref.h"
#include "mail/mail.h"
#include "support/host.h"

namespace fs = std::filesystem;
using fuzz::require;

namespace {

const std::string kName = "attalven-paths-fuzz-" + std::to_string(getpid());
const std::string kSandbox = "/dev/shm/" + kName, kRoot = kSandbox + "/root";
const std::string kOutside = kSandbox + "/outside", kSecret = kOutside + "/secret@ip";
const std::string kLink = "/tmp/" + kName;

/// Relative, not empty, and never above where it starts.
void checkInside(const std::string& path) {
    require(!path.empty() && path.size() <= 255 && path[0] != '/');
    for (const fs::path& component : fs::path(path)) require(component != "..");
}

void checkPaths(const char* id, const char* domain) {
    checkInside(smGetUserPhysicalSpoolPath(id, domain));
    checkInside(smGetUserLogicalSymLinkSpoolPath(id, domain));
    checkInside(smGetUserLogicalSymLinkMBoxPath(id, domain));
    std::string own = smGetUserPhysicalMBoxPath(id, domain);
    checkInside(own);
    // Nobody else's directory: it ends with the id, unless that is no file name.
    std::string name = id;
    if (!mailChkValidUserId(id) || name.empty() || name == "." || name == ".." || own == "=")
        return;
    require(own.ends_with("/" + name));
}

/// Uploads and paths below /tmp: nothing that lies elsewhere is opened. Other paths are files of
/// the caller's choice, but nothing there is removed.
void checkUpload(const std::string& entry) {
    std::string_view name = attalven::AttachmentEntry::of(entry).fileName;
    std::string_view path = attalven::AttachmentRef::of(name).name;
    bool isAbsolute = path.starts_with("/");
    if (isAbsolute && path.find(kName) == path.npos) return;
    attalven::removeTemporary(name);
    if (isAbsolute && !path.starts_with("/tmp/")) return;
    attalven::OwnedFile file = attalven::openAttachment(name);
    if (!file) return;
    std::string opened = "/proc/self/fd/" + std::to_string(fileno(file.get()));
    require(fs::read_symlink(opened).string().starts_with("/tmp/"));
}

void removeSandbox() {
    fs::remove_all(kSandbox);
    fs::remove(kLink);
}

bool makeSandbox() {
    fs::create_directories(kRoot);
    fs::create_directories(kOutside);
    std::ofstream(kSecret) << "secret";
    fs::create_directory_symlink(kOutside, kLink);
    attalven::cutCopy(conf.mboxRootDir, kRoot);
    setenv("REMOTE_ADDR", "ip", 1);
    return atexit(removeSandbox) == 0;
}

/// The number of entries of a directory.
auto entriesOf(const std::string& path) {
    return std::distance(fs::directory_iterator(path), {});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool isMade = makeSandbox();
    require(isMade);
    std::string input, f[4];
    for (size_t i = 0; i < size; i++) {
        if (data[i] == 1 || data[i] == 2)
            input += data[i] == 1 ? kOutside : kLink;
        else
            input += static_cast<char>(data[i]);
    }
    for (std::string& field : f) field = fuzz::takeField(input);
    const char *id = f[0].c_str(), *domain = f[1].c_str();
    checkPaths(id, domain);
    checkUpload(f[3]);
    mailInitMBoxPathName(id);
    mailSaveAutoSubmittedInfo(f[2].c_str(), id, domain, "a", "b");
    for (const fs::directory_entry& made : fs::directory_iterator(kRoot)) fs::remove_all(made);
    require(entriesOf(kSandbox) == 2 && entriesOf(kOutside) == 1 && fs::file_size(kSecret) == 6);
    return 0;
}
