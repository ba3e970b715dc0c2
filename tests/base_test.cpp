// The base kit: lines in pieces, and texts of unknown origin, which never start a line of their
// own.

#include "kit/calls.h"
#include "mail/base/line_reader.h"
#include "mail/base/sink.h"
#include "mail/base/text.h"

namespace {

using attalven::LinePiece, attalven::LineReader, attalven::Text;

std::string pieces(size_t limit, std::string_view content) {
    kit::File f = kit::fileOf(content);
    LineReader reader(f.get(), limit);
    std::string dump;
    for (LinePiece p; reader.next(p);)
        dump += std::to_string(p.offset) + (p.startsLine ? ":" : "+") + std::string(p.text) + "|";
    return dump;
}

template <void (*kAppend)(Text&, std::string_view)>
std::string appended(std::string_view text) {
    Text to;
    kAppend(to, text);
    return std::string(to.view());
}

TEST(Base, RowByRow) {
    kit::runTable("base/texts.table",
                  {RESULT(pieces),
                   {"appendOneLine", kit::result(appended<attalven::appendOneLine>)},
                   {"appendHeaderFold", kit::result(appended<attalven::appendHeaderFold>)},
                   {"appendQuoted", kit::result(appended<attalven::appendQuoted>)}});
}

TEST(LineReader, LeavesTheStreamWhereItsLinesEnd) {
    std::string content(LineReader::kBlock - 3, 'x');
    content += "\nsecond\nthird\n";
    kit::File f = kit::fileOf(content);
    {
        LineReader reader(f.get(), LineReader::kBlock * 2);
        LinePiece p;
        ASSERT_TRUE(reader.next(p));
        ASSERT_TRUE(reader.next(p));
        EXPECT_EQ(p.text, "second\n");
        reader.putBack(p);
        reader.seek(0);
        EXPECT_EQ(reader.peek(4).substr(0, 4), "xxxx");
        reader.seek(static_cast<int64_t>(content.size()) - 6);
    }
    char rest[16] = {};
    ASSERT_TRUE(fgets(rest, sizeof rest, f.get()));
    EXPECT_STREQ(rest, "third\n");
}

}  // namespace
