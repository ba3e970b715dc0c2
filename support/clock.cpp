// Names of days and months, local time and its parts. The time zone is the process's (TZ).

#include <cstdint>

#include "mail/base/local_time.h"
#include "support.h"

const char* const week_eng[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat", nullptr};

// EUC-KR, the character set of Korean pages.
const char* const week_kor[] = {"\xC0\xCF", "\xBF\xF9", "\xC8\xAD", "\xBC\xF6",
                                "\xB8\xF1", "\xB1\xDD", "\xC5\xE4", nullptr};

const char* const month_eng[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",  "Jul",
                                 "Aug", "Sep", "Oct", "Nov", "Dec", nullptr};

namespace {

/// A time value no record holds reads as a year, month and day of 0.
struct tm localParts(time_t t) {
    struct tm parts = {};
    if (!attalven::localTime(t, parts)) {
        parts = {};
        parts.tm_year = -1900;
        parts.tm_mon = -1;
    }
    return parts;
}

}  // namespace

time_t getTs(int year, int month, int day, int hour, int minute, int second) {
    if (year < INT32_MIN + 1900 || month == INT32_MIN) return -1;
    struct tm parts = {};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    parts.tm_isdst = -1;  // summer time as it is on that day
    return mktime(&parts);
}

int getYear(time_t t) {
    return static_cast<int>(localParts(t).tm_year + int64_t{1900});
}

int getMonth(time_t t) {
    return localParts(t).tm_mon + 1;
}

int getDay(time_t t) {
    return localParts(t).tm_mday;
}
