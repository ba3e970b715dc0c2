// What a replaced file keeps, and what a write that fails leaves.

#include "mail/base/replace_file.h"

#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>

#include "kit/site.h"

namespace {

namespace fs = std::filesystem;
using attalven::Replaced;
using attalven::replaceFile;
using kit::filesIn;
using kit::modeOf;
using kit::readFile;
using kit::writeFile;

using ReplaceFile = kit::Site;

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
