// Attachment references and their files. Upload names come from forms and forwarded copies lie in a
// directory that all users of the host write to: below /tmp/ no link is followed, in no component,
// and nothing but regular files is read or removed. Names and paths that do not fit are refused: a
// cut path is another file.

#include "attachment_ref.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <optional>

#include "mail/base/bounded_text.h"
#include "mail/base/descriptor.h"

namespace attalven {

namespace {

using std::optional;

constexpr string_view kForward = "forward@", kInline = "cid_", kTmp = "/tmp/";
using Path = BoundedText<511>;

optional<Path> pathOf(string_view fileName) {
    AttachmentRef ref = AttachmentRef::of(fileName);
    Path path;
    string_view parts[] = {ref.name, {}, {}, {}};
    if (ref.form == AttachmentRef::Form::kUpload) {
        string_view address = viewOf(getenv("REMOTE_ADDR"));
        if (ref.name.find('/') != string_view::npos || address.find('/') != string_view::npos)
            return std::nullopt;
        parts[0] = kTmp;
        parts[1] = ref.name;
        parts[2] = "@";
        parts[3] = address;
    }
    for (string_view part : parts) {
        if (!path.fits(part)) return std::nullopt;
        path.append(part);
    }
    return path;
}

/// A directory and a name in it.
struct Place {
    Descriptor directory;
    BoundedText<NAME_MAX> name;
};

/// The place of a path below /tmp/, walked component by component, so that neither a link nor ".."
/// leads out of it.
optional<Place> placeBelowTmp(string_view path) {
    Place place{Descriptor(open("/tmp", O_PATH | O_DIRECTORY | O_CLOEXEC)), {}};
    for (string_view rest = tail(path, kTmp.size());;) {
        size_t length = std::min(rest.find('/'), rest.size());
        string_view component = head(rest, length);
        if (!place.directory || component == ".." || component.size() > NAME_MAX)
            return std::nullopt;
        place.name.assign(component);
        if (length == rest.size()) return place;
        rest = tail(rest, length + 1);
        if (component.empty()) continue;
        place.directory = Descriptor(openat(place.directory.get(), place.name.c_str(),
                                            O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
}

}  // namespace

AttachmentRef AttachmentRef::of(string_view fileName) {
    if (fileName.starts_with(kForward)) return {Form::kForward, tail(fileName, kForward.size())};
    if (fileName.starts_with("/")) return {Form::kPath, fileName};
    return {Form::kUpload, fileName};
}

AttachmentEntry AttachmentEntry::of(string_view entry) {
    AttachmentEntry read;
    read.isForward = entry.starts_with(kForward);
    read.fileName = entry;
    if (!entry.starts_with(kInline)) return read;
    read.isInline = true;
    string_view rest = tail(entry, kInline.size());
    size_t at = std::min(rest.find('@'), rest.size());
    read.fileName = lastComponent(head(rest, at));
    read.contentId = tail(rest, at + 1);
    return read;
}

std::span<char* const> attachmentEntries(char** list) {
    size_t n = 0;
    while (list && n < kMaxAttachments && list[n]) n++;
    return {list, n};
}

string_view lastComponent(string_view path) {
    return tail(path, path.rfind('/') + 1);  // npos + 1 is 0
}

OwnedFile openAttachment(string_view fileName) {
    optional<Path> path = pathOf(fileName);
    if (!path) return nullptr;
    if (!path->view().starts_with(kTmp)) return openRegular(path->c_str());
    optional<Place> place = placeBelowTmp(path->view());
    if (!place) return nullptr;
    return openRegularAt(place->directory.get(), place->name.c_str(), Links::kRefuse);
}

void removeTemporary(string_view fileName) {
    optional<Path> path = pathOf(fileName);
    if (!path || !path->view().starts_with(kTmp)) return;
    optional<Place> place = placeBelowTmp(path->view());
    struct stat st;
    if (place &&
        fstatat(place->directory.get(), place->name.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISREG(st.st_mode))
        unlinkat(place->directory.get(), place->name.c_str(), 0);
}

}  // namespace attalven
