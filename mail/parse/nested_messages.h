#ifndef ATTALVEN_MAIL_PARSE_NESTED_MESSAGES_H
#define ATTALVEN_MAIL_PARSE_NESTED_MESSAGES_H

// The messages inside a message, as far as reading them stays in proportion to the mail. A header
// block ends only at its empty line: in crafted mail thousands of parts run on to the same one.

#include "record.h"

namespace attalven {

class NestedMessages {
  public:
    /// `outer` is the message whose parts will be opened, or one that holds it.
    NestedMessages(const MailInfo& outer, FILE* fp)
        : fp_(fp), budget_(kBase + kFactor * std::max(outer.size, 0)) {}

    /// Reads the header of the message in `part`; NULL when the budget is used up, without a stream
    /// and without memory.
    OwnedMessage open(const MailBody& part);

  private:
    // Enough for 100 levels of a message of 1 MB, and for more than ten levels of the largest.
    static constexpr int64_t kBase = 128 << 20, kFactor = 8;

    FILE* fp_;
    int64_t budget_;  // bytes
};

}  // namespace attalven

#endif
