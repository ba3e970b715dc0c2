// The rewrite of a folder, in both forms, against its rules and against an independent model.

#include <sys/stat.h>

#include <filesystem>
#include <random>

#include "kit/folder_model.h"
#include "kit/site.h"

namespace {

using std::string;

const string kFrom = "From a@b Mon Jan  5 00:00:00 2004\n";
enum Form { kNewFile = 0, kSameFile = 1 };

class Rewrite : public kit::Site {
  protected:
    // In memory where that is possible: a rewrite waits for the disk several times.
    string path = std::filesystem::exists("/dev/shm") ? memory() : dir + "/spool/kim";
    Rewrite() { std::filesystem::create_directories(std::filesystem::path(path).parent_path()); }
    ~Rewrite() override { std::filesystem::remove_all(memory().substr(0, memory().size() - 4)); }
    string memory() const { return "/dev/shm" + dir.substr(4) + "/kim"; }

    struct stat state() {
        struct stat st = {};
        lstat(path.c_str(), &st);
        return st;
    }
    void append(const string& text) { kit::writeFile(path, kit::readFile(path) + text); }
    /// Opens the folder and marks messages: "d2 r1 o3" deletes 2, marks 1 read and 3 old; "u0"
    /// takes all deletions back.
    Fldr* open(const string& content, const string& marks) {
        kit::writeFile(path, content);
        Fldr* f = fldrOpen(path.c_str());
        std::istringstream in(marks);
        for (char mark; in >> mark;) {
            int n;
            in >> n;
            mark == 'd'   ? fldrMsgDelete(n, f)
            : mark == 'r' ? fldrMsgSetRead(n, f)
            : mark == 'o' ? fldrMsgSetOld(n, f)
                          : (fldrMsgAllReset(f), nullptr);
        }
        return f;
    }
    /// Only the folder may be left in its directory.
    string leftovers() {
        string names;
        for (const auto& entry :
             std::filesystem::directory_iterator(std::filesystem::path(path).parent_path()))
            if (entry.path() != path) names += entry.path().filename().string() + " ";
        return names;
    }
};

TEST_F(Rewrite, LeavesTheDocumentedFile) {
    const string longLine(40000, 'x');
    const struct {
        const char *label, *marks;
        int status;  // by fldrStatusSet()
        string content, expected;
    } rows[] = {
        {"middle one deleted", "d2", 0,
         kFrom + "A: 1\n\none\n" + kFrom + "A: 2\n\ntwo\n" + kFrom + "A: 3\n\nthree\n",
         kFrom + "A: 1\nStatus:   \n\none\n" + kFrom + "A: 3\nStatus:   \n\nthree\n"},
        {"marks alone change nothing", "r1 o1", 0, kFrom + "\nx\n", kFrom + "\nx\n"},
        {"and no other word asks", "r1 o1", 2, kFrom + "\nx\n", kFrom + "\nx\n"},
        {"a deletion taken back", "d1 o1 u0", 0, kFrom + "\nx\n", kFrom + "Status:  O\n\nx\n"},
        {"marks are kept when asked", "r1", 1, kFrom + "\nx\n", kFrom + "Status: R \n\nx\n"},
        {"found flags are kept", "", 1, kFrom + "status: OR\nA: b\n\nx\n",
         kFrom + "Status: RO\nA: b\n\nx\n"},
        {"every Status line, not its continuation", "o1", 1,
         kFrom + "sTATUS: x\n R\nStatus: \nX-Status: A\n\nStatus: no\n",
         kFrom + "Status: RO\n R\nStatus: RO\nX-Status: A\n\nStatus: no\n"},
        {"CR LF", "", 1, kFrom + "A: b\r\nStatus: O\r\n\r\nx\r\n",
         kFrom + "A: b\r\nStatus:  O\n\nx\r\n"},
        {"bytes before the first message", "", 1, "junk\n\n" + kFrom + "\nx",
         kFrom + "Status:   \n\nx"},
        {"header without end", "r1", 1, kFrom + "A: b", kFrom + "A: b\nStatus: R \n\n"},
        {"header without end before another", "d2", 0, kFrom + "A: b\n" + kFrom + "\nx\n",
         kFrom + "A: b\nStatus:   \n\n"},
        {"a Status line that was cut is not read", "", 1, kFrom + "Status: R",
         kFrom + "Status:   \n\n"},
        {"Status within a long line", "", 1, kFrom + longLine + "\nStatus: O\n\n" + longLine,
         kFrom + longLine + "\nStatus:  O\n\n" + longLine},
        {"all deleted", "d1 d2", 0, kFrom + "\nx\n" + kFrom + "\ny\n", ""},
        {"no message at all", "", 1, "no From_ line\n", "no From_ line\n"},
    };
    for (Form form : {kNewFile, kSameFile})
        for (const auto& r : rows) {
            SCOPED_TRACE(string(r.label) + (form ? ", same file" : ", new file"));
            admOptions.passwdFlag = form;
            Fldr* f = open(r.content, r.marks);
            ASSERT_EQ(chmod(path.c_str(), 0640), 0);
            struct stat before = state();
            fldrStatusSet(r.status);
            fldrClose(f);
            EXPECT_EQ(fldrStatus(), r.status == 2 ? 2 : 0);
            EXPECT_EQ(kit::readFile(path), r.expected);
            EXPECT_EQ(state().st_ino == before.st_ino, form || r.content == r.expected);
            EXPECT_EQ(state().st_mode & 07777, 0640u);
            EXPECT_EQ(leftovers(), "");
        }
}

TEST_F(Rewrite, KeepsWhatCameSince) {
    const string one = kFrom + "\none\n", two = kFrom + "\ntwo\n", status = "Status:   \n\n";
    const struct {
        const char *label, *marks;
        string content, appended, expected;
    } rows[] = {
        {"new mail", "d2", one + two, kFrom + "\nnew\n",
         kFrom + status + "one\n" + kFrom + "\nnew\n"},
        {"new mail behind an empty line", "d2", one + two, "\n" + two,
         kFrom + status + "one\n\n" + two},
        {"everything deleted", "d1 d2", one + two, two, two},
        {"a deleted message that is still coming", "d2", one + two, "more\n",
         kFrom + status + "one\n" + kFrom + status + "two\nmore\n"},
        {"a header that is still coming", "r2 d1", one + kFrom + "Subject: he", "llo\n\ntext\n",
         kFrom + "Subject: hello\n\ntext\n"},
        {"a From_ line that does not start a line", "d2", one + kFrom + "\ntwo", two,
         kFrom + status + "one\n" + kFrom + status + "two" + two},
    };
    for (Form form : {kNewFile, kSameFile})
        for (const auto& r : rows) {
            admOptions.passwdFlag = form;
            Fldr* f = open(r.content, r.marks);
            append(r.appended);
            fldrClose(f);
            EXPECT_EQ(kit::readFile(path), r.expected) << r.label << form;
            EXPECT_EQ(leftovers(), "");
        }
}

TEST_F(Rewrite, LeavesAFolderThatIsNotTheIndexedOne) {
    const string content = kFrom + "A: 1\n\none\n" + kFrom + "A: 2\n\ntwo\n" + kFrom + "A: 3\n\n\n";
    const string moved = content.substr(content.size() / 3);
    const string others = kFrom + "A: 2\n\ntwo\n" + kFrom + "A: 4\n\nfor\n" + moved;
    const struct {
        const char* label;
        std::function<void()> change;
        string expected;
    } rows[] = {
        {"shorter", [&] { kit::writeFile(path, moved); }, moved},
        {"other messages of the same sizes", [&] { kit::writeFile(path, others); }, others},
        {"another file",
         [&] {
             std::filesystem::copy_file(path, path + "2");
             std::filesystem::rename(path + "2", path);
         },
         content},
        {"no file", [&] { std::filesystem::remove(path); }, ""},
        {"marker of another opener",
         [&] {
             std::filesystem::remove(path + ".tmp");
             kit::writeFile(path + ".tmp", "theirs");
         },
         content},
        {"marker is a link",
         [&] {
             std::filesystem::remove(path + ".tmp");
             std::filesystem::create_symlink(path, path + ".tmp");
         },
         content},
    };
    for (Form form : {kNewFile, kSameFile})
        for (const auto& r : rows) {
            admOptions.passwdFlag = form;
            Fldr* f = open(content, "d2");
            r.change();
            fldrClose(f);
            EXPECT_EQ(kit::readFile(path), r.expected) << r.label << form;
            bool isTheirs = string(r.label).starts_with("marker");
            EXPECT_EQ(leftovers(), isTheirs ? "kim.tmp " : "") << r.label << form;
            std::filesystem::remove(path + ".tmp");
        }
}

TEST_F(Rewrite, TakesARecordMadeFromAStream) {
    const string content = kFrom + "\none\n" + kFrom + "\ntwo\n" + kFrom + "\nthree\n";
    kit::writeFile(path, content);
    kit::File stream(fopen(path.c_str(), "r"));
    for (bool hasPath : {false, true})  // without one there is nothing to rewrite
        for (bool isDeleted : {false, true}) {
            kit::writeFile(path + ".tmp", "any marker");
            Fldr* f = fldrProcessing(stream.get());
            if (isDeleted) fldrMsgDelete(2, f);
            if (hasPath) snprintf(f->path, sizeof f->path, "%s", path.c_str());
            fldrClose(f);
            bool isNew = hasPath && isDeleted;
            EXPECT_EQ(kit::readFile(path),
                      isNew ? kit::ModelFolder(content).rewritten({0, 0x1000, 0}) : content);
            EXPECT_EQ(leftovers(), hasPath ? "" : "kim.tmp ");
        }
}

/// A folder of oddities: what separates messages, and what only looks like it.
string randomFolder(std::mt19937& random) {
    static const string pieces[] = {kFrom,
                                    kFrom,
                                    kFrom,
                                    kFrom,
                                    "From x Corvane\n",
                                    "From Corvane y\n",
                                    "From c@d\r\n",
                                    "From a@b Foo Jan 5\n",
                                    "From a@b Mon Jan 32\n",
                                    "Status: RO\n",
                                    "status: \r\n",
                                    "STATUS:O\n",
                                    "Status: R\n folded\n",
                                    "X-Status: A\n",
                                    "Subject: s\n",
                                    "Subject: s\r\n",
                                    "\n",
                                    "\n",
                                    "\r\n",
                                    " \n",
                                    "text\n",
                                    ">From \n",
                                    "\rtext\n",
                                    string("a\0b\n", 4),
                                    string(31000, 'y'),
                                    "\n" + kFrom};
    string content;
    for (size_t n = random() % 40; n > 0; n--) content += pieces[random() % std::size(pieces)];
    if (random() % 3 == 0) content += "no end";
    return content;
}

TEST_F(Rewrite, EqualsTheModel) {
    std::mt19937 random(1);
    for (int round = 0; round < 400; round++) {
        string content = randomFolder(random);
        if (content.empty()) continue;
        admOptions.passwdFlag = round % 2;
        kit::ModelFolder model(content);
        Fldr* f = open(content, "");
        ASSERT_TRUE(f);
        ASSERT_EQ(fldrMsgMax(f), static_cast<int>(model.messages.size())) << round;
        size_t offset = model.before;
        std::vector<unsigned> status;
        for (int n = 1; n <= fldrMsgMax(f); n++) {
            const auto& m = model.messages[static_cast<size_t>(n) - 1];
            ASSERT_EQ(fldrMsgEntryPos(n, f), static_cast<int>(offset)) << round;
            ASSERT_EQ(fldrMsgHdrSize(n, f), static_cast<int>(m.headerSize())) << round;
            ASSERT_EQ(fldrMsgSize(n, f), static_cast<int>(m.size())) << round;
            offset += m.size();
            if (random() % 3 == 0) fldrMsgDelete(n, f);
            if (random() % 3 == 0) fldrMsgSetRead(n, f);
            status.push_back(fldrMsgGetStatus(n, f));
        }
        fldrStatusSet(1);
        fldrClose(f);
        string expected = model.messages.empty() ? content : model.rewritten(status);
        ASSERT_EQ(kit::readFile(path), expected) << round;
    }
}

}  // namespace
