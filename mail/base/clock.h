#ifndef ATTALVEN_MAIL_BASE_CLOCK_H
#define ATTALVEN_MAIL_BASE_CLOCK_H

// The clock for time limits: setting the date does not move it.

#include <ctime>

namespace attalven {

inline double monotonicSeconds() {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

}  // namespace attalven

#endif
