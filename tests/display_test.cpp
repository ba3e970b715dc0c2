// The print callbacks of page templates, and all that a browser can ask of the messages of
// tests/data/display (NAME.eml): NAME.shown holds the whole answers. Body texts: decoding,
// conversion, page preparation, enriched text. Download responses: what depends on the browser, on
// made records and on the size.

#include <sys/resource.h>

#include <filesystem>

#include "kit/calls.h"
#include "kit/message.h"

namespace {

using Callback = void (*)(const char*, void**);
using kit::outputOf;
using kit::taken;

std::string printed(Callback callback, void* bound, const char* arg = nullptr) {
    return outputOf([&] { callback(arg, &bound); });
}

class Page : public kit::Site {
  protected:
    Page() { conf.httpdPort = 8080; }
};

/// Both pages, the body, the answers to questions and every attachment, as message 3 of a folder
/// with a hostile name.
std::string shown(const std::string& text) {
    kit::Message msg(text);
    FILE* fp = msg.file.get();
    MailBody* root = msg.info->body;
    char id[] = "m\"id";
    MailView view = {0, root, &fp, 3, id, "in\"<box>\r\n&"};
    std::string all = printed(pfnMailBody, &view) + "\n\nWML:\n";
    for (const char* accepted : {"text/html", "text/vnd.wap.wml"}) {  // nothing for the first
        setenv("HTTP_ACCEPT", accepted, 1);
        all += printed(pfnWAPMailBody, &view);
    }
    all += "\n\nBODY:\n" + outputOf([&] { mailSaveMailBody(msg.info, 0, fp); });
    all += "\n\nPART c:\n" + outputOf([&] { mailViewCIDFile(msg.info, 0, 0, "c", 0, fp); });
    all += "\n\nFILE, FORWARDED, REFERENCE, BODY TYPE, S/MIME, CHARSET:";
    for (auto* ask : {mailChkAttachFile, mailChkFwdMail, mailChkCID, mailChkBodyType, mailChkSMime})
        all += " " + std::to_string(ask(root));
    all += std::string(" ") + mailGetCharSet(root);
    MailAttach* list = mailGetAttachList(msg.info, 0, fp);
    for (MailAttach* row = list; row && row->mimeType; row++) {
        all += std::string("\n\nATTACHMENT ") + row->mimeType + "|" + row->name + "|" +
               std::to_string(row->size) + "|" + row->msgId + ":\n";
        all += outputOf([&] { mailSaveAttachFile(msg.info, 0, row->name, 0, fp); });
    }
    mailAttachListFree(list);
    return all + (list ? "\n" : "\n\nNO LIST\n");
}

TEST_F(Page, WholeAnswers) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(TEST_DATA "/display")) {
        if (entry.path().extension() != ".eml") continue;
        std::string got = shown(kit::readFile(entry.path()));
        std::filesystem::path expected = entry.path();
        expected.replace_extension(".shown");
        if (getenv("ATTALVEN_WRITE_EXPECTED")) kit::writeFile(expected, got);
        EXPECT_EQ(got, kit::readFile(expected)) << entry.path();
        count++;
    }
    EXPECT_GE(count, 18);
}

TEST_F(Page, BodyTypesAndPriorities) {
    std::string table;
    for (int n = 79; n <= 86; n++) table += std::to_string(n) + "\ttext" + std::to_string(n) + "\n";
    kit::writeFile(dir + "/root/conf/msg." + conf.defaultTemplateLang, table);
    kit::Message html("Content-Type: text/html\n\nx"), plain("A: b\n\nx");
    EXPECT_EQ(printed(pfnMailBodyType, html.info->body), "text79");
    EXPECT_EQ(printed(pfnMailBodyType, plain.info->body), "text80");
    const char* expected[] = {"&nbsp;", "text81", "text82", "text83", "text84", "text85", "&nbsp;"};
    for (int n = 0; n <= 6; n++) {
        plain.info->priority = n;
        EXPECT_EQ(printed(pfnMailPriority, plain.info), expected[n]);
    }
}

TEST_F(Page, NothingBound) {
    for (Callback callback : {pfnMailPriority, pfnMailBodyType, pfnMailFromRcpt, pfnMailBody}) {
        EXPECT_EQ(printed(callback, nullptr), "&nbsp;");
        EXPECT_EQ(outputOf([&] { callback(nullptr, nullptr); }), "&nbsp;");
    }
    for (Callback callback : {pfnAddrComboBoxList, pfnWAPAddrList, pfnWAPMailBody, pfnPrtName}) {
        EXPECT_EQ(printed(callback, nullptr), "");
        EXPECT_EQ(outputOf([&] { callback(nullptr, nullptr); }), "");
    }
}

TEST_F(Page, Addresses) {
    char kim[] = "Kim Lee", box[] = "kim", host[] = "example", evil[] = "\"><i>\n", none[] = "";
    MailAddress last = {none, box, host, nullptr}, next = {nullptr, box, host, &last};
    MailAddress first = {kim, box, host, &next};
    MailAddress hostile = {evil, evil, evil, nullptr};
    const std::string unnamed = "<OPTION VALUE=\"|kim@example\">kim@example";
    const std::string others = unnamed + unnamed;
    const std::string evilText = "&quot;&gt;&lt;i&gt;", evilBox = evilText + "@" + evilText;
    EXPECT_EQ(printed(pfnAddrComboBoxList, &first, "encode"),
              "<OPTION VALUE=\"Kim+Lee|kim@example\">(Kim Lee) kim@example" + others);
    EXPECT_EQ(printed(pfnAddrComboBoxList, &first, "other"),
              "<OPTION VALUE=\"Kim Lee|kim@example\">(Kim Lee) kim@example" + others);
    EXPECT_EQ(printed(pfnAddrComboBoxList, &hostile),
              "<OPTION VALUE=\"" + evilText + "|" + evilBox + "\">(" + evilText + ") " + evilBox);
    EXPECT_EQ(printed(pfnWAPAddrList, &first), "kim@examplekim@examplekim@example");
    EXPECT_EQ(printed(pfnWAPAddrList, &hostile), evilBox);
    EXPECT_EQ(printed(pfnMailFromRcpt, &first), taken(mailGetStrHTMLAddr(&first)));

    void* slot = &first;
    outputOf([&] { pfnWAPAddrList(nullptr, &slot); });
    EXPECT_EQ(slot, nullptr);
    char name[] = "id|<Kim>\n&";
    EXPECT_EQ(printed(pfnPrtName, name), "&lt;Kim&gt;&");
}

std::string decoded(int code, int mode, char* charSet, char* subType, std::string_view stored,
                    const char* cidPrefix = "p=") {
    MailBody part = {};
    part.subType = subType;
    part.charSet = charSet;
    part.encoding = code;
    part.bodyOffset = 3;
    part.bodySize = static_cast<int>(stored.size());
    kit::File file = kit::fileOf("###" + std::string(stored) + "beyond");
    return taken(mailDecode(&part, mode, cidPrefix, file.get()));
}

std::string decodedBy(int code, int mode, char* charSet, char* subType, std::string_view stored) {
    return decoded(code, mode, charSet, subType, stored);
}

std::string decodedRange(int offset, int size, std::string_view content) {
    MailBody part = {};
    part.bodyOffset = offset;
    part.bodySize = size;
    return taken(mailDecode(&part, 1, nullptr, kit::fileOf(content).get()));
}

void printEnriched(int size, std::string_view content) {
    kit::File file = kit::fileOf(content);
    FILE* fp = file.get();
    MailBody part = {};
    part.bodySize = size;
    mailTextEnrichedHandler(&part, &fp);
}

TEST(Decode, RowByRow) {
    kit::runTable("display/decode.table",
                  {RESULT(decodedBy), RESULT(decodedRange), PRINTED(printEnriched)});
    char rtf[] = "rtf", html[] = "html";
    EXPECT_EQ(decoded(0, 2, nullptr, rtf, "cid:1<BASE>", nullptr), "cid:1<BASE>");
    // 400,000 references and a prefix of 300 bytes would make 120 MB of 1.6 MB.
    std::string flood;
    for (int i = 0; i < 400000; i++) flood += "cid:";
    EXPECT_EQ(decoded(0, 2, nullptr, html, flood, std::string(300, 'p').c_str()), flood);
}

const char kType[] = "Content-Type: application/octet-stream\n",
           kName[] = "Content-disposition: form-data; name=\"filename\"; filename=a.pdf\n\n";

TEST(Download, BrowsersAndDoubleNames) {
    const struct {
        const char *browser, *name;
    } rows[] = {
        {"Mozilla/4.0 (compatible; MSIE 4.0; Windows 98)", "\n"},
        {"Mozilla/4.0 (compatible; MSIE 5.0; Windows 98)", "\n"},
        {"Mozilla/4.0 (compatible; MSIE 5.01; Windows NT)", kName},
        {"Mozilla/5.0 (X11; Linux)", kName},
    };
    const char* part = "application/x; name=a.pdf\n\nx";
    kit::Message msg(kit::mixed({part, part}));
    auto saved = [&](const char* name) {
        return outputOf([&] { mailSaveAttachFile(msg.info, 0, name, 0, msg.file.get()); });
    };
    for (const auto& row : rows) {
        setenv("HTTP_USER_AGENT", row.browser, 1);
        std::string one = std::string(kType) + row.name + "x\n";
        EXPECT_EQ(saved("a.pdf"), one + one);
    }
    EXPECT_EQ(saved("A.pdf"), "");
}

TEST(Download, TypesStayInTheirLine) {
    kit::Message msg("Content-Type: image/gif\nContent-ID: <c>\n\nx");
    MailBody* root = msg.info->body;
    root->contentId = strdup("c");
    root->type = 99;
    free(root->subType);
    root->subType = strdup(("a\n\nb" + std::string(200, 's')).c_str());
    EXPECT_EQ(outputOf([&] { mailViewCIDFile(msg.info, 0, 0, "c", 0, msg.file.get()); }),
              "Content-Type: x-unknown/ab" + std::string(88, 's') + "\n\nx");
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
