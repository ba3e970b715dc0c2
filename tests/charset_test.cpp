// Conversion between character sets: families, choices of source and target, results that must
// fail.

#include "kit/calls.h"

namespace {

std::string family(const char* name) {
    std::string lower = name, page = getDefaultCharSet(name);
    for (char& c : lower) c = static_cast<char>(tolower(c));
    EXPECT_EQ(getDefaultCharSet(lower.c_str()), page);
    EXPECT_EQ(kit::taken(strConvCharSet(page.c_str(), lower.c_str(), "Hello")), "Hello") << name;
    EXPECT_NE(kit::taken(strConvCharSet(name, page.c_str(), "Hello")), "(null)") << name;
    return page;
}

TEST(Charset, RowByRow) {
    kit::runTable("codec/charset.table",
                  {RESULT(family), RESULT(getDefaultCharSet), RESULT(mailGetLangCharSet),
                   HEAP(mailDecodeCharSet), HEAP(mailEncodeCharSet), RESULT(mailGetSrcCharSet),
                   HEAP(strConvCharSet)});
    char* last = getDefaultCharSet("big-five");
    EXPECT_STREQ(getDefaultCharSet(last), "BIG5") << "its own result is a name, too";
}

}  // namespace
