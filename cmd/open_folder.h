#ifndef ATTALVEN_CMD_OPEN_FOLDER_H
#define ATTALVEN_CMD_OPEN_FOLDER_H

// A folder that is only read: indexed from a stream of our own, so that no busy marker is set and
// the file stays as it is.

#include <memory>
#include <string>

#include "mail/mail.h"

namespace cmd {

struct CloseStream {
    void operator()(FILE* f) const { fclose(f); }
};
using Stream = std::unique_ptr<FILE, CloseStream>;

struct FreeFolder {
    void operator()(Fldr* f) const { fldrFree(f); }
};
struct FreeMessage {
    void operator()(MailInfo* m) const { mailFree(&m); }
};
using Message = std::unique_ptr<MailInfo, FreeMessage>;
struct FreeIndex {
    void operator()(MailBodyList** index) const { mailFreeBodyIdx(index); }
};
struct FreeParams {
    void operator()(MailParam* p) const { mailFreeParam(&p); }
};
using Params = std::unique_ptr<MailParam, FreeParams>;
using BodyIndex = std::unique_ptr<MailBodyList*, FreeIndex>;

class ReadFolder {
  public:
    /// Throws Failure when the file cannot be read or holds no message.
    explicit ReadFolder(const std::string& path);

    Fldr* get() const { return folder_.get(); }
    FILE* stream() const { return stream_.get(); }
    int count() const { return fldrMsgMax(folder_.get()); }
    /// Entry `n`; throws Failure when the folder has no such message.
    const FldrMsg& entry(int n) const;
    /// The parsed message `n`, structure included.
    Message message(int n) const;
    /// The stored bytes [offset, offset + size) of the file.
    std::string bytes(int offset, int size) const;

  private:
    std::string path_;
    Stream stream_;
    std::unique_ptr<Fldr, FreeFolder> folder_;
};

/// Part `k` of `index`; throws Failure when the message has no such part.
MailBody* partOf(const BodyIndex& index, int k);

/// The character set that bytes outside encoded words are taken to be in: that of the first part
/// that names one.
std::string bodyCharset(MailBody* root);

/// The part with its transfer encoding undone.
std::string decodedPart(MailBody* part, FILE* stream);

}  // namespace cmd

#endif
