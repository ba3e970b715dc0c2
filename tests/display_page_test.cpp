// The print callbacks of page templates, whole outputs.

#include "kit/message.h"

namespace {

using kit::mixed;
using kit::outputOf;
using kit::taken;

using Callback = void (*)(const char*, void**);

std::string printed(Callback callback, void* bound, const char* arg = nullptr) {
    return outputOf([&] { callback(arg, &bound); });
}

class Page : public kit::Site {
  protected:
    Page() { conf.httpdPort = 8080; }

    /// The page of `text`, shown as message 3 of a folder with a hostile name.
    static std::string shown(std::string_view text, Callback callback = pfnMailBody) {
        kit::Message msg(text);
        FILE* fp = msg.file.get();
        char id[] = "m\"id";
        MailView view = {0, msg.info->body, &fp, 3, id, "in\"<box>\r\n&"};
        return printed(callback, &view);
    }
    const std::string link =
        "http://mail.example.org:8080/cgi-auth/mailview.cgi?cmd=down&fldrname=in%22%3Cbox%3E&"
        "&select=3";
};

std::string framed(const std::string& body) {
    std::string start = outputOf([] {
        htmlStart();
        htmlHeadStart();
        htmlBaseStyle();
        htmlHeadEnd();
        htmlBodyStart("white");
    });
    return start + body + "</BODY>\n</HTML>\n";
}
std::string pageOf(const char* text) {
    std::string links = taken(strToHyperLink(text));
    return framed("<DIV CLASS=\"textbody\">\n" + taken(strConvHTMLStr(links.c_str(), "\n")) +
                  "</DIV>\n");
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
    char kim[] = "Kim Lee", box[] = "kim", host[] = "example", evil[] = "\"><i>\n";
    MailAddress last = {nullptr, box, host, nullptr}, first = {kim, box, host, &last};
    MailAddress hostile = {evil, evil, evil, nullptr};
    const std::string second = "<OPTION VALUE=\"|kim@example\">kim@example";
    const std::string evilText = "&quot;&gt;&lt;i&gt;", evilBox = evilText + "@" + evilText;
    EXPECT_EQ(printed(pfnAddrComboBoxList, &first, "encode"),
              "<OPTION VALUE=\"Kim+Lee|kim@example\">(Kim Lee) kim@example" + second);
    EXPECT_EQ(printed(pfnAddrComboBoxList, &first, "other"),
              "<OPTION VALUE=\"Kim Lee|kim@example\">(Kim Lee) kim@example" + second);
    EXPECT_EQ(printed(pfnAddrComboBoxList, &hostile),
              "<OPTION VALUE=\"" + evilText + "|" + evilBox + "\">(" + evilText + ") " + evilBox);
    EXPECT_EQ(printed(pfnWAPAddrList, &first), "kim@examplekim@example");
    EXPECT_EQ(printed(pfnWAPAddrList, &hostile), evilBox);
    EXPECT_EQ(printed(pfnMailFromRcpt, &first), taken(mailGetStrHTMLAddr(&first)));

    void* slot = &first;
    outputOf([&] { pfnWAPAddrList(nullptr, &slot); });
    EXPECT_EQ(slot, nullptr);
    char name[] = "id|<Kim>\n&";
    EXPECT_EQ(printed(pfnPrtName, name), "&lt;Kim&gt;&");
}

TEST_F(Page, TheTextThatIsShown) {
    const std::string html = "text/html\n\n<b>h</b>", plain = "text/plain\n\na <i>";
    EXPECT_EQ(shown("A: b\n\n<i>\n"), pageOf("<i>\n"));
    EXPECT_EQ(shown(mixed({plain, html, html})), "<b>h</b>\n");
    EXPECT_EQ(shown(mixed({plain, "text/plain\n\nsecond"})), pageOf("a <i>\n"));
    EXPECT_EQ(shown(mixed({"text/html; name=f\n\nfile", plain})), pageOf("a <i>\n"));
    EXPECT_EQ(shown("Content-Transfer-Encoding: base64\n\n\n"), pageOf(""));
}

TEST_F(Page, DeliveryStatus) {
    const std::string part = "message/delivery-status\n\nAction: <b>";
    const std::string report = framed(
        "<HR SIZE=1 NOSHADE>\n<H3>Delivery Status</H3>\n<PRE>\nAction: <b>\n</PRE>\n"
        "<HR SIZE=1 NOSHADE>\n");
    EXPECT_EQ(shown(mixed({part, "text/plain\n\na", part})), report + pageOf("a\n") + report);
}

TEST_F(Page, InlineMedia) {
    const std::string name = "; name=\"a \\\"<b>.x\"\n\nx";
    const std::string image = "image/gif" + name, sound = "audio/basic" + name,
                      film = "video/mpeg" + name, file = "application/pdf" + name;
    const std::string url = link + "&filename=a+%22%3Cb%3E.x&msgid=m%22id";
    EXPECT_EQ(shown(mixed({image, sound, film, file})),
              "<BR><CENTER><HR SIZE=2>\n<IMG SRC=\"" + url +
                  "\" BORDER=0><BR><BR>\n"
                  "<B>File:</B>a &quot;&lt;b&gt;.x</CENTER>\n<EMBED SRC=\"" +
                  url + "\" AUTOSTART=true HIDDEN=true>\n<EMBED SRC=\"" + url + "\">\n");
    EXPECT_EQ(shown(mixed({"image/gif\n\nx"})),
              "<BR><CENTER><HR SIZE=2>\n<IMG SRC=\"" + link +
                  "&filename=&msgid=m%22id\" BORDER=0><BR><BR>\n<B>File:</B></CENTER>\n");
    EXPECT_EQ(shown(mixed({image, "text/html\nContent-ID: <c>\n\n<img src=cid:c>"})),
              "<img src=" + link + "&msgid=m%22id&cid=c>\n");
}

TEST_F(Page, Wml) {
    const std::string text = mixed({"text/plain\n\na & <i>\"b\"\nc", "text/plain\n\nsecond",
                                    "message/delivery-status\n\nfailed"});
    auto wml = [](const char* s) {
        return taken(strConvWMLStr(taken(strStripHTMLTag(s)).c_str(), "\\&\"\n"));
    };
    setenv("HTTP_ACCEPT", "text/html", 1);
    EXPECT_EQ(shown(text, pfnWAPMailBody), "");
    setenv("HTTP_ACCEPT", "text/vnd.wap.wml", 1);
    EXPECT_EQ(shown(text, pfnWAPMailBody),
              wml("a & <i>\"b\"\nc\n") + "<b>Delivery Status</b><br/>\n" + wml("failed\n"));
}

}  // namespace
