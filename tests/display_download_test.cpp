// Questions about a structure, attachment lists and download responses.

#include <sys/resource.h>

#include "kit/message.h"

namespace {

using kit::mixed;
using kit::outputOf;

const std::string kMixed =
    mixed({"text/plain; charset=euc-kr\nContent-Transfer-Encoding: base64\n\nsKE=",
           "application/pdf; name=a.pdf\nContent-Transfer-Encoding: base64\n\nAAEC",
           "text/html; name=a.pdf\nContent-Transfer-Encoding: quoted-printable\n\n<b>=3D",
           "image/gif; name=b.gif\nContent-ID: <p1>\n\nGIF",
           "message/rfc822\n\nSubject: inner one\nMessage-ID: <in ner@x>\n\ntext",
           "message/rfc822\n\nFrom: a@b\n\ntext", "message/delivery-status\n\nAction: failed"},
          "Message-ID: <outer@x>\n");

std::string listOf(std::string_view text) {
    kit::Message msg(text);
    MailAttach* list = mailGetAttachList(msg.info, 0, msg.file.get());
    if (!list) return "(null)";
    std::string all;
    for (MailAttach* row = list; row->mimeType; row++)
        all += std::string(row->mimeType) + "|" + row->name + "|" + std::to_string(row->size) +
               "|" + row->msgId + "\n";
    mailAttachListFree(list);
    return all;
}

TEST(Attachments, FilesAndForwardedMessages) {
    EXPECT_EQ(listOf(kMixed),
              "application/pdf|a.pdf|5|outer@x\ntext/html|a.pdf|7|outer@x\n"
              "image/gif|b.gif|4|outer@x\nmessage/rfc822|inner one|48|in+ner%40x\n"
              "message/rfc822||16|nomsgid\n");
    EXPECT_EQ(listOf("Subject: x\n\ntext\n"), "(null)");
    EXPECT_EQ(listOf("Content-Type: message/delivery-status\n\nAction: failed\n"), "");
}

TEST(Questions, RowByRow) {
    const struct {
        const char *part, *answers;  // attachment, forwarded, reference, body type, S/MIME, charset
    } rows[] = {
        {"TEXT/HTML; charset=UTF-8", "0 0 0 2 0 UTF-8"},
        {"text/html; name=a.html", "1 0 0 1 0 "},
        {"message/rfc822", "0 1 0 1 0 "},
        {"image/png\nContent-Location: a", "0 0 1 1 0 "},
        {"application/X-PKCS7-Signature", "0 0 0 1 2 "},
        {"application/x-pkcs7-mime", "0 0 0 1 1 "},
        {"text/plain; charset=123456789012345678901234567890xyz",
         "0 0 0 1 0 123456789012345678901234567890"},
    };
    for (const auto& row : rows) {
        kit::Message msg(mixed({"image/gif\n\nx", row.part + std::string("\n\nx")}));
        MailBody* root = msg.info->body;
        std::string answers;
        for (auto* ask :
             {mailChkAttachFile, mailChkFwdMail, mailChkCID, mailChkBodyType, mailChkSMime})
            answers += std::to_string(ask(root)) + " ";
        EXPECT_EQ(answers + mailGetCharSet(root), row.answers);
    }
}

const std::string kType = "Content-Type: application/octet-stream\n";
const std::string kName = "Content-disposition: form-data; name=\"filename\"; filename=";

std::string saved(std::string_view text, const char* fileName) {
    kit::Message msg(text);
    return outputOf([&] { mailSaveAttachFile(msg.info, 0, fileName, 0, msg.file.get()); });
}
std::string inlined(const kit::Message& msg, const char* contentId) {
    return outputOf([&] { mailViewCIDFile(msg.info, 0, 0, contentId, 0, msg.file.get()); });
}

TEST(Download, BrowsersAndDoubleNames) {
    const struct {
        const char* browser;
        bool withName;
    } rows[] = {
        {"Mozilla/4.0 (compatible; MSIE 4.0; Windows 98)", false},
        {"Mozilla/4.0 (compatible; MSIE 5.0; Windows 98)", false},
        {"Mozilla/4.0 (compatible; MSIE 5.01; Windows NT)", true},
        {"Mozilla/5.0 (X11; Linux)", true},
    };
    for (const auto& row : rows) {
        setenv("HTTP_USER_AGENT", row.browser, 1);
        std::string header = kType + (row.withName ? kName + "a.pdf\n\n" : "\n");
        EXPECT_EQ(saved(kMixed, "a.pdf"), header + std::string("\0\1\2", 3) + header + "<b>=\n");
    }
    EXPECT_EQ(saved(kMixed, "A.pdf"), "");
}

TEST(Download, NamesAndTypesStayInTheirLine) {
    const char* kMail =
        "Content-Type: application/x; name=\"=?us-ascii?Q?a=0D=0ASet:_x=0A=7Fb?=\"\n\nD";
    EXPECT_EQ(saved(kMail,
                    "a\r\nSet: x\n\x7F"
                    "b"),
              kType + kName + "aSet: xb\n\nD");

    kit::Message msg("Content-Type: image/gif\nContent-ID: <c>\n\nx");
    MailBody* root = msg.info->body;
    root->contentId = strdup("c");
    root->type = 99;
    free(root->subType);
    root->subType = strdup(("a\n\nb" + std::string(200, 's')).c_str());
    EXPECT_EQ(inlined(msg, "c"), "Content-Type: x-unknown/ab" + std::string(88, 's') + "\n\nx");
}

TEST(Download, InlinePartsAndBodies) {
    kit::Message msg(kMixed), picture("Content-Type: image/gif\n\nx");
    EXPECT_EQ(inlined(msg, "p1"), "Content-Type: image/gif\n\nGIF\n");
    EXPECT_EQ(inlined(msg, "p"), "");
    EXPECT_EQ(outputOf([&] { mailSaveMailBody(msg.info, 0, msg.file.get()); }),
              kType + "\n\xB0\xA1");
    EXPECT_EQ(outputOf([&] { mailSaveMailBody(picture.info, 0, picture.file.get()); }),
              kType + "\n");
}

TEST(Download, RawMessage) {
    // The line of 999 characters comes in two pieces, the second an LF alone.
    const std::string header = "A: b\n" + std::string(999, 'h') + "\nC: d\r\n";
    kit::Message msg("before\n" + header + "\r\nbody\n", 7);
    auto raw = [&](int mode) {
        return outputOf([&] { mailViewRFC822(msg.info, mode, 0, msg.file.get()); });
    };
    EXPECT_EQ(raw(1), header + "\r\nbody\n");
    EXPECT_EQ(raw(2), header);
}

// A large attachment (a sparse file) needs no more memory than a small one.
TEST(Download, ConstantMemory) {
    kit::Message msg("Content-Type: application/x; name=big\n\n");
    ASSERT_EQ(ftruncate(fileno(msg.file.get()), 16 << 20), 0);
    kit::File sink(fopen("/dev/null", "w"));
    auto peakAfter = [&](int code, int size) {
        msg.info->body->encoding = code;
        msg.info->body->bodySize = size;
        mailDecodeAttachFile(msg.info->body, msg.file.get(), sink.get());
        rusage usage;
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    };
    for (int code : {0, 2, 3, 7}) {
        long small = peakAfter(code, 1 << 20);
        EXPECT_LT(peakAfter(code, 16 << 20) - small, 1024) << "KiB, encoding " << code;
    }
}

}  // namespace
