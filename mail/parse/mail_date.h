#ifndef ATTALVEN_MAIL_PARSE_MAIL_DATE_H
#define ATTALVEN_MAIL_PARSE_MAIL_DATE_H

#include <ctime>

#include "mail/base/ascii.h"

namespace attalven {

/// mailParseDate on a text that is not terminated.
time_t parseDate(string_view value);

}  // namespace attalven

#endif
