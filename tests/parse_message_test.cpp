// Message headers, their summaries, and the structure of bodies. Trees are compared as one line:
// type/subtype, name, encoding and disposition where they are not the usual ones, the content of a
// leaf in braces, the children of a multipart in brackets.

#include "kit/site.h"
#include "mail/parse/header_lines.h"
#include "mail/parse/mail_addr.h"
#include "mail/parse/mail_hdr.h"
#include "mail/parse/record.h"

namespace {

using attalven::HeaderResult;
using attalven::HeaderSummary;
using attalven::OwnedBody;
using attalven::OwnedMessage;

struct Row {
    const char *input, *expected;
};

std::string shown(const char* text) {
    return text ? text : "-";
}

std::string addresses(const MailAddress* a) {
    std::string dump;
    for (; a; a = a->next) dump += (dump.empty() ? "" : ",") + shown(a->mailbox);
    return dump.empty() ? "-" : dump;
}

std::string tree(const MailBody* node, const std::string& file) {
    std::string dump;
    for (; node; node = node->next) {
        if (!dump.empty()) dump += ' ';
        dump += std::string(mime_types[node->type]) + "/" + shown(node->subType);
        if (node->fileName) dump += " \"" + std::string(node->fileName) + "\"";
        if (node->encoding) dump += " enc" + std::to_string(node->encoding);
        if (!node->isAttachment) dump += " inline";
        if (node->type == attalven::kMultipart)
            dump += "[" + tree(node->child, file) + "]";
        else
            dump += "{" +
                    file.substr(static_cast<size_t>(node->bodyOffset),
                                static_cast<size_t>(node->bodySize)) +
                    "}";
    }
    return dump;
}

OwnedMessage parse(const std::string& text, const char* msgId = "") {
    kit::File f = kit::fileOf(text);
    return OwnedMessage(mailProcessing(0, static_cast<int>(text.size()), msgId, f.get()));
}

std::string treeOf(const std::string& text) {
    return tree(parse(text, "no such id")->body, text);
}

class Headers : public kit::Site {};
class Structure : public kit::Site {};

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

const std::string kText = "X: y\n\n";
const std::string kMixed = "Content-Type: multipart/mixed; boundary=b\n\n";

TEST_F(Structure, FollowsTheMarks) {
    kit::writeFile(dir + "/root/conf/mime.types", "image/gif\tgif\n");
    const struct {
        const char* label;
        std::string text, expected;
    } rows[] = {
        {"no type", "\nX: y\n", "text/plain{}"},
        {"root keeps plain", "Content-Type: image\nContent-Disposition: inline; filename=f\n\nx",
         "image/plain \"f\"{x}"},
        {"unknown root", "Content-Type: foo\nContent-Transfer-Encoding:\n\nx",
         "x-unknown/plain enc5{x}"},
        {"name wins over filename",
         "Content-Disposition: x; filename=f\nContent-Type: text/html; name=n; charset=x\n\n",
         "text/html \"n\"{}"},
        {"preamble, two parts, epilogue",
         kMixed + "pre\n--b\n\none\n--b\nContent-Type: text/html\n\ntwo\n--b--  \nepi\n--b\n\nno\n",
         "multipart/mixed[text/plain{one\n} text/html{two\n}]"},
        {"prefix match; closing needs exactly two hyphens",
         kMixed + "--bx\n\none\n--b-- x\n\ntwo\n --b\n--b--\n",
         "multipart/mixed[text/plain{one\n} text/plain{two\n --b\n}]"},
        {"no closing delimiter", kMixed + "--b\n\none\n", "multipart/mixed[text/plain{one\n}]"},
        {"ends in a part header", kMixed + "--b\nContent-Type: a/b\n",
         "multipart/mixed[text/plain{}]"},
        {"no boundary", "Content-Type: multipart/mixed\n\n--\n\nx\n", "multipart/mixed[]"},
        {"empty boundary", "Content-Type: multipart/mixed; boundary=\"\"\n\n--x\n\none\n----\n",
         "multipart/mixed[text/plain{one\n}]"},
        {"nested; the inner part ignores outer delimiters",
         kMixed +
             "--b\nContent-Type: multipart/alternative; boundary=c\n\n--c\n\n1\n--b\n--c\n\n2\n"
             "--c--\nrest\n--b\n\n3\n--b--\n",
         "multipart/mixed[multipart/alternative[text/plain{1\n--b\n} text/plain{2\n}] "
         "text/plain{3\n}]"},
        {"part fields",
         kMixed + "--b\nCONTENT-TYPE: image/gif; name=n\nContent-Transfer-Encoding: Base64\n"
                  "Content-Disposition: Inline; filename=f\n\nx\n"
                  "--b\ncontent-disposition: Attachments;\n filename=f\n\ny\n--b--\n",
         "multipart/mixed[image/gif \"n\" enc3 inline{x\n} text/plain \"f\"{y\n}]"},
        {"header line without colon takes one more line",
         kMixed + "--b\nContent-Type: text/html\nno colon\nlost\ncontent\n--b--\n",
         "multipart/mixed[text/html{content\n}]"},
        {"no subtype", kMixed + "--b\nContent-Type: image\n\n--b\nContent-Type: foo\n\n--b--\n",
         "multipart/mixed[image/-{} application/x-foo{}]"},
        {"digest", "Content-Type: multipart/Digest; boundary=b\n\n--b\n \nS: x\n\n--b\nX: y\n\nz\n",
         "multipart/Digest[message/rfc822{S: x\n\n} text/plain{z\n}]"},
        {"delimiter inside a line longer than a piece",
         kMixed + "--b\n\n" + std::string(5119, 'x') + "--b\n\n--b--\n",
         "multipart/mixed[text/plain{" + std::string(5119, 'x') + "--b\n\n}]"},
        {"delimiters across blocks",
         kMixed + "--b\n\n" + std::string(256 * 1024 - 48, 'x') + "\n--b\n\ny\n--b--\n",
         "multipart/mixed[text/plain{" + std::string(256 * 1024 - 48, 'x') +
             "\n} text/plain{y\n}]"},
        {"uuencoded file", kText + "hi\nbegin 644 photo.gif x\nM1\nend\nendless\nbye\n",
         "multipart/plain[text/plain{hi\n} image/gif \"photo.gif\" enc7{M1\nend\n}]"},
        {"second uuencoded file belongs to the first",
         kText + "begin 644 a\nend\nx\nbegin 755 b\nend\nend\n",
         "multipart/plain[text/plain{} application/octet-stream \"a\" enc7{end\nx\n}]"},
        {"begin without a mode ends the scan", kText + "begin x\nbegin 644 a\nend\n",
         "text/plain{begin x\nbegin 644 a\nend\n}"},
        {"begin without a mode inside a block ends it",
         kText + "begin 644 a\nM\nend\nbegin x\nend\n",
         "multipart/plain[text/plain{} application/octet-stream \"a\" enc7{M\n}]"},
        {"no end, no name", kText + "begin 9 a\nx\n",
         "multipart/plain[text/plain{} application/octet-stream enc7{}]"},
    };
    for (const auto& r : rows) EXPECT_EQ(treeOf(r.text), r.expected) << r.label;
}

TEST_F(Structure, StaysInsideItsRegion) {
    std::string first = kMixed + "--b\n\none\n--b\nContent-Type: a/b\n";
    std::string text = first + "From x\nContent-Type: text/html\n\n--b--\n";
    kit::File f = kit::fileOf(text);
    OwnedMessage m(mailProcessing(0, static_cast<int>(first.size()), nullptr, f.get()));
    EXPECT_EQ(tree(m->body, text), "multipart/mixed[text/plain{one\n} text/plain{}]");

    // The line that the region ends in still counts; a line of a block that runs past the body
    // acts as a begin line.
    rewind(f.get());
    OwnedBody parts(mailParseMultipart(nullptr, f.get(), "b", static_cast<int>(kMixed.size()) + 6));
    EXPECT_EQ(tree(parts.get(), text), "text/plain{one\n}");
    text = kText + "begin 644 a\nbegin 6\n";
    f = kit::fileOf(text);
    m.reset(mailProcessing(0, 25, nullptr, f.get()));
    EXPECT_EQ(tree(m->body->child->next, text), "application/octet-stream \"a\" enc7{}");
}

TEST_F(Structure, BoundsNestingAndParts) {
    std::string deep, many = kMixed;
    for (int i = 0; i < 30000; i++) {
        std::string n = std::to_string(i);
        deep += "Content-Type: multipart/x; boundary=" + n + "\n\n--" + n + "\n";
        many += "--b\n\n";
    }
    int levels = 0;
    OwnedMessage m = parse(deep);
    for (const MailBody* node = m->body; node; node = node->child) levels++;
    EXPECT_EQ(levels, 101);
    m = parse(many + "--b--\n");
    EXPECT_EQ(attalven::LeafParts(m->body).count(), 10000u);
    const MailBody* last = m->body->child;
    while (last->next) last = last->next;
    EXPECT_EQ(last->bodySize, 20000 * 5);
}

TEST_F(Structure, FindsNestedMessages) {
    const std::string inner = "Message-ID: <in@x>\nSubject: inner\n\nhi\n";
    auto wrapped = [](const std::string& id, const std::string& message) {
        return "Message-ID: <" + id + ">\nContent-Type: multipart/mixed; boundary=" + id +
               "\n\n--" + id + "\n\nx\n--" + id + "\nContent-Type: message/rfc822\n\n" + message +
               "--" + id + "--\n";
    };
    std::string text = wrapped("top", wrapped("mid", inner));
    const Row rows[] = {{"TOP", "-"}, {"", "-"}, {"none", "-"}, {"mid", "-"}, {"IN@x", "inner"}};
    for (const Row& r : rows) EXPECT_EQ(shown(parse(text, r.input)->subject), r.expected);
    EXPECT_STREQ(parse(text, "mid")->messageId, "mid");
    kit::File f = kit::fileOf(text);
    OwnedMessage m = parse(text);
    EXPECT_EQ(mailGetRFC822MessageInfo(m.get(), f.get(), "top"), m.get());
    EXPECT_EQ(mailGetRFC822MessageInfo(m.get(), f.get(), "none"), nullptr);
    EXPECT_EQ(mailGetRFC822MessageInfo(nullptr, f.get(), "top"), nullptr);
}

}  // namespace
extern "C" __attribute__((weak)) char* mailDecodeSubject(const char* t) {
    return strdup(t);
}
