#ifndef ATTALVEN_MAIL_COMPOSE_DIALOGUE_H
#define ATTALVEN_MAIL_COMPOSE_DIALOGUE_H

// A dialogue of lines and reply codes over a connected socket: one stream for each direction. (On
// one read-write stream stdio loses a command that follows a reply of which a part is still
// unread.) Every wait is bounded; once the peer is gone, nothing more is sent and every reply is 0.

#include <cstdio>
#include <initializer_list>

#include "mail/base/ascii.h"
#include "mail/base/file.h"
#include "mail/base/ignore_signal.h"

namespace attalven {

class Dialogue {
  public:
    /// Takes the connected descriptor over.
    explicit Dialogue(int fd);
    /// Whether both streams could be made.
    bool isOpen() const { return in_ && out_; }
    /// Whether the peer is gone or a time limit ran out.
    bool isLost() const { return lost_; }

    /// Writes the bytes; nothing once the peer is gone.
    void write(string_view bytes);
    /// Reads one reply, which is there as a whole within `seconds`: its code, 0 when the peer is
    /// gone.
    int reply(int seconds);
    /// Writes the parts of one command line and reads its reply.
    int command(std::initializer_list<string_view> parts, int seconds);

  private:
    IgnoreSignal brokenPipe_{SIGPIPE};
    OwnedFile in_, out_;
    bool lost_ = false;
};

}  // namespace attalven

#endif
