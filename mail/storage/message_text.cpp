// Texts of the message table and the date of page headers, in the language of the page. The table
// belongs to the installation: its texts are filtered before they serve as formats, and results
// are cut to fit.

#include "message_text.h"

#include <cstdarg>
#include <cstdio>

#include "format_filter.h"
#include "mail/base/bounded_text.h"
#include "mail/base/local_time.h"
#include "mail/storage.h"
#include "support/host.h"
#include "support/support.h"
#include "user_paths.h"

namespace attalven {

namespace {

constexpr int kSlots = 5;
constexpr int kKorean = 4;
using Message = BoundedText<300>;

/// The slots are taken in turn, so that a caller can put five texts into one line.
Message& nextSlot() {
    static Message msg[kSlots];
    static int msgPos = 0;
    if (msgPos == kSlots) msgPos = 0;
    return msg[msgPos++];
}

/// Fills the accepted conversions of a filtered format.
void fill(Message& slot, Text& format, va_list args) {
    char wide[sizeof(Message) + 1];
    slot.clear();
    const char* text = format.c_str();
    if (!text) return;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"  // what filterFormat() let through
    int n = vsnprintf(wide, sizeof wide, text, args);
#pragma GCC diagnostic pop
    if (n > 0) slot.append({wide, std::min(static_cast<size_t>(n), sizeof wide - 1)});
}

Message& format(int number, FormatArguments arguments, va_list args) {
    FilePath directory;
    directory.append(conf.rootDir);
    directory.append("/conf");
    Text filtered;
    filterFormat(viewOf(msgGet(directory.c_str(), number, getTemplateLang())), arguments, filtered);
    Message& slot = nextSlot();
    fill(slot, filtered, args);
    return slot;
}

const char* formatInts(int number, int count, ...) {
    va_list args;
    va_start(args, count);
    const char* text = format(number, {count, true}, args).c_str();
    va_end(args);
    return text;
}

}  // namespace

const char* messageText(int number) {
    return formatInts(number, 0);
}

const char* messageText(int number, int value) {
    return formatInts(number, 1, value);
}

}  // namespace attalven

using namespace attalven;

char* mailGetMsg(int number, ...) {
    va_list args;
    va_start(args, number);
    char* text = format(number, kTrustedArguments, args).data();
    va_end(args);
    return text;
}

char* mailGetLoginErrMsg(int code) {
    static BoundedText<1000> returnVal;
    // The smallest int has no positive counterpart; no message has its number.
    auto number =
        static_cast<int>(code < 0 ? 0U - static_cast<unsigned>(code) : static_cast<unsigned>(code));
    switch (number) {
        case 110:
            returnVal.assign(messageText(number, 15));
            break;
        case 111:
            returnVal.assign(messageText(number, 255));
            break;
        default:
            returnVal.assign(messageText(number));
    }
    return returnVal.data();
}

char* mailGetDate(time_t t) {
    static BoundedText<100> dateBuf;
    dateBuf.clear();
    struct tm local;
    if (!localTime(t, local)) return dateBuf.data();
    char text[101];
    long year = local.tm_year + 1900L;
    if (getTemplateLang() == kKorean)
        snprintf(text, sizeof text, "%04ld/%02d/%02d(%s)%02d:%02d", year, local.tm_mon + 1,
                 local.tm_mday, week_kor[local.tm_wday], local.tm_hour, local.tm_min);
    else
        snprintf(text, sizeof text, "%02d/%02d/%04ld(%s)%02d:%02d", local.tm_mon + 1, local.tm_mday,
                 year, week_eng[local.tm_wday], local.tm_hour, local.tm_min);
    dateBuf.append(text);
    return dateBuf.data();
}
