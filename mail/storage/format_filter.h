#ifndef ATTALVEN_MAIL_STORAGE_FORMAT_FILTER_H
#define ATTALVEN_MAIL_STORAGE_FORMAT_FILTER_H

#include "mail/base/text.h"

namespace attalven {

/// The arguments that a text may ask for.
struct FormatArguments {
    int count;
    bool onlyInt;  // all are of type int; otherwise they are whatever the text asks for
};
/// The caller knows the text: as many arguments, of such types, as it takes.
constexpr FormatArguments kTrustedArguments = {100, false};

/// Appends to `out` a printf format that is safe to use: plain conversions that the arguments can
/// serve stay, any other "%" is doubled and so prints as itself.
///
///   conversion = "%" *flag [width] ["." [precision]] [length] type / "%%"
///   flag = "-" / "+" / " " / "0" / "#" ; width, precision = decimal up to 300
///   length = "hh" / "h" / "ll" / "l" / "z" / "j" / "t"
void filterFormat(string_view text, FormatArguments arguments, Text& out);

}  // namespace attalven

#endif
