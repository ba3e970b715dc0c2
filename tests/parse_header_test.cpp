// Message headers and their summaries.

#include "kit/tree.h"
#include "mail/parse/mail_addr.h"
#include "mail/parse/mail_hdr.h"

namespace {

using attalven::HeaderResult;
using attalven::HeaderSummary;
using attalven::OwnedMessage;
using kit::parse;
using kit::shown;

std::string addresses(const MailAddress* a) {
    std::string dump;
    for (; a; a = a->next) dump += (dump.empty() ? "" : ",") + shown(a->mailbox);
    return dump.empty() ? "-" : dump;
}

class Headers : public kit::Site {};
std::string dump(const MailInfo& m) {
    return "from=" + addresses(m.from) + " to=" + addresses(m.to) + " cc=" + addresses(m.cc) +
           " reply=" + addresses(m.replyTo) + " subject=" + shown(m.subject) +
           " id=" + shown(m.messageId) + " v" + std::to_string(m.mimeVersion) + " p" +
           std::to_string(m.priority) + " s" + std::to_string(m.status) + " " + shown(m.mailer) +
           " " + shown(m.smime) + " " + shown(m.voiceId) + " " + shown(m.dateStr) + " " +
           std::to_string(m.date);
}

/// The summary of `text`, read from memory in windows that grow byte by byte.
std::string summaryOf(const std::string& text) {
    HeaderSummary s;
    for (size_t n = 0; n <= text.size(); n++) {
        std::unique_ptr<char[]> window(new char[n]);
        memcpy(window.get(), text.data(), n);
        if (readHeaderSummary({window.get(), n}, n == text.size(), s) == HeaderResult::kDone) break;
    }
    auto part = [](const attalven::Text& t) { return std::string(t.view()); };
    return part(s.from) + "|" + part(s.subject) + "|" + part(s.messageId) + "|" +
           std::to_string(s.priority) + "|" + std::to_string(s.status) + "|" +
           std::to_string(s.date);
}

std::string summaryFromRecord(const MailInfo& m) {
    return std::string(attalven::bareAddress(m.from).view()) + "|" + (m.subject ? m.subject : "") +
           "|" + (m.messageId ? m.messageId : "") + "|" + std::to_string(m.priority) + "|" +
           std::to_string(m.status) + "|" + std::to_string(m.date);
}

TEST_F(Headers, FillTheRecordAndTheSummaryAlike) {
    const std::string none = "from=- to=- cc=- reply=- subject=- id=- v0 p3 s0 - - - - 0";
    auto with = [&none](const std::string& field, const std::string& value) {
        std::string s = none;
        size_t at = s.find(field);
        return s.replace(at, field.size(), value);
    };
    const struct {
        const char* label;
        std::string header, expected;
    } rows[] = {
        {"nothing", "", none},
        {"From_ line", "From a@b Mon Jan  1 00:00:00 2001\n\n", none},
        {"last From and To win, first Subject",
         "From: a@b, c@d\nfrom: e@f\nSubject:\nSubject: one\nSubject: two\nTo: x@y\nTo:\n\n",
         "from=e to=- cc=- reply=- subject=one id=- v0 p3 s0 - - - - 0"},
        {"folding joins without a separator", "Subject: Hello \r\n\t World\r\n !\r\n\r\n",
         with("subject=-", "subject=HelloWorld!")},
        {"folded encoded words", "Subject: =?euc-kr?B?sei1?=\n =?euc-kr?B?v8f2?=\n\n",
         with("subject=-", "subject=\xB1\xE8\xB5\xBF\xC7\xF6")},
        {"keyword split over lines", "Sub\n ject: x\n\n", with("subject=-", "subject=x")},
        {"tabs inside a subject", "Subject: a\tb\n\n", with("subject=-", "subject=a b")},
        {"blank line ends like an empty one", "Subject: a\n \t \r\nX-Priority: 1\n\n",
         with("subject=-", "subject=a")},
        {"leading empty lines are skipped", "\n\r\nSubject: a\n\n", with("subject=-", "subject=a")},
        {"header pending at the end is dropped", "Subject: a\nX-Priority: 1\n",
         with("subject=-", "subject=a")},
        {"blank before the colon", "Subject : a\nno colon\n\n", none},
        {"status letters add up", "Status: O\nStatus: rox R\n\n", with("s0", "s272")},
        {"one digit counts", "X-Priority: 1 (Highest)\nMIME-Version: 10\n\n",
         with("v0 p3", "v1 p1")},
        {"priority out of range", "X-Priority: 9\n\n", none},
        {"id without its brackets, quote, slash", "Message-ID: x <a/b\"c@d> y\n\n",
         with("id=-", "id=abc@d")},
        {"id with a database ending", "Message-ID: <a.dbf/@d>\n\n",
         with("id=-", "id=a.dbf@d_msgid")},
        {"id without brackets", "Message-ID: a@b\n\n", with("id=-", "id=")},
        {"texts", "X-Mailer: m 1 \nX-SMIME: Encrypt\nX-Voice-IDs: 7\n\n",
         with("- - - - 0", "m 1 Encrypt 7 - 0")},
        {"addresses",
         "Apparently-From: a@b\nApparently-To: c\nCc: d,e\nReply-To: f\nReferences: g\n\n",
         "from=a to=c cc=d,e reply=f subject=- id=- v0 p3 s0 - - - - 0"},
        {"date", "Date: Mon, 15 Nov 1999 10:20:30 +0900\n\n",
         with("- - - - 0", "- - - Mon, 15 Nov 1999 10:20:30 +0900 942628830")},
        {"piece of 5119 bytes, then its line end",
         "Subject: " + std::string(5110, 'x') + "\nTo: a\n\n",
         with("subject=-", "subject=" + std::string(5110, 'x'))},
        {"long line in pieces, each a line", "X: " + std::string(5116, 'x') + "Subject: a\n\n",
         with("subject=-", "subject=a")},
    };
    for (const auto& r : rows) {
        OwnedMessage m = parse(r.header);
        EXPECT_EQ(dump(*m), r.expected) << r.label;
        EXPECT_EQ(summaryOf(r.header), summaryFromRecord(*m)) << r.label;
    }
}

TEST_F(Headers, PlaceTheBody) {
    std::string text = "junk\nSubject: a\n \nbody";
    kit::File f = kit::fileOf(text);
    OwnedMessage m(mailGetHeaderInfo(5, 30, f.get()));
    EXPECT_EQ(m->bodyOffset, 18);
    EXPECT_EQ(m->bodySize, 17);
    EXPECT_EQ(ftell(f.get()), 18);
    for (int offset : {-1, 1000}) {
        OwnedMessage none(mailGetHeaderInfo(offset, 5, f.get()));
        EXPECT_EQ(none->offset, offset);
        EXPECT_EQ(none->subject, nullptr);
        EXPECT_EQ(mailParseBody(none.get(), f.get()), 1);
    }
    EXPECT_EQ(mailGetHeaderInfo(0, 5, nullptr), nullptr);
    EXPECT_EQ(mailParseBody(nullptr, f.get()), 0);
}

}  // namespace
