#ifndef ATTALVEN_MAIL_BASE_KEYWORD_H
#define ATTALVEN_MAIL_BASE_KEYWORD_H

// Keywords at the start of a line: compared ignoring case over the keyword's own length; of several
// that match, the longest wins.

#include <span>

#include "ascii.h"

namespace attalven {

/// The row of `table` whose `key` starts `line`, or NULL. A row has a member `key` of type
/// string_view.
template <typename Row>
const Row* findKeyword(std::span<const Row> table, string_view line) {
    const Row* found = nullptr;
    if (line.empty()) return found;
    char first = toLower(line.front());
    for (const Row& row : table)
        if (toLower(row.key.front()) == first && startsWithNoCase(line, row.key) &&
            (!found || row.key.size() > found->key.size()))
            found = &row;
    return found;
}

}  // namespace attalven

#endif
