#ifndef ATTALVEN_HOST_MAILVIEW_H
#define ATTALVEN_HOST_MAILVIEW_H

// One message: its page, its body, its parts. A request names it by folder, number and Message-ID,
// as the links of the library do, and a message inside it by the numbers of the parts that lead
// there.

#include <string>

#include "kit/folder.h"
#include "kit/message.h"
#include "kit/request.h"
#include "kit/session.h"

namespace host {

struct View {
    const Request& request;
    const User& user;
    const Folder& folder;
    int number;     // of the message in the folder
    PartPath path;  // of the field "part"

    /// The message's name, by which links find it in a folder that has changed.
    std::string id() const { return folder.nameOf(number); }
    /// The message that the path leads to.
    Message open() const { return {folder, number, path}; }
    /// "fldrname=...&select=...&msgid=..." and, for a path, "&part=...", to stand in a query.
    std::string query(const PartPath& part) const;
    std::string query() const { return query(path); }
};

/// cmd=view: the page of a message.
void showPage(const View& view);
/// cmd=body: its text as a response of its own, for the frame in the page.
void showBody(const View& view);
/// cmd=down: a part by the path to it, or by file name or Content-ID as in the library's links.
void downloadPart(const View& view);
/// cmd=zip: all attachments in one file.
void downloadAll(const View& view);
/// cmd=raw, cmd=header, cmd=savebody: the message as it is stored, as text or (down=1) as a file;
/// its header; its text.
void showRaw(const View& view);
void showHeader(const View& view);
void saveBody(const View& view);

/// Header lines of what comes out of a mail and is no page: nothing in it is active, no browser
/// guesses its type, no cache keeps it.
void printPassiveHeader();
/// The same with the lines of a file that is saved under `name`; `size` in bytes. Ends the header.
void printFileHeader(const std::string& type, const std::string& name, uint64_t size);

}  // namespace host

#endif
