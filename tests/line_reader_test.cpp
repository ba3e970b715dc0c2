#include "mail/base/line_reader.h"

#include "kit/site.h"

namespace {

using attalven::LinePiece;
using attalven::LineReader;
using namespace std::literals;

std::string pieces(std::string_view content, size_t limit) {
    kit::File f = kit::fileOf(content);
    LineReader reader(f.get(), limit);
    std::string dump;
    for (LinePiece p; reader.next(p);)
        dump += std::to_string(p.offset) + (p.startsLine ? ":" : "+") + std::string(p.text) + "|";
    return dump;
}

TEST(LineReader, CutsLikeFgetsButKeepsNulBytes) {
    EXPECT_EQ(pieces("", 10), "");
    EXPECT_EQ(pieces("a\0b\nc"sv, 10), "0:a\0b\n|4:c|"sv);
    EXPECT_EQ(pieces("abcd\ne", 6), "0:abcd\n|5:e|");
    EXPECT_EQ(pieces("abcde\nf", 6), "0:abcde|5+\n|6:f|");
    EXPECT_EQ(pieces("abcdefgh\ni", 4), "0:abc|3+def|6+gh\n|9:i|");
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
