// The index of a folder: the From_ check, message boundaries, entries, accessors, the marker.

#include <fcntl.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <climits>

#include "kit/calls.h"
#include "kit/folder_model.h"
#include "mail/folder/from_line.h"

namespace {

using std::string;

const string kFrom = "From a@b Mon Jan  5 00:00:00 2004\n";

TEST(FromLine, RowByRow) {
    kit::runTable("folder/from_lines.table", {RESULT(mailChkRFC822From)});
}

TEST(FromLine, BothSearchesFindTheSame) {
    string text = "\nFrom \nFrom \nFro\n\rF\r\n\r\nFFrom\nFrom\n\n";
    for (int i = 0; i < 7; i++) text += text.substr(static_cast<size_t>(i));
    for (size_t from = 0; from < 200; from++)
        for (size_t to = from; to < 300; to++) {
            std::string_view s = std::string_view(text).substr(from, to - from);
            ASSERT_EQ(attalven::findFromStart(s), attalven::findFromStartPortable(s));
            ASSERT_EQ(attalven::findHeaderBreak(s), attalven::findHeaderBreakPortable(s));
            ASSERT_EQ(attalven::findFromStartPortable(s), s.find("\nFrom "));
        }
}

/// The number of messages, whose places all three agree on.
int messagesIn(std::string_view content) {
    kit::ModelFolder model{string(content)};
    kit::File f = kit::fileOf(content);
    Fldr* index = fldrProcessing(f.get());
    EXPECT_EQ(kit::spans(index), kit::spans(model));
    EXPECT_EQ(kit::spans(f.get()), kit::spans(model));
    fldrFree(index);
    return static_cast<int>(model.messages.size());
}

TEST(FolderScan, FindsMessagesAtPhysicalLines) {
    kit::runTable("folder/messages.table", {RESULT(messagesIn)});
    EXPECT_EQ(kit::spans(kit::fileOf("x\n" + kFrom + "S: x\n\ntext\n").get()), "2+39/45 ");
}

TEST(FolderScan, LeavesTheStreamAtTheNextMessage) {
    kit::File f = kit::fileOf(kFrom + "\nx\n" + kFrom + "\ny\nlast\n");
    int offset, header, size;
    ASSERT_EQ(fldrGetMsgSizeInfo(&offset, &header, &size, f.get()), 1);
    EXPECT_EQ(ftell(f.get()), offset + size);
    ASSERT_EQ(fldrGetMsgSizeInfo(&offset, &header, &size, f.get()), 1);
    EXPECT_EQ(ftell(f.get()), offset + size - 5) << "the start of the last line";
    EXPECT_EQ(fldrGetMsgSizeInfo(&offset, &header, &size, f.get()), 0);
    EXPECT_EQ(fldrGetMsgSizeInfo(nullptr, &header, &size, f.get()), 0);
    EXPECT_EQ(fldrGetMsgSizeInfo(&offset, &header, &size, nullptr), 0);
}

class Folder : public kit::Site {
  protected:
    string path = dir + "/spool/kim", marker = path + ".tmp";
    Fldr* open(const string& content) {
        kit::writeFile(path, content);
        return fldrOpen(path.c_str());
    }
    void age(const string& file, int seconds) {
        timespec times[2] = {{time(nullptr) - seconds, 0}, {time(nullptr) - seconds, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    }
    bool exists(const string& file) {
        struct stat st;
        return lstat(file.c_str(), &st) == 0;
    }
};

TEST_F(Folder, KeepsTheValuesOfAMessageList) {
    auto listed = [this](kit::Arguments& a) {
        Fldr* f = open(static_cast<char*>(a[0]));
        string all;
        for (int n = 0; n < fldrMsgMax(f); n++) {
            const FldrMsg& m = *f->msgs[n];
            for (int value :
                 {m.num, static_cast<int>(m.status), m.priority, static_cast<int>(m.date)})
                all += std::to_string(value) + " ";
            for (const char* text : {m.from, m.subject, m.msgId, m.auxText})
                all += text + string("|");
        }
        EXPECT_EQ(f->path, path);
        fldrClose(f);
        return all;
    };
    kit::runTable("folder/list.table", {{"listed", listed}});
}

TEST_F(Folder, ReadsHeadersThatNoBlockHolds) {
    string content, huge(600000, 'x');
    for (int i = 0; i < 300; i++) content += kFrom + "Status: O\nX: " + string(1900, 'x') + "\n\n";
    content += kFrom + "X: " + huge + "\n " + huge + "\nStatus: R\n\n" + kFrom + "Status: R\n\n";
    Fldr* f = open(content);
    ASSERT_EQ(fldrMsgMax(f), 302);
    for (int n = 1; n <= 302; n++)
        ASSERT_EQ(fldrMsgGetStatus(n, f), n > 300 ? FLDR_READ : FLDR_OLD) << n;
    EXPECT_EQ(fldrSize(f), static_cast<int>(content.size()));
    fldrClose(f);
}

TEST_F(Folder, HeadersThatRunOnHaveABudget) {
    string content;
    for (int i = 0; i < 1000; i++) content += kFrom + "Status: O\n";
    Fldr* f = open(content + "X: " + string(100'000, 'x') + "\nStatus: R\n\n");
    EXPECT_EQ(fldrMsgGetStatus(1, f), FLDR_READ | FLDR_OLD);
    EXPECT_EQ(fldrMsgGetStatus(999, f), FLDR_OLD);
    fldrClose(f);
}

TEST_F(Folder, AccessorsCheckTheirEntry) {
    Fldr* f = open(kFrom + "\n" + kFrom + "Status: O\n\n" + kFrom + "\n");
    ASSERT_EQ(fldrMsgMax(f), 3);
    EXPECT_EQ(fldrMsgNewNum(f), 2);
    EXPECT_EQ(fldrMsgReadNum(f), 1);
    EXPECT_EQ(fldrMsgIsOld(2, f), FLDR_OLD);
    EXPECT_EQ(fldrMsgDelete(0, f), nullptr);
    EXPECT_EQ(fldrMsgDelete(4, f), nullptr);
    EXPECT_EQ(fldrMsgSetRead(1, f), f->msgs[0]);
    EXPECT_EQ(fldrMsgSetOld(1, f), f->msgs[0]);
    EXPECT_EQ(fldrMsgDelete(2, f), f->msgs[1]);
    EXPECT_EQ(fldrMsgGetStatus(1, f), FLDR_READ | FLDR_OLD);
    EXPECT_EQ(fldrMsgIsRead(1, f), FLDR_READ);
    EXPECT_EQ(fldrMsgIsDelete(2, f), FLDR_DELETED);
    EXPECT_EQ(f->status, FLDR_READ | FLDR_OLD | FLDR_DELETED);
    EXPECT_EQ(fldrMsgNewNum(f), 1);
    EXPECT_EQ(fldrMsgReadNum(f), 1);
    EXPECT_EQ(fldrSize(f), static_cast<int>(3 * kFrom.size() + 13)) << "deleted ones count";
    fldrMsgAllReset(f);
    EXPECT_EQ(fldrMsgIsDelete(2, f), 0u);
    EXPECT_EQ(fldrMsgNum(3, f) + fldrMsgNum(4, f) + fldrMsgEntryPos(-1, f), 3);
    EXPECT_EQ(fldrMsgSize(INT_MAX, f) + fldrMsgHdrSize(0, f), 0);
    EXPECT_EQ(fldrChkMsgBoundary(3, f) + fldrIsOpen(f), 2);
    EXPECT_EQ(fldrChkMsgBoundary(1, nullptr) + fldrIsOpen(nullptr) + fldrMsgMax(nullptr), 0);
    fldrFree(f);
    Fldr* own = static_cast<Fldr*>(calloc(1, sizeof(Fldr)));  // a record of the caller's making
    own->msgCount = 2;
    own->msgs[1] = static_cast<FldrMsg*>(calloc(1, sizeof(FldrMsg)));
    EXPECT_EQ(fldrMsgSetRead(1, own), nullptr);
    EXPECT_EQ(fldrMsgSetRead(2, own), own->msgs[1]);
    fldrFree(own);
}

TEST_F(Folder, MarkerKeepsOthersOutFor180Seconds) {
    Fldr* f = open(kFrom + "\n");
    ASSERT_TRUE(f);
    struct stat st;
    ASSERT_EQ(stat(marker.c_str(), &st), 0);
    EXPECT_EQ(st.st_size, 0);
    EXPECT_EQ(st.st_mode & 07777, 0600u);
    EXPECT_EQ(fldrOpen(path.c_str()), nullptr);
    age(marker, 178);
    EXPECT_EQ(fldrOpen(path.c_str()), nullptr);
    age(marker, -1000);
    EXPECT_EQ(fldrOpen(path.c_str()), nullptr) << "a marker from the future";
    age(marker, 181);
    Fldr* second = fldrOpen(path.c_str());
    ASSERT_TRUE(second);
    fldrClose(f);
    EXPECT_TRUE(exists(marker)) << "it belongs to the second opener";
    fldrClose(second);
    EXPECT_FALSE(exists(marker));
    fldrClose(nullptr);
}

TEST_F(Folder, OpensRegularFilesWithContentOnly) {
    EXPECT_EQ(fldrOpen(nullptr), nullptr);
    EXPECT_EQ(fldrOpen(""), nullptr);
    EXPECT_EQ(fldrOpen((dir + "/none").c_str()), nullptr);
    EXPECT_EQ(fldrOpen(dir.c_str()), nullptr);
    EXPECT_EQ(fldrOpen((dir + string(600, '/') + "spool/kim").c_str()), nullptr);
    EXPECT_EQ(open(""), nullptr);
    string fifo = dir + "/fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(fldrOpen(fifo.c_str()), nullptr);
    ASSERT_EQ(symlink("/etc/passwd", marker.c_str()), 0);
    EXPECT_EQ(open(kFrom + "\n"), nullptr) << "a planted marker counts, and is not written through";
    unlink(marker.c_str());
    Fldr* f = open("no From_ line\n");
    ASSERT_TRUE(f);
    EXPECT_EQ(fldrMsgMax(f), 0);
    fldrClose(f);
    kit::writeFile(dir + "/old.tmp", "");
    age(dir + "/old.tmp", 200);
    EXPECT_EQ(fldrOpen((dir + "/old").c_str()), nullptr);
    EXPECT_FALSE(exists(dir + "/old.tmp")) << "a stale marker of a missing folder goes, too";
}

TEST_F(Folder, LeavesItsMarkerWithoutMemoryForTheIndex) {
    if (kit::kAddressSanitizer) GTEST_SKIP() << "the sanitizer cannot live under the limit";
    kit::writeFile(path, kFrom + "\n");
    malloc_trim(0);
    rlimit limit = {0, 0};
    ASSERT_EQ(setrlimit(RLIMIT_DATA, &limit), 0);
    bool isOpen = fldrOpen(path.c_str()), isMarked = exists(marker);
    EXPECT_EQ(std::pair(isOpen, isMarked), std::pair(false, true));
}

TEST_F(Folder, IndexIsFullUnderTheDataLimit) {
    if (kit::kAddressSanitizer) GTEST_SKIP() << "the sanitizer cannot live under the limit";
    string content;
    for (int i = 0; i < FLDR_MAX_MSGS + 2; i++) content += kFrom + "Subject: x\n\n";
    kit::writeFile(path, content);
    content = string();
    rlimit limit = {100'000'000, 100'000'000};
    ASSERT_EQ(setrlimit(RLIMIT_DATA, &limit), 0);
    Fldr* f = fldrOpen(path.c_str());
    ASSERT_EQ(fldrMsgMax(f), FLDR_MAX_MSGS);
    EXPECT_EQ(fldrMsgNum(FLDR_MAX_MSGS, f), FLDR_MAX_MSGS);
    fldrMsgDelete(1, f);
    fldrMsgDelete(FLDR_MAX_MSGS, f);
    fldrClose(f);
    f = fldrOpen(path.c_str());
    EXPECT_EQ(fldrMsgMax(f), FLDR_MAX_MSGS) << "the two beyond the index were kept";
    fldrFree(f);
}

}  // namespace
