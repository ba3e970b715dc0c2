// Address lists and the generators of composed messages; whole composed messages against the files
// of tests/data/compose/ (fields of the form, an empty line, the message), and what composing does
// with the files that a form names.

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

#include "kit/calls.h"
#include "kit/composed.h"
#include "kit/tree.h"

namespace {

namespace fs = std::filesystem;
using std::string;

class ComposeHeader : public kit::Site {};

template <char* (*kWrite)(time_t)>
std::string inZone(const char* zone, time_t t) {
    setenv("TZ", zone, 1);
    return kWrite(t);
}

TEST_F(ComposeHeader, Dates) {
    kit::runTable("compose_dates.table",
                  {RESULT(inZone<mailMakeDate>), RESULT(inZone<mailGetRFC822FromDate>)});
}

TEST_F(ComposeHeader, MessageIdsCountUp) {
    setenv("TZ", "UTC0", 1);
    time_t before = time(nullptr);
    std::string first = mailGetMsgId(), second = mailGetMsgId();
    time_t after = time(nullptr);
    long a = atol(first.c_str() + 12), b = atol(second.c_str() + 12);
    EXPECT_GE(a, before);
    EXPECT_LE(a, after);
    EXPECT_GE(b, a + 1);
    EXPECT_LE(b, after + 1);
    EXPECT_EQ(kit::masked(first), "MSGID@example.org");
    char day[9];
    strftime(day, sizeof day, "%Y%m%d", gmtime(&before));
    EXPECT_TRUE(first.substr(0, 8) == day || before / 86400 != after / 86400);
}

std::string drawn() {
    std::string text;
    for (int i = 0; i < 24; i++) text += "ABCDEFGHIJKLMNOPQRSTUVWXYZ1234567890"[rand() % 36];
    return text;
}

TEST_F(ComposeHeader, BoundariesReplayTheGenerator) {
    time_t now;
    std::string first, second, third;
    do {  // all within one second
        now = time(nullptr);
        first = mailGenBoundary(), second = mailGenBoundary(), third = mailGenBoundary();
    } while (time(nullptr) != now);
    srand(static_cast<unsigned>(now));
    std::string one = drawn(), two = drawn();
    EXPECT_EQ(second, first == one ? two : one);
    EXPECT_EQ(third, first);
    EXPECT_TRUE(first == one || first == two);
}

TEST_F(ComposeHeader, AddressLists) {
    std::string longName(2990, 'n'), longBox(3001, 'b');
    char b[] = "b", h[] = "h.kr", quoted[] = "a \"b\" \\\nBcc: c", korean[] = "\xB0\xA1";
    MailAddress last = {nullptr, b, nullptr, nullptr},
                tooLong = {nullptr, longBox.data(), h, &last},
                wide = {longName.data(), b, h, &tooLong}, word = {korean, b, h, &wide},
                first = {quoted, b, h, &word};
    EXPECT_EQ(
        kit::taken(mailGetAddrStr(&first, "euc-kr")),
        "\"a \\\"b\\\" \\\\Bcc: c\" <b@h.kr>,\n\t\"=?euc-kr?B?sKE=?=\" <b@h.kr>,\n\tb@h.kr,\n\tb@");
    EXPECT_EQ(kit::taken(mailGetFaxNumStr(&word, "euc-kr")),
              "\"=?euc-kr?B?sKE=?=\" <b>,\n\t\"" + longName + "\" <b>,\n\tb");
    MailAddress noNumber = {nullptr, nullptr, h, &last};
    EXPECT_EQ(kit::taken(mailGetFaxNumStr(&noNumber, "euc-kr")), ",\n\tb");
    EXPECT_EQ(mailGetAddrStr(nullptr, "euc-kr"), nullptr);
}

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
