#ifndef ATTALVEN_HOST_KIT_RECEIPTS_H
#define ATTALVEN_HOST_KIT_RECEIPTS_H

// Read receipts: a mail in HTML may hold a picture of mailrcpt.cgi; when it is first loaded, the
// time is noted in the sender's file "receipts", one line "SECONDS MESSAGE-ID" for each mail, at
// most 256 KiB. The page of a sent mail shows it.

#include <ctime>
#include <string>

#include "session.h"

namespace host {

/// When a recipient's program first loaded the picture of this sent mail: "2026-11-23 14:05", local
/// time; "" as long as none has. `messageId` with or without angle brackets.
std::string receiptOf(const User& user, const std::string& messageId);

/// Notes it, if the site keeps receipts, the user exists, has a sent mail with this Message-ID, and
/// it has not been noted before. Both texts come from strangers. A full file or disk, or another
/// writer who does not finish, leaves the receipt out.
void noteReceipt(const std::string& userId, const std::string& messageId, time_t now);

}  // namespace host

#endif
