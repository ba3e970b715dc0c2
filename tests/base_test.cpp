// The base kit: lines in pieces, texts of unknown origin, which never start a line of their own,
// and what a replaced file keeps, and what a write that fails leaves.

#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>

#include "kit/calls.h"
#include "mail/base/line_reader.h"
#include "mail/base/replace_file.h"
#include "mail/base/sink.h"
#include "mail/base/text.h"

namespace {

namespace fs = std::filesystem;
using ReplaceFile = kit::Site;
using attalven::LinePiece, attalven::LineReader, attalven::Text;
using attalven::Replaced, attalven::replaceFile;
using kit::filesIn, kit::modeOf, kit::readFile, kit::writeFile;

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

TEST_F(ReplaceFile, KeepsTheOldFileWhenTheDiskOrTheLimitIsFull) {
    std::string path = dir + "/settings", big(64 * 1024, 'x');
    writeFile(path, "old");
    struct rlimit before;
    getrlimit(RLIMIT_FSIZE, &before);
    struct rlimit small = {8192, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(replaceFile(path.c_str(), big), Replaced::kNotWritten);
    fs::create_hard_link(path, dir + "/second");  // only the file itself may be overwritten now
    EXPECT_EQ(replaceFile(path.c_str(), big), Replaced::kNotWritten);
    setrlimit(RLIMIT_FSIZE, &before);
    ASSERT_EQ(readFile(path).substr(0, 10), "old");
    EXPECT_EQ(replaceFile(path.c_str(), big), Replaced::kDone);
    EXPECT_EQ(readFile(dir + "/second"), big);
    EXPECT_EQ(filesIn(dir), 6);

    std::string disk = dir + "/disk";
    fs::create_directory(disk);
    if (mount("none", disk.c_str(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "mounting a small disk needs more rights";
    writeFile(disk + "/settings", "old");
    EXPECT_EQ(replaceFile((disk + "/settings").c_str(), big), Replaced::kNotWritten);
    EXPECT_EQ(readFile(disk + "/settings"), "old");
    EXPECT_EQ(mount("none", disk.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, ""), 0);
    for (const char* name : {"/settings", "/new"})
        EXPECT_EQ(replaceFile((disk + name).c_str(), "x"), Replaced::kNotOpened) << name;
    umount(disk.c_str());
}

TEST_F(ReplaceFile, GoesThroughLinksAndRefusesWhatIsNoFile) {
    std::string path = dir + "/settings", link = dir + "/link", loose = dir + "/loose";
    writeFile(path, "old");
    chmod(path.c_str(), 0604);
    fs::create_symlink("settings", link);
    fs::create_symlink("later", loose);
    EXPECT_EQ(replaceFile(link.c_str(), "new"), Replaced::kDone);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(readFile(path), "new");
    EXPECT_EQ(modeOf(path), 0604);
    EXPECT_EQ(replaceFile(loose.c_str(), "later"), Replaced::kDone);
    EXPECT_EQ(readFile(dir + "/later"), "later");
    ASSERT_EQ(mkfifo((dir + "/fifo").c_str(), 0600), 0);
    for (const char* name : {"/fifo", "/spool", "/gone/settings"})
        EXPECT_EQ(replaceFile((dir + name).c_str(), "x"), Replaced::kNotOpened) << name;
}

}  // namespace
