#ifndef ATTALVEN_MAIL_BASE_IGNORE_SIGNAL_H
#define ATTALVEN_MAIL_BASE_IGNORE_SIGNAL_H

// A signal that is ignored for a while: a file size limit (SIGXFSZ) or a vanished peer (SIGPIPE) is
// then an ordinary error of the write.

#include <csignal>

namespace attalven {

class IgnoreSignal {
  public:
    explicit IgnoreSignal(int number) : number_(number) {
        struct sigaction ignore = {};
        ignore.sa_handler = SIG_IGN;
        ignored_ = sigaction(number_, &ignore, &before_) == 0;
    }
    ~IgnoreSignal() {
        if (ignored_) sigaction(number_, &before_, nullptr);
    }
    IgnoreSignal(const IgnoreSignal&) = delete;
    IgnoreSignal& operator=(const IgnoreSignal&) = delete;

  private:
    int number_;
    bool ignored_;
    struct sigaction before_ = {};
};

}  // namespace attalven

#endif
