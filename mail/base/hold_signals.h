#ifndef ATTALVEN_MAIL_BASE_HOLD_SIGNALS_H
#define ATTALVEN_MAIL_BASE_HOLD_SIGNALS_H

// For work that shall not end half done: the signals that usually end a program wait, and a write
// beyond the file size limit is an ordinary error.

#include "ignore_signal.h"

namespace attalven {

class HoldSignals {
  public:
    HoldSignals() : sizeLimit_(SIGXFSZ) {
        sigset_t set;
        sigemptyset(&set);
        for (int number : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGALRM}) sigaddset(&set, number);
        sigprocmask(SIG_BLOCK, &set, &before_);
    }
    ~HoldSignals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
    HoldSignals(const HoldSignals&) = delete;
    HoldSignals& operator=(const HoldSignals&) = delete;

  private:
    IgnoreSignal sizeLimit_;
    sigset_t before_;
};

}  // namespace attalven

#endif
