#ifndef ATTALVEN_HOST_KIT_MESSAGE_H
#define ATTALVEN_HOST_KIT_MESSAGE_H

// A stored message as the programs read it: one of a folder, or one that stands as a part in
// another.

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "folder.h"
#include "mail_text.h"
#include "part.h"
#include "request.h"

namespace host {

/// Part numbers from 1, outermost first: "2.1" is part 1 of the message that is part 2.
using PartPath = std::vector<int>;

/// PageError 404 for a text that is no path; "" is the empty one.
PartPath partPath(const std::string& text);
std::string pathText(const PartPath& path);

/// The number of the message that a link names by its fields "select" and "msgid". PageError 404
/// when it is gone.
int linkedMessage(const Folder& folder, const Request& request);

class Message {
  public:
    /// Message `n` of a folder, which must stay open. PageError 404 for a part of the path that is
    /// not there or no message.
    Message(const Folder& folder, int n, const PartPath& path);

    MailInfo* info() const { return info_.get(); }
    MailBody* root() const { return info_->body; }
    FILE* file() const { return file_.get(); }
    /// The character set that the first part with one names, for texts that name none.
    const std::string& charSet() const { return charSet_; }
    /// The leaf parts: part number `k` is element `k` - 1.
    const std::vector<MailBody*>& parts() const { return parts_; }
    /// PageError 404 when there is no such part.
    MailBody& part(int number) const;

    /// Header fields in UTF-8.
    std::string header(const char* name) const { return headerValue(header_, name); }
    std::string subject() const { return headerText(header("Subject"), charSet_); }

    /// The file name of a part as its sender wrote it, "" without one.
    std::string nameOf(const MailBody& part) const;
    /// A name under which a part can be saved anywhere: never empty, without folders, control and
    /// direction characters.
    std::string saveName(int number) const;

    /// The decoded content of a part, without the line break that belongs to the delimiter behind
    /// it (RFC 2046 section 5.1.1): to `take` in pieces, measured, or written until `out` takes no
    /// more.
    void decode(MailBody& part, const Take& take) const;
    Measure measure(MailBody& part) const;
    void write(MailBody& part, FILE* out) const;
    /// A text in UTF-8; of one with more than `most` bytes the lines that fit, and `cut` is set.
    std::string text(MailBody& part, size_t most, bool& cut) const;

    /// Number of the text part that is the body of the message, 0 without one: as the library's
    /// callback chooses it.
    int bodyPart() const;
    /// The parts that the body does not show: all but the body, its other forms and delivery
    /// reports.
    std::vector<int> attachments() const;

  private:
    using Info = std::unique_ptr<MailInfo, void (*)(MailInfo*)>;
    void read(int offset, int size);
    void enter(MailBody& part);
    bool isDelimited(const MailBody& part) const;

    std::shared_ptr<FILE> file_;
    Info info_;
    std::string header_, charSet_;
    std::vector<MailBody*> parts_;
};

}  // namespace host

#endif
