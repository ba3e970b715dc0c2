// Dates of mail headers, read by the position of their words. Numbers are clamped long before they
// can overflow, a zone that is too short is none, and years that the C library cannot hold give
// what follows from its -1.
//
// The instant is defined by local time: t = mktime(written time), and for a known zone t + L - zone
// with L = mktime(localtime(t)) - mktime(gmtime(t)). While daylight saving is in force L is the
// standard offset, so that t + L is an hour off; callers have always been given that. mktime
// examines /etc/localtime on every call when TZ is unset, which costs more than all else in a
// header; therefore dates far from any change of the local clock, outside daylight saving, are
// computed by day arithmetic, which then gives the same.

#include "mail_date.h"

#include <cstdlib>

#include "mail/parse.h"

namespace attalven {
namespace {

constexpr int kLimit = 1'000'000'000;  // of any number in a date
constexpr int kHour = 3600, kDay = 24 * kHour;

struct Zone {
    bool known = true;
    int seconds = 0;  // east of Greenwich
};

struct WrittenDate {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    Zone zone;
};

int number(string_view word) {
    return std::clamp(decimal(word), -kLimit, kLimit);
}

/// Takes a number as scanf's %d reads it; nothing when there is no digit.
std::optional<int> takeNumber(string_view& text) {
    string_view s = trimHead(text);
    size_t digits = !s.empty() && (s.front() == '-' || s.front() == '+') ? 1 : 0;
    size_t end = digits;
    while (end < s.size() && isDigit(s[end])) end++;
    if (end == digits) return std::nullopt;
    text = tail(s, end);
    return number(head(s, end));
}

//   date-time = [ day-name "," ] day month year hour ":" minute [ ":" second ] [ zone ]

/// Month 1 to 12 by the letters that tell the names apart, 0 for any other word.
int monthOf(string_view word) {
    auto letter = [word](size_t i) { return i < word.size() ? toLower(word[i]) : '\0'; };
    switch (letter(0)) {
        case 'a':
            return letter(1) == 'p' ? 4 : 8;
        case 'd':
            return 12;
        case 'f':
            return 2;
        case 'j':
            return letter(1) == 'a' ? 1 : letter(2) == 'n' ? 6 : 7;
        case 'm':
            return letter(2) == 'r' ? 3 : 5;
        case 'n':
            return 11;
        case 'o':
            return 10;
        case 's':
            return 9;
        default:
            return 0;
    }
}

int yearOf(string_view word) {
    int year = number(word);
    return year ? year : 2000;
}

/// "h:m:s" or "h:m"; anything else is midnight.
void readTime(string_view word, WrittenDate& date) {
    std::optional<int> hour = takeNumber(word);
    if (!hour || word.empty() || word.front() != ':') return;
    word = tail(word, 1);
    std::optional<int> minute = takeNumber(word);
    if (!minute) return;
    date.hour = *hour;
    date.minute = *minute;
    if (word.empty() || word.front() != ':') return;
    word = tail(word, 1);
    date.second = takeNumber(word).value_or(0);
}

/// "+hhmm" or "-hhmm", its digits taken by position whatever they are, or the first letter of a
/// North American zone, whose second letter tells daylight time.
Zone zoneOf(string_view word) {
    char first = word.front();
    if (first == '+' || first == '-') {
        if (word.size() < 5) return {.known = false};
        auto digit = [word](size_t i) { return byteOf(word[i]) - '0'; };
        int seconds = (digit(1) * 10 + digit(2)) * kHour + (digit(3) * 10 + digit(4)) * 60;
        return {.seconds = first == '-' ? -seconds : seconds};
    }
    constexpr string_view kLetters = "ECMP";  // 5 to 8 hours west
    size_t index = kLetters.find(first);
    if (index == string_view::npos) return {.known = false};
    int hours = -5 - static_cast<int>(index) + (word.size() > 1 && word[1] == 'D');
    return {.seconds = hours * kHour};
}

WrittenDate readDate(string_view value) {
    value = head(value, value.find('\0'));
    string_view rest = valueAfter(value, ',').value_or(value);
    WrittenDate date;
    for (int position = 1; position <= 5; position++) {
        rest = tail(rest, rest.find_first_not_of(" \t"));
        string_view word = head(rest, rest.find_first_of(" \t"));
        if (word.empty()) break;
        rest = tail(rest, word.size());
        switch (position) {
            case 1:
                date.day = number(word);
                break;
            case 2:
                date.month = monthOf(word);
                break;
            case 3:
                date.year = yearOf(word);
                break;
            case 4:
                readTime(word, date);
                break;
            default:
                date.zone = zoneOf(word);
        }
    }
    return date;
}

/// mktime re-reads the zone on every call; the reentrant forms never do. Once is enough while TZ is
/// unset; when it is set, tzset compares a name.
void refreshZone() {
    static bool zoneIsRead = false;
    bool isUnset = !getenv("TZ");
    if (!(zoneIsRead && isUnset)) tzset();
    zoneIsRead = isUnset;
}

/// Seconds since the epoch of the written time as if it were UTC, for a date of usual numbers.
time_t asUtc(const WrittenDate& date) {
    // Days by the civil calendar, counted from 1 March of the year 0, so that a leap day is last.
    int64_t year = date.month > 2 ? date.year : date.year - 1;
    int64_t month = date.month > 2 ? date.month - 3 : date.month + 9;
    int64_t days = year * 365 + year / 4 - year / 100 + year / 400 + (month * 153 + 2) / 5 +
                   date.day - 1 - 719'468;
    return days * kDay + date.hour * kHour + date.minute * 60 + date.second;
}

/// The local offset around `t` when it is one and the same, and standard time, from two days before
/// to two days after: more than twice any offset, so that the written time cannot be one that a
/// change of the clock skips or repeats, however it is read.
std::optional<time_t> calmOffset(time_t t) {
    time_t before = t - 2 * kDay, after = t + 2 * kDay;
    struct tm first, last;
    if (!localtime_r(&before, &first) || !localtime_r(&after, &last)) return std::nullopt;
    if (first.tm_isdst || last.tm_isdst || first.tm_gmtoff != last.tm_gmtoff) return std::nullopt;
    return first.tm_gmtoff;
}

/// The definition itself.
time_t byLocalTime(const WrittenDate& date) {
    struct tm written = {};
    written.tm_year = date.year - 1900;
    written.tm_mon = date.month - 1;
    written.tm_mday = date.day;
    written.tm_hour = date.hour;
    written.tm_min = date.minute;
    written.tm_sec = date.second;
    written.tm_isdst = -1;
    time_t t = mktime(&written);
    if (!date.zone.known) return t;
    struct tm local, greenwich;
    time_t offset = 0;
    if (localtime_r(&t, &local) && gmtime_r(&t, &greenwich))
        offset = mktime(&local) - mktime(&greenwich);
    return t + offset - date.zone.seconds;
}

bool isUsual(const WrittenDate& d) {
    return d.year >= 1900 && d.year <= 9999 && d.month >= 1 && d.day >= 0 && d.day <= 31 &&
           d.hour >= 0 && d.hour <= 24 && d.minute >= 0 && d.minute <= 60 && d.second >= 0 &&
           d.second <= 60;
}

}  // namespace

time_t parseDate(string_view value) {
    WrittenDate date = readDate(value);
    refreshZone();
    if (isUsual(date)) {
        time_t utc = asUtc(date);
        if (std::optional<time_t> offset = calmOffset(utc))
            return utc - (date.zone.known ? date.zone.seconds : *offset);
    }
    return byLocalTime(date);
}

}  // namespace attalven

time_t mailParseDate(char* value) {
    return value ? attalven::parseDate(value) : 0;
}
