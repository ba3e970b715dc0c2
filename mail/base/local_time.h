#ifndef ATTALVEN_MAIL_BASE_LOCAL_TIME_H
#define ATTALVEN_MAIL_BASE_LOCAL_TIME_H

// Local time as localtime() reads it, without its static record.

#include <ctime>

namespace attalven {

/// The parts of `t` in the zone that TZ names now (the reentrant form alone keeps the zone of its
/// first call); false when the year does not fit.
inline bool localTime(time_t t, struct tm& local) {
    tzset();
    return localtime_r(&t, &local);
}

}  // namespace attalven

#endif
