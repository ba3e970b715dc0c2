// Texts of unknown origin never start a line of their own.

#include "mail/base/sink.h"

#include "kit/site.h"
#include "mail/base/text.h"

namespace {

using namespace attalven;

struct Row {
    const char *label, *input, *oneLine, *fold, *quoted;
};
const Row kRows[] = {
    {"injected line", "a\nBcc: b", "aBcc: b", "aBcc: b", "aBcc: b"},
    {"empty line", "a\r\n\r\nb", "ab", "ab", "ab"},
    {"fold", "a\n\tb", "a\tb", "a\n\tb", "a\n\tb"},
    {"fold with CR", "a\r\n b", "a b", "a\n b", "a\n b"},
    {"fold to a blank line", "a\n\t\nb", "a\tb", "a\tb", "a\tb"},
    {"blank line before a fold", "a\n\n b", "a b", "a\n b", "a\n b"},
    {"break at the end", "a\n \t", "a \t", "a \t", "a \t"},
    {"quotes", "a\"b\\", "a\"b\\", "a\"b\\", "a\\\"b\\\\"},
};

TEST(Sink, RowByRow) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.label);
        Text one, fold, quoted;
        appendOneLine(one, row.input);
        appendHeaderFold(fold, row.input);
        appendQuoted(quoted, row.input);
        EXPECT_EQ(one.view(), row.oneLine);
        EXPECT_EQ(fold.view(), row.fold);
        EXPECT_EQ(quoted.view(), row.quoted);
    }
}

}  // namespace
