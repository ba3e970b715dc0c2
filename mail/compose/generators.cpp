// Dates, identifiers and boundaries for composed messages. Each result stands in a static text of
// its own; beside those only two things outlive a call: the count of Message-IDs and the last
// boundary. Boundaries come from srand() and rand(), seeded with the clock, so equal clocks give
// equal texts: what has to differ within a message is told apart by the "last boundary" rule.

#include <cstdlib>
#include <ctime>

#include "boundary.h"
#include "mail/base/bounded_text.h"
#include "mail/base/local_time.h"
#include "mail/compose.h"
#include "support/host.h"
#include "support/support.h"

namespace attalven {

namespace {

/// Seconds that local time is ahead of UTC, by the C library's conversions alone. The UTC time is
/// read back as standard time, so during daylight saving the difference is the standard one.
long zoneOffset(time_t t) {
    struct tm local, utc;
    if (!localTime(t, local) || !gmtime_r(&t, &utc)) return 0;
    utc.tm_isdst = 0;
    return static_cast<long>(mktime(&local) - mktime(&utc));
}

/// A boundary of the characters that `pick` chooses, other than the last one.
char* drawBoundary(int (*pick)(int count)) {
    constexpr char kCharacters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ1234567890";
    constexpr size_t kLength = 24;
    static BoundedText<kLength> boundary;
    char drawn[kLength];
    do {
        for (char& c : drawn) c = kCharacters[pick(36)];
    } while (boundary.view() == string_view(drawn, kLength));
    boundary.assign({drawn, kLength});
    return boundary.data();
}

}  // namespace

char* redrawBoundary() {
    return drawBoundary([](int count) { return rand() % count; });
}

char* drawSecretBoundary() {
    initRandom();
    return drawBoundary(getRandom);
}

}  // namespace attalven

using namespace attalven;

char* mailMakeDate(time_t t) {
    static BoundedText<500> dateBuf;
    dateBuf.clear();
    struct tm local;
    if (!localTime(t, local)) return dateBuf.data();
    long offset = zoneOffset(t);
    dateBuf.appendFormat("%s, %d %s %d %02d:%02d:%02d %+03ld%02ld", week_eng[local.tm_wday],
                         local.tm_mday, month_eng[local.tm_mon], local.tm_year + 1900,
                         local.tm_hour, local.tm_min, local.tm_sec, offset / 3600,
                         labs(offset) % 3600 / 60);
    return dateBuf.data();
}

char* mailGetRFC822FromDate(time_t t) {
    static BoundedText<200> fromDateBuf;
    fromDateBuf.clear();
    struct tm local;
    if (!localTime(t, local)) return fromDateBuf.data();
    fromDateBuf.appendFormat("%s %s %02d %02d:%02d:%02d %04d", week_eng[local.tm_wday],
                             month_eng[local.tm_mon], local.tm_mday, local.tm_hour, local.tm_min,
                             local.tm_sec, local.tm_year + 1900);
    return fromDateBuf.data();
}

char* mailGetMsgId(void) {
    static BoundedText<200> msgId;
    static long msgIdCount;
    msgId.clear();
    time_t now = time(nullptr);
    struct tm local = {};
    localTime(now, local);
    msgId.appendFormat("%04d%02d%02d.AAA%ld@%s", local.tm_year + 1900, local.tm_mon + 1,
                       local.tm_mday, static_cast<long>(now) + msgIdCount++, conf.domainName);
    return msgId.data();
}

char* mailerInfo(void) {
    static BoundedText<200> mailer;
    mailer.clear();
    const char* system = getUnixName();
    mailer.appendFormat("@TALVEN-5.0.0905.1.2400 (%s)", system ? system : "");
    return mailer.data();
}

char* mailGenBoundary(void) {
    srand(static_cast<unsigned>(time(nullptr)));
    return redrawBoundary();
}
