// Dates of any bytes give an instant without a fault; a date written from an instant gives that
// instant back, in any zone word and whatever the server's zone.

#include <ctime>

#include "fuzz.h"
#include "mail/parse.h"

namespace {

void checkWritten(uint32_t seed) {
    constexpr time_t kFrom = 631'152'000;  // 1990: no clock change in these zones since
    setenv("TZ", seed & 1 ? "UTC" : "Asia/Seoul", 1);
    time_t t = kFrom + seed;
    int minutesEast = static_cast<int>(seed % 1441) - 720;
    time_t shifted = t + minutesEast * 60;
    struct tm tm;
    gmtime_r(&shifted, &tm);
    char text[64];
    size_t n = strftime(text, sizeof text, seed & 2 ? "%a, %d %b %Y %T " : "%d %B %Y %T ", &tm);
    int minutes = abs(minutesEast);
    snprintf(text + n, sizeof text - n, "%c%02d%02d", minutesEast < 0 ? '-' : '+', minutes / 60,
             minutes % 60);
    fuzz::require(mailParseDate(text) == t);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    uint32_t seed = 0;
    memcpy(&seed, data, size < sizeof seed ? size : sizeof seed);
    checkWritten(seed);
    mailParseDate(fuzz::textOf(data, size).data());
    return 0;
}
