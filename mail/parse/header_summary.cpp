// The summary of a message header. It reads the fields that a list shows with the same functions as
// the record, and stops reading a From value at its first address. Texts keep their memory from one
// message to the next, so that a plain header costs no allocation at all.

#include "header_summary.h"

#include "header_field.h"
#include "header_lines.h"
#include "mail/base/byte_set.h"
#include "mail/base/keyword.h"
#include "mail_addr.h"
#include "mail_date.h"

namespace attalven {
namespace {

void readFrom(HeaderSummary& s, string_view value) {
    s.from.clear();
    AddressScanner scanner(value);
    if (!scanner.next()) return;
    s.from.append(scanner.mailbox());
    s.from.append('@');
    s.from.append(scanner.host());
}

void readFirstSubject(HeaderSummary& s, string_view value) {
    if (!s.hasSubject) s.hasSubject = readSubject(value, s.subject);
}

struct Row {
    string_view key;
    void (*read)(HeaderSummary&, string_view value);
};
constexpr Row kRows[] = {
    {"apparently-from:", readFrom},
    {"date:", [](HeaderSummary& s, string_view value) { s.date = parseDate(value); }},
    {"from:", readFrom},
    {"message-id:", [](HeaderSummary& s, string_view value) { readMessageId(value, s.messageId); }},
    {"status:", [](HeaderSummary& s, string_view value) { s.status |= statusBits(value); }},
    {"subject:", readFirstSubject},
    {"x-priority:", [](HeaderSummary& s, string_view value) { s.priority = priorityOf(value); }},
};

/// The first letters of the keywords: most headers of a mail have another one.
constexpr ByteSet kFirstLetters = [] {
    char letters[std::size(kRows)] = {};
    for (size_t i = 0; i < std::size(kRows); i++) letters[i] = kRows[i].key.front();
    return ByteSet({letters, std::size(kRows)});
}();

template <typename Lines>
void readInto(Lines& lines, HeaderSummary& summary) {
    summary.clear();
    unfoldHeaders(lines, [&summary](string_view header) {
        if (!kFirstLetters.has(toLower(header.front()))) return true;
        if (const Row* row = findKeyword<Row>(kRows, header))
            row->read(summary, headerValue(header).value_or(string_view()));
        return true;
    });
}

}  // namespace

void HeaderSummary::clear() {
    status = 0;
    priority = 3;
    date = 0;
    messageId.clear();
    from.clear();
    subject.clear();
    hasSubject = false;
}

HeaderResult readHeaderSummary(string_view window, bool isWholeFile, HeaderSummary& summary) {
    WindowLines lines{window, isWholeFile};
    readInto(lines, summary);
    summary.blockSize = static_cast<int64_t>(lines.taken);
    return lines.ranOut ? HeaderResult::kNeedMore : HeaderResult::kDone;
}

void readHeaderSummary(LineReader& reader, HeaderSummary& summary) {
    StreamLines lines{reader};
    int64_t start = reader.position();
    readInto(lines, summary);
    summary.blockSize = reader.position() - start;
}

}  // namespace attalven
