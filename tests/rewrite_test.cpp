// The rewrite of a folder, in both forms, against its rules and against an independent model.

#include <sys/stat.h>

#include <filesystem>
#include <random>

#include "kit/calls.h"
#include "kit/folder_model.h"

namespace {

using std::string;

const string kFrom = "From a@b Mon Jan  5 00:00:00 2004\n";
enum Form { kNewFile = 0, kSameFile = 1 };

class Rewrite : public kit::Site {
  protected:
    // A rewrite waits for the disk several times.
    string folder = kit::memoryFolder(), path = folder + "/kim";
    ~Rewrite() override { std::filesystem::remove_all(folder); }

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
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            if (entry.path() != path) names += entry.path().filename().string() + " ";
        return names;
    }
};

TEST_F(Rewrite, LeavesTheDocumentedFile) {
    for (Form form : {kNewFile, kSameFile}) {
        admOptions.passwdFlag = form;
        // A fourth argument arrives before the folder is closed.
        auto closed = [&](kit::Arguments& a) {
            const int word = a[0];
            const string before(static_cast<std::string_view>(a[2]));
            Fldr* f = open(before, static_cast<char*>(a[1]));
            if (a.size() > 3) append(static_cast<char*>(a[3]));
            EXPECT_EQ(chmod(path.c_str(), 0640), 0);
            const struct stat old = state();
            fldrStatusSet(word);
            fldrClose(f);
            EXPECT_EQ(fldrStatus(), word == 1 ? 0 : word);
            const string after = kit::readFile(path);
            EXPECT_EQ(state().st_ino == old.st_ino, form || after == before);
            EXPECT_EQ(state().st_mode & 07777, 0640u);
            EXPECT_EQ(leftovers(), "");
            return after;
        };
        kit::runTable("folder/rewrite.table", {{"closed", closed}});
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
    static const std::vector<kit::TableRow> pieces = kit::table("folder/pieces.table");
    string content;
    for (size_t n = random() % 40; n > 0; n--) content += pieces[random() % pieces.size()].input;
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
        ASSERT_EQ(kit::spans(f), kit::spans(model)) << round;
        std::vector<unsigned> status;
        for (int n = 1; n <= fldrMsgMax(f); n++) {
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
