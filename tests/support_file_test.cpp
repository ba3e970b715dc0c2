// Clock parts and files: existence, mode, copies, lines, records, stream texts and sizes.

#include <sys/stat.h>
#include <unistd.h>

#include <climits>

#include "kit/calls.h"

namespace {

using kit::taken;
using SupportFile = kit::Site;

std::string record(const char* path, int size, int n) {
    std::string area(static_cast<size_t>(size), '?');
    int length = fileGetRecord(path, area.data(), size, n);
    return std::to_string(length) + " " + area;
}

TEST_F(SupportFile, RowByRow) {
    kit::runTable(
        "support/file.table",
        {RESULT(fileTotalLine), HEAP(fileGetLine), RESULT(record), RESULT(getTs), RESULT(getYear),
         RESULT(getMonth), RESULT(getDay), RESULT(fileGetNameFromFilePath)},
        dir);
}

TEST_F(SupportFile, CopyKeepsTheFile) {
    std::string from = dir + "/from", to = dir + "/to", content(3'000'000, 'n');
    kit::writeFile(from, content);
    kit::writeFile(to, std::string(4'000'000, 'o'));
    struct stat before, after;
    ASSERT_EQ(stat(to.c_str(), &before), 0);
    EXPECT_EQ(fileCopy(from.c_str(), to.c_str()), 0);
    ASSERT_EQ(stat(to.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(kit::readFile(to), content);
    EXPECT_EQ(fileCopy(to.c_str(), to.c_str()), -1);
    EXPECT_EQ(kit::readFile(to), content);
    EXPECT_EQ(fileCopy((dir + "/none").c_str(), to.c_str()), -1);
}

TEST_F(SupportFile, StreamTextsAndSizes) {
    kit::File f = kit::fileOf("0123456789");
    EXPECT_EQ(taken(fileStrmGetStr(4, f.get())), "0123");
    EXPECT_EQ(fileStrmGetSize(f.get()), 10);
    EXPECT_EQ(taken(fileStrmGetStr(INT_MAX, f.get())), "456789");
    EXPECT_EQ(fileStrmGetStr(1, f.get()), nullptr);
    fputs("more", f.get());
    EXPECT_EQ(fileStrmGetSize(f.get()), 14);
    EXPECT_EQ(ftell(f.get()), 14);
}

TEST_F(SupportFile, PathsAndState) {
    std::string link = dir + "/link", path = dir + "/f";
    kit::writeFile(path, "");
    ASSERT_EQ(symlink("f", link.c_str()), 0);
    EXPECT_EQ(chkExistFile(link.c_str()), 1);
    EXPECT_EQ(fileChgStat(path.c_str(), nullptr, "", 0640), 0);
    EXPECT_EQ(kit::modeOf(path), 0640);
    EXPECT_EQ(fileChgStat(path.c_str(), "no-such-user", nullptr, 0600), -1);
    EXPECT_EQ(kit::modeOf(path), 0600);
    EXPECT_EQ(fileChgStat(link.c_str(), nullptr, nullptr, 0777), -1);
    unlink(path.c_str());
    EXPECT_EQ(chkExistFile(link.c_str()), 0);

    EXPECT_GT(getDiskFreeSize(dir.c_str()), 0u);
    EXPECT_EQ(getDiskFreeSize((dir + "/none").c_str()), 0u);
}

}  // namespace
