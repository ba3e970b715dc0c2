#ifndef ATTALVEN_MAIL_COMPOSE_ATTACHMENT_REF_H
#define ATTALVEN_MAIL_COMPOSE_ATTACHMENT_REF_H

// The one reading of attachment references, for the composer, the body writer and the cleanup:
//
//   NAME             an upload, the file /tmp/NAME@ADDRESS (ADDRESS: the environment's REMOTE_ADDR)
//   /PATH            a file where it lies
//   forward@PATH     a stored message to forward whole
//   cid_NAME@ID      an uploaded inline image with its Content-ID; only in attachment lists
//
// A node's fileName holds one of the first three: whoever reads it never sees the prefix of an
// inline image, so that a name cannot turn into another form.

#include <cstddef>
#include <span>

#include "mail/base/file.h"

namespace attalven {

constexpr size_t kMaxAttachments = 99;

struct AttachmentRef {
    enum class Form { kUpload, kPath, kForward };
    Form form;
    string_view name;  // upload name or path
    static AttachmentRef of(string_view fileName);
};

/// An entry of an attachment list.
struct AttachmentEntry {
    bool isInline = false;
    bool isForward = false;
    string_view fileName;   // as a node holds it
    string_view contentId;  // of an inline image
    static AttachmentEntry of(string_view entry);
};

/// The entries before the NULL that ends `list` (NULL: none), at most kMaxAttachments.
std::span<char* const> attachmentEntries(char** list);

/// The last component of a path, or the whole text without a "/".
string_view lastComponent(string_view path);

/// The file behind a node's fileName, NULL when it is no regular file, or is a name or path that is
/// not opened.
OwnedFile openAttachment(string_view fileName);
/// Removes the file if it is an upload or lies below /tmp/.
void removeTemporary(string_view fileName);

}  // namespace attalven

#endif
