#ifndef ATTALVEN_MAIL_PARSE_HEADER_SUMMARY_H
#define ATTALVEN_MAIL_PARSE_HEADER_SUMMARY_H

// The header values that a message list shows, read without building a record: no address lists, no
// parameters, no allocation for values that are plain text. They equal those of mailGetHeaderInfo.

#include <ctime>

#include "mail/base/line_reader.h"
#include "mail/base/text.h"

namespace attalven {

/// Keep one and use it for message after message: its texts keep their memory.
struct HeaderSummary {
    unsigned status = 0;  // 0x10 read, 0x100 old
    int priority = 3;
    time_t date = 0;
    Text messageId;  // cleaned; empty when absent
    Text from;       // mailbox@host of the first From address; empty when absent
    Text subject;    // decoded; empty when absent
    bool hasSubject = false;
    int64_t blockSize = 0;  // bytes of the header block, as far as it was read

    /// Whether memory ran out for one of the texts.
    bool failed() const { return messageId.failed() || from.failed() || subject.failed(); }
    void clear();
};

enum class HeaderResult { kDone, kNeedMore };

/// Fills `summary` (cleared first) from the header block at the start of `window`, a view on the
/// file that begins with the message's From_ line and may go on beyond the message. kNeedMore when
/// the block goes on behind the window and the window does not reach to the end of the file: call
/// again with a longer one. Reads conf.mailDomainName.
HeaderResult readHeaderSummary(string_view window, bool isWholeFile, HeaderSummary& summary);

/// The same for a block of any length: reads lines from the reader's position, with the limit that
/// the reader was made with (kHeaderLineLimit), and leaves it behind the block.
void readHeaderSummary(LineReader& reader, HeaderSummary& summary);

}  // namespace attalven

#endif
