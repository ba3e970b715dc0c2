// What was composed is read back by this library and by Python's email package: subject, names,
// texts, attachments and structure, in every character set, attachment form and encoding.

#include <unistd.h>

#include <filesystem>

#include "kit/composed.h"
#include "kit/site.h"
#include "kit/table.h"

namespace {

using std::string;

struct Set {
    string charset, page;  // for sending; of the typed text
    string sample;
};

string convert(const string& target, const string& source, const string& text) {
    return kit::taken(strConvCharSet(target.c_str(), source.c_str(), text.c_str()));
}

/// The UTF-8 text as the library shows it after reading it in `set`.
string shown(const Set& set, const string& utf8) {
    if (set.charset.find("-utf-") == string::npos) return convert(set.page, "utf-8", utf8);
    for (const char* page : {"EUC-KR", "SHIFT-JIS", "GB2312", "BIG5"})
        if (string text = convert(page, "utf-8", utf8); text != "(null)") return text;
    return utf8;
}

string quoted(const string& text) {
    string escaped;
    for (char c : text) escaped += c == '"' || c == '\\' ? string{'\\', c} : string{c};
    return '"' + escaped + '"';
}

class ComposeRoundTrip : public kit::Site {
  protected:
    ComposeRoundTrip() {
        address_ = std::filesystem::path(dir).filename();
        setenv("REMOTE_ADDR", address_.c_str(), 1);
        kit::writeFile(dir + "/root/conf/mime.types", "image/gif\tgif\n");
        for (int i = 0; i < 512; i++) bytes_ += static_cast<char>(i);
        kit::writeFile(dir + "/in/plain.bin", bytes_);
        kit::writeFile(dir + "/in/stored",
                       "From x@y Mon Nov 06 14:03:09 2000\nSubject: kept\n\n.\nFrom \xB0\xA1\n");
    }

    ~ComposeRoundTrip() override {
        for (const string& path : uploads_) unlink(path.c_str());
    }

    void upload(const string& name) {
        uploads_.push_back("/tmp/" + name + "@" + address_);
        kit::writeFile(uploads_.back(), bytes_);
    }

    void readBack(const Set& set, const string& body, const string& message, const string& name);

    string address_, bytes_;
    std::vector<string> uploads_;
};

/// With `name`, the message has attachments and the first one is called so.
void ComposeRoundTrip::readBack(const Set& set, const string& body, const string& message,
                                const string& name) {
    kit::File file = kit::fileOf(message);
    MailInfo* mail =
        mailProcessing(0, static_cast<int>(message.size()), "id@example.org", file.get());
    EXPECT_EQ(mail->subject, shown(set, set.sample));
    EXPECT_EQ(string(mail->from->name), shown(set, set.sample));
    EXPECT_STREQ(mail->from->mailbox, "kim");
    EXPECT_STREQ(mail->to->next->host, "example.org");
    MailBodyList** index = mailGetBody(mail->body);
    auto content = [&](int k) {
        kit::File out(tmpfile());
        mailDecodeAttachFile(index[k]->body, file.get(), out.get());
        return kit::contentOf(out.get());
    };
    int last = body.starts_with("<HTML>") ? 1 : 0;
    string text = content(last);
    EXPECT_EQ(text.substr(0, text.find_last_not_of("\n") + 1),
              kit::taken(mailEncodeCharSet(body.c_str(), set.charset.c_str())));
    if (!name.empty()) {
        EXPECT_EQ(string(index[last + 1]->body->fileName), shown(set, name));
        EXPECT_EQ(content(last + 1), bytes_);
        EXPECT_EQ(content(last + 2), bytes_);
        EXPECT_STREQ(index[last + 4]->body->contentId, "part1.x");
    }
    EXPECT_EQ(index[last + (name.empty() ? 1 : 5)], nullptr);
    mailFreeBodyIdx(index);
    mailFree(&mail);
}

TEST_F(ComposeRoundTrip, EverySetFormAndEncoding) {
    int count = 0;
    for (const auto& row : kit::table("compose_sets.table"))
        for (int variant = 0; variant < 12; variant++) {
            const Set set = {row.arguments[0], row.arguments[1], row.arguments[2]};
            int bodyType = variant % 2 + 1, bodyEncoding = variant / 2 % 3 + 1;
            bool attach = variant >= 6;
            auto typed = [&](const string& utf8) { return convert(set.page, "utf-8", utf8); };
            // HZ is 7-bit: its names need no encoded words.
            auto word = [&](const string& utf8) { return set.page == "HZ" ? typed(utf8) : utf8; };
            string name = set.sample + ".gif", body = set.sample +
                                                      "\n.\n..\nFrom a\nblank \n=3D\t" +
                                                      string(300, 'x') + set.sample;
            if (bodyType == 2) body = "<HTML><BODY>" + body + "</BODY></HTML>";
            kit::ComposeForm form = {{"from", quoted(typed(set.sample)) + " <kim@example.net>"},
                                     {"to", "lee@a.kr, park"},
                                     {"bodyType", std::to_string(bodyType)},
                                     {"subject", typed(set.sample)},
                                     {"body", typed(body)},
                                     {"headerEncoding", std::to_string(std::max(bodyEncoding, 2))},
                                     {"bodyEncoding", std::to_string(bodyEncoding)},
                                     {"sendMode", "2"},
                                     {"charset", set.charset}};
            string structure =
                bodyType == 2 ? "multipart/alternative[text/plain text/html]" : "text/plain";
            if (attach) {
                form["attach"] = typed(name) + "\n" + dir + "/in/plain.bin\nforward@" + dir +
                                 "/in/stored\ncid_photo.gif@part1.x";
                upload(typed(name));
                upload("photo.gif");
                structure +=
                    " image/gif application/octet-stream message/rfc822 application/octet-stream";
            }
            structure =
                string(attach ? "multipart/related[" : "multipart/mixed[") + structure + "]";
            string message = kit::composed(form),
                   label = set.charset + " " + std::to_string(variant);
            SCOPED_TRACE(label);
            readBack(set, form["body"], message, attach ? name : "");
            string path = dir + "/out/" + std::to_string(count++);
            kit::writeFile(path + ".eml", message);
            kit::writeFile(path + ".want", label + "\n" + set.sample + "\n" + word(set.sample) +
                                               "\n" + word(name) + "\n" + structure + "\n" + body);
        }
    if (system("python3 -c 'import email' 2>/dev/null") != 0)
        GTEST_SKIP() << "no python3: its reading is not compared";
    EXPECT_EQ(system(("python3 " SOURCE_DIR "/tests/roundtrip.py " + dir + "/out").c_str()), 0);
}

}  // namespace
