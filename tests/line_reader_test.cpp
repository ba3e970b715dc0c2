#include "mail/base/line_reader.h"

#include "kit/site.h"

namespace {

using attalven::LinePiece;
using attalven::LineReader;

std::string pieces(std::string_view content, size_t limit) {
    kit::File f = kit::fileOf(content);
    LineReader reader(f.get(), limit);
    std::string dump;
    for (LinePiece p; reader.next(p);) {
        dump += std::to_string(p.offset) + (p.startsLine ? ":" : "+") + std::string(p.text) + "|";
    }
    return dump;
}

TEST(LineReader, CutsLikeFgetsButKeepsNulBytes) {
    const struct {
        const char* label;
        std::string_view content;
        size_t limit;
        const char* expected;
    } rows[] = {
        {"empty file", "", 10, ""},
        {"no last line end", "a\nb", 10, "0:a\n|2:b|"},
        {"line as long as a piece", "abcd\ne", 6, "0:abcd\n|5:e|"},
        {"line end falls into the next piece", "abcde\nf", 6, "0:abcde|5+\n|6:f|"},
        {"pieces of a long line", "abcdefgh\ni", 4, "0:abc|3+def|6+gh\n|9:i|"},
    };
    for (const auto& r : rows) EXPECT_EQ(pieces(r.content, r.limit), r.expected) << r.label;
    EXPECT_EQ(pieces(std::string_view("a\0b\nc", 5), 10).size(),
              std::string_view("0:a0b\n|4:c|").size());
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
