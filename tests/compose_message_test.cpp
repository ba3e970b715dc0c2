// Whole composed messages against files in tests/data/compose/, and what composing does with the
// files that a form names.

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "kit/composed.h"
#include "kit/site.h"

namespace {

using kit::ComposeForm;

class ComposeMessage : public kit::Site {
  protected:
    ComposeMessage() {
        conf.httpdPort = 8080;
        address_ = std::filesystem::path(dir).filename();  // keeps our uploads apart
        setenv("REMOTE_ADDR", address_.c_str(), 1);
        kit::writeFile(dir + "/root/conf/mime.types",
                       "image/gif\tgif\nmessage/rfc822\teml\ntext/css\tcss\n");
        kit::writeFile(upload("photo.gif"), "GIF89a\x80\xFF");
        kit::writeFile(dir + "/\xB0\xA1.css", "a{}\n");
        kit::writeFile(
            dir + "/stored",
            "From x@y Mon Nov 06 14:03:09 2000\nSubject: kept\n\n.dot\xB0\xA1\nFrom here\n");
    }
    ~ComposeMessage() override {
        unlink(upload("photo.gif").c_str());
        unlink(upload("note.eml").c_str());
    }
    std::string upload(const std::string& name) const { return "/tmp/" + name + "@" + address_; }

    std::string address_;
};

struct Row {
    const char* file;
    ComposeForm form;
};

TEST_F(ComposeMessage, WholeMessages) {
    const std::string korean = "\xB0\xA1 & <b>", html = "<html>x<HTML>\xB0\xA1</HTML>";
    const Row rows[] = {
        {"plain", {.subject = "Hello\nBcc: x", .body = "a <b>tag</b>"}},
        {"plain-mixed",
         {.to = "\"Lee, J\" <lee@a.kr>, b, c@d",
          .replyTo = "r@s",
          .cc = "e@f",
          .priority = 1,
          .subject = korean,
          .body = korean,
          .headerEncoding = 2,
          .bodyEncoding = 2,
          .sendMode = 2}},
        {"html",
         {.bodyType = 2,
          .subject = "",
          .body = korean,
          .bodyEncoding = 1,
          .charset = "kor-utf-8",
          .readReceipt = 1}},
        {"document",
         {.bodyType = 2,
          .body = html,
          .headerEncoding = 0,
          .bodyEncoding = 1,
          .messageId = "i\"d>",
          .mailDomain = "d\n<",
          .readReceipt = 1}},
        {"attachments",
         {.attachments = {dir + "/\xB0\xA1.css", "forward@" + dir + "/stored", "photo.gif",
                          dir + "/missing", "../etc/passwd"},
          .bodyEncoding = 1}},
        {"related",
         {.bodyType = 2,
          .body = "x",
          .attachments = {"cid_photo.gif@part1.x", "cid_/etc/passwd@p.gif", "cid_photo.gif"},
          .bodyEncoding = 2}},
        {"fax",
         {.from = " ", .faxTo = "\"\xB0\xA1\" <555>, 556", .bodyEncoding = 4, .sendMode = 8}},
    };
    for (const Row& row : rows) {
        std::string expected = std::string(TEST_DATA) + "/compose/" + row.file + ".txt";
        std::string message = kit::masked(kit::composed(row.form));
        for (size_t at; (at = message.find(dir)) != std::string::npos;)
            message.replace(at, dir.size(), "DIR");
        if (getenv("ATTALVEN_WRITE_EXPECTED")) kit::writeFile(expected, message);
        EXPECT_EQ(message, kit::readFile(expected)) << row.file;
    }
}

TEST_F(ComposeMessage, UploadedMessageLosesItsFirstLine) {
    kit::writeFile(upload("note.eml"), std::string(1200, 'x') + "\nrest\n");
    std::string message = kit::composed({.attachments = {"note.eml"}});
    EXPECT_NE(message.find("Content-Transfer-Encoding: 7bit\n\n" + std::string(201, 'x') +
                           "\nrest\n\n\n--"),
              std::string::npos);
}

TEST_F(ComposeMessage, OnlyRegularFilesAreRead) {
    kit::writeFile(dir + "/secret", "secret");
    std::filesystem::create_directories(dir + "/sub");
    std::filesystem::create_symlink(dir + "/secret", dir + "/link");
    std::filesystem::create_symlink(dir, dir + "/sub/up");
    ASSERT_EQ(mkfifo((dir + "/fifo").c_str(), 0600), 0);
    for (std::string entry : {"/link", "/fifo", "/sub", "/sub/up/secret", "/sub/../secret"}) {
        std::string message = kit::composed({.attachments = {dir + entry}});
        EXPECT_NE(message.find("\"\n\n\n\n--"), std::string::npos) << entry;
    }
    EXPECT_NE(kit::composed({.attachments = {dir + "/secret"}}).find("\"\n\nc2VjcmV0\n\n--"),
              std::string::npos);
}

TEST_F(ComposeMessage, NinetyNineAttachments) {
    std::string message =
        kit::composed({.attachments = std::vector<std::string>(120, "photo.gif")});
    size_t count = 0;
    for (size_t at = 0; (at = message.find("\nContent-Disposition", at)) != std::string::npos; at++)
        count++;
    EXPECT_EQ(count, 99u);
}

TEST_F(ComposeMessage, CleanupRemovesWhatLiesBelowTmp) {
    namespace fs = std::filesystem;
    std::string home = dir, outside = "/var/tmp/" + address_;
    kit::writeFile(home + "/copy", "x");
    kit::writeFile(home + "/given", "x");
    kit::writeFile(outside, "x");
    kit::writeFile(upload("a"), "x");
    fs::create_symlink(outside, home + "/link");
    fs::create_symlink("/var/tmp", home + "/away");
    std::vector<std::string> entries = {"",
                                        "cid_photo.gif@x.y",
                                        "a",
                                        "forward@" + home + "/copy",
                                        home + "/given",
                                        "forward@" + home + "/link",
                                        home + "/away/" + address_,
                                        "forward@" + outside,
                                        outside,
                                        home + "/../.." + outside};
    std::vector<char*> list;
    for (std::string& entry : entries) list.push_back(entry.data());
    list.push_back(nullptr);
    mailComposeDeleteAttachFile(list.data());
    for (std::string gone : {upload("photo.gif"), upload("a"), home + "/copy", home + "/given"})
        EXPECT_FALSE(fs::exists(gone)) << gone;
    EXPECT_TRUE(fs::is_symlink(home + "/link"));
    EXPECT_TRUE(fs::exists(outside));
    EXPECT_STREQ(list[1], "cid_photo.gif");
    kit::writeFile(upload("photo.gif"), "x");
    mailComposeDeleteAttachFile(list.data());  // the entry that was cut is passed over
    EXPECT_TRUE(fs::exists(upload("photo.gif")));
    fs::remove(outside);
}

TEST_F(ComposeMessage, AlternativesNeverShareABoundary) {
    char sub[] = "alternative", text[] = "plain";
    MailBody leaf = {}, inner = {}, second = {}, outer = {};
    leaf.type = 6, leaf.subType = text;
    inner.type = second.type = outer.type = 5;
    inner.subType = second.subType = outer.subType = sub;
    inner.child = second.child = &leaf;
    outer.child = &inner, inner.next = &second;
    kit::File out(tmpfile());
    std::string boundary = std::string("----=_NextPart_") + mailGenBoundary();
    mailMimeBodyWrite(&outer, boundary.c_str(), 3, 3, 0, "euc-kr", out.get());
    std::string body = "Content-Type: multipart/mixed;\n\tboundary=\"" + boundary + "\"\n\n" +
                       kit::contentOf(out.get());
    EXPECT_EQ(kit::structureOf(body),
              "multipart/mixed[multipart/alternative[multipart/alternative[text/plain] "
              "multipart/alternative[text/plain]]]");
}

TEST_F(ComposeMessage, SealedMessages) {
    char entry[] = "cid_photo.gif@x";
    char* list[] = {entry, nullptr};
    for (bool inner : {true, false}) {
        kit::File out(tmpfile());
        if (inner) {
            std::string id =
                smimeMailCompose("a@b", "", "c", "", nullptr, 2, 0, "\xB0\xA1", "", list, 3, 3, 5,
                                 "kor-utf-8", nullptr, "", 0, out.get());
            EXPECT_NE(kit::contentOf(out.get()).find("Message-Id: <" + id + ">\n"),
                      std::string::npos);
        } else {
            mailSMimeHdrWrite("a@b\nX", "a@b", nullptr, "r", "c,\n\td", 4, "s\n\nbody", "id", 4,
                              out.get());
        }
        std::string expected = std::string(TEST_DATA) +
                               (inner ? "/compose/smime-inner.txt" : "/compose/smime-outer.txt");
        std::string message = kit::masked(kit::contentOf(out.get()));
        if (getenv("ATTALVEN_WRITE_EXPECTED")) kit::writeFile(expected, message);
        EXPECT_EQ(message, kit::readFile(expected));
    }
}

}  // namespace
