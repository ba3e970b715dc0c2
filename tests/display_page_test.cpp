// The print callbacks of page templates, and all that a browser can ask of the messages of
// tests/data/display (NAME.eml): NAME.shown holds the whole answers.

#include <filesystem>

#include "kit/message.h"

namespace {

using kit::outputOf;
using kit::taken;

using Callback = void (*)(const char*, void**);

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

}  // namespace
