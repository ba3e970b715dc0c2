// Whole composed messages against the files of tests/data/compose/ (fields of the form, an empty
// line, the message), and what composing does with the files that a form names.

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

#include "kit/composed.h"
#include "kit/tree.h"

namespace {

namespace fs = std::filesystem;
using std::string;

class ComposeMessage : public kit::Site {
  protected:
    ComposeMessage() {
        conf.httpdPort = 8080;
        address_ = fs::path(dir).filename();  // keeps our uploads apart
        setenv("REMOTE_ADDR", address_.c_str(), 1);
        kit::writeFile(dir + "/root/conf/mime.types",
                       "image/gif\tgif\nmessage/rfc822\teml\ntext/css\tcss\n");
        kit::writeFile(upload("photo.gif"), "GIF89a\x80\xFF");
        kit::writeFile(dir + "/\xB0\xA1.css", "a{}\n");
        kit::writeFile(dir + "/stored",
                       "From x@y DATE\nSubject: kept\n\n.dot\xB0\xA1\nFrom here\n");
    }
    ~ComposeMessage() override {
        for (const char* name : {"photo.gif", "note.eml", "a"}) unlink(upload(name).c_str());
    }
    string upload(const string& name) const { return "/tmp/" + name + "@" + address_; }

    string address_;
};

TEST_F(ComposeMessage, WholeMessages) {
    int count = 0;
    for (const auto& file : fs::directory_iterator(TEST_DATA "/compose")) {
        string text = kit::readFile(file.path());
        size_t end = text.find("\n\n");
        kit::ComposeForm form;
        std::istringstream lines(text.substr(0, end));
        for (string line; std::getline(lines, line);) {
            size_t colon = line.find(": ");
            form[line.substr(0, colon)] =
                kit::replaced(kit::replaced(line.substr(colon + 2), "\\n", "\n"), "DIR", dir);
        }
        string message = kit::replaced(kit::masked(kit::composed(form)), dir, "DIR");
        if (getenv("ATTALVEN_WRITE_EXPECTED"))
            kit::writeFile(file.path(), text.substr(0, end + 2) + message);
        EXPECT_EQ(message, text.substr(end + 2)) << file.path();
        count++;
    }
    EXPECT_GE(count, 10);
}

TEST_F(ComposeMessage, UploadedMessageLosesItsFirstLine) {
    kit::writeFile(upload("note.eml"), string(1200, 'x') + "\nrest\n");
    string message = kit::composed({{"attach", "note.eml"}});
    EXPECT_NE(message.find("7bit\n\n" + string(201, 'x') + "\nrest\n\n\n--"), string::npos);
}

TEST_F(ComposeMessage, OnlyRegularFilesAreRead) {
    kit::writeFile(dir + "/secret", "secret");
    fs::create_directories(dir + "/sub");
    fs::create_symlink(dir + "/secret", dir + "/link");
    fs::create_symlink(dir, dir + "/sub/up");
    ASSERT_EQ(mkfifo((dir + "/fifo").c_str(), 0600), 0);
    auto part = [&](const string& name) { return kit::composed({{"attach", dir + name}}); };
    for (const char* name : {"/link", "/fifo", "/sub", "/sub/up/secret", "/sub/../secret"})
        EXPECT_NE(part(name).find("\"\n\n\n\n--"), string::npos) << name;
    EXPECT_NE(part("/sub/").find("name=\"" + dir + "/sub/\"\n"), string::npos);
    EXPECT_NE(part("/secret").find("\"\n\nc2VjcmV0\n\n--"), string::npos);
}

TEST_F(ComposeMessage, NinetyNineAttachments) {
    string list;
    for (int i = 0; i < 120; i++) list += "photo.gif\n";
    string message = kit::composed({{"attach", list}}), mark = "\nContent-Disposition";
    EXPECT_EQ(message.size() - kit::replaced(message, mark, "").size(), 99 * mark.size());
}

TEST_F(ComposeMessage, CleanupRemovesWhatLiesBelowTmp) {
    string outside = "/var/tmp/" + address_;
    for (string path : {dir + "/copy", dir + "/given", outside, upload("a")})
        kit::writeFile(path, "x");
    fs::create_symlink(outside, dir + "/link");
    fs::create_symlink("/var/tmp", dir + "/away");
    string entries[] = {"",
                        "cid_photo.gif@x.y",
                        "a",
                        "forward@" + dir + "/copy",
                        dir + "/given",
                        "forward@" + dir + "/link",
                        dir + "/away/" + address_,
                        "forward@" + outside,
                        outside,
                        dir + "/../.." + outside};
    std::vector<char*> list;
    for (string& entry : entries) list.push_back(entry.data());
    list.push_back(nullptr);
    mailComposeDeleteAttachFile(list.data());
    for (string gone : {upload("photo.gif"), upload("a"), dir + "/copy", dir + "/given"})
        EXPECT_FALSE(fs::exists(gone)) << gone;
    EXPECT_TRUE(fs::is_symlink(dir + "/link"));
    EXPECT_TRUE(fs::remove(outside));
    EXPECT_STREQ(list[1], "cid_photo.gif");
    kit::writeFile(upload("photo.gif"), "x");
    mailComposeDeleteAttachFile(list.data());  // the entry that was cut is passed over
    EXPECT_TRUE(fs::exists(upload("photo.gif")));
}

TEST_F(ComposeMessage, AlternativesNeverShareABoundary) {
    char sub[] = "alternative", text[] = "plain";
    MailBody leaf = {}, inner = {}, second = {}, outer = {};
    leaf.type = 6, leaf.subType = text;
    inner.type = second.type = outer.type = 5;
    inner.subType = second.subType = outer.subType = sub;
    inner.child = second.child = &leaf, outer.child = &inner, inner.next = &second;
    kit::File out(tmpfile());
    string boundary = string("----=_NextPart_") + mailGenBoundary();
    mailMimeBodyWrite(&outer, boundary.c_str(), 3, 4, 0, "euc-kr", out.get());
    string message = "Content-Type: multipart/mixed; boundary=\"" + boundary + "\"\n\n" +
                     kit::contentOf(out.get());
    EXPECT_EQ(kit::tree(kit::parse(message)->body, message),
              "multipart/mixed[multipart/alternative[multipart/alternative[text/plain{\n}] "
              "multipart/alternative[text/plain{\n}]]]");
}

TEST_F(ComposeMessage, NoTextCanForeseeTheBoundary) {
    string draws = "\n------=_NextPart_" + string(mailGenBoundary());
    draws += "\n------=_NextPart_" + string(mailGenBoundary()) + "\n\n";
    kit::writeFile(dir + "/stored", "From x" + draws + "y");
    string message = kit::composed({{"bodyType", "2"},
                                    {"body", draws},
                                    {"bodyEncoding", "1"},
                                    {"attach", "forward@" + dir + "/stored"}});
    MailBodyList** index = mailGetBody(kit::parse(message, "(top)")->body);
    EXPECT_TRUE(index[2] && !index[3]);
    mailFreeBodyIdx(index);
}

TEST_F(ComposeMessage, AFullDiskShowsInTheStream) {
    kit::File full(fopen("/dev/full", "w"));
    mailCompose("a@b", "c@d", "", nullptr, nullptr, 3, 1, "s", "text", nullptr, 3, 3, 0, "", "id",
                "", 0, full.get());
    EXPECT_TRUE(fflush(full.get()) != 0 || ferror(full.get()));
}

TEST_F(ComposeMessage, SealedMessagesTellTheirId) {
    kit::File out(tmpfile());
    string id = smimeMailCompose("a@b", "", "c", "", nullptr, 2, 0, "", "", nullptr, 3, 3, 5, "",
                                 nullptr, "", 0, out.get());
    EXPECT_NE(kit::contentOf(out.get()).find("Message-Id: <" + id + ">\n"), string::npos);
}

}  // namespace
