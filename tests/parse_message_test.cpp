// Message headers and their summaries, and the structure of bodies, compared as one-line trees.

#include "kit/message.h"
#include "kit/summary.h"
#include "kit/table.h"
#include "kit/tree.h"

namespace {

using attalven::HeaderResult, attalven::HeaderSummary, attalven::OwnedBody, attalven::OwnedMessage;
using kit::parse, kit::shown, kit::tree;

class Headers : public kit::Site {};

std::string addresses(const MailAddress* a) {
    std::string dump;
    for (; a; a = a->next) dump += (dump.empty() ? "" : ",") + shown(a->mailbox);
    return dump.empty() ? "-" : dump;
}

/// The fields that differ from those of an empty header.
std::string dump(const MailInfo& m) {
    const struct {
        const char* name;
        std::string value, usual = "-";
    } fields[] = {{"from", addresses(m.from)},
                  {"to", addresses(m.to)},
                  {"cc", addresses(m.cc)},
                  {"reply", addresses(m.replyTo)},
                  {"subject", shown(m.subject)},
                  {"id", shown(m.messageId)},
                  {"version", std::to_string(m.mimeVersion), "0"},
                  {"priority", std::to_string(m.priority), "3"},
                  {"status", std::to_string(m.status), "0"},
                  {"mailer", shown(m.mailer)},
                  {"smime", shown(m.smime)},
                  {"voice", shown(m.voiceId)},
                  {"date", shown(m.dateStr)},
                  {"ts", std::to_string(m.date), "0"}};
    std::string all;
    for (const auto& f : fields)
        if (f.value != f.usual) all += (all.empty() ? "" : " ") + (f.name + ("=" + f.value));
    return all;
}

/// The summary of `text`, read from memory in windows that grow byte by byte.
std::string summaryOf(const std::string& text) {
    HeaderSummary s;
    for (size_t n = 0; n <= text.size(); n++) {
        std::unique_ptr<char[]> window(new char[n]);
        memcpy(window.get(), text.data(), n);
        if (readHeaderSummary({window.get(), n}, n == text.size(), s) == HeaderResult::kDone) break;
    }
    return kit::shown(s);
}

void check(const std::string& header, const std::string& expected) {
    OwnedMessage m = parse(header);
    EXPECT_EQ(dump(*m), expected) << header;
    EXPECT_EQ(summaryOf(header), kit::shown(*m)) << header;
}

TEST_F(Headers, FillTheRecordAndTheSummaryAlike) {
    for (const auto& r : kit::table("parse/headers.table")) check(r.input, r.expected);
    check("", "");
    // Pieces of 5119 bytes count as lines.
    std::string subject(5110, 'x');
    check("Subject: " + subject + "\nTo: a\n\n", "subject=" + subject);
    check("X: " + std::string(5116, 'x') + "Subject: a\n\n", "subject=a");
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

class Structure : public kit::Site {};

std::string treeOf(const std::string& text) {
    return tree(parse(text, "no such id")->body, text);
}

const std::string kText = "X: y\n\n";
const std::string kMixed = "Content-Type: multipart/mixed; boundary=b\n\n";

TEST_F(Structure, FollowsTheMarks) {
    kit::writeFile(dir + "/root/conf/mime.types", "image/gif\tgif\n");
    for (const auto& r : kit::table("parse/structure.table")) {
        bool isMixed = r.input.starts_with("MIXED\n");
        std::string text = isMixed ? kMixed + r.input.substr(6) : r.input;
        EXPECT_EQ(treeOf(text), r.expected) << r.input;
    }
}

TEST_F(Structure, FindsDelimitersAtLineStartsOnly) {
    // In a line longer than a piece, and where one block of the reader ends.
    std::string piece(5119, 'x'), block(256 * 1024 - 48, 'x');
    EXPECT_EQ(treeOf(kMixed + "--b\n\n" + piece + "--b\n\n--b--\n"),
              "multipart/mixed[text/plain{" + piece + "--b\n\n}]");
    EXPECT_EQ(treeOf(kMixed + "--b\n\n" + block + "\n--b\n\ny\n--b--\n"),
              "multipart/mixed[text/plain{" + block + "\n} text/plain{y\n}]");
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
    for (const char* id : {"TOP", "", "none"})
        EXPECT_STREQ(parse(text, id)->messageId, "top") << id;
    EXPECT_STREQ(parse(text, "IN@x")->subject, "inner");
    EXPECT_STREQ(parse(text, "mid")->messageId, "mid");
    kit::File f = kit::fileOf(text);
    OwnedMessage m = parse(text);
    EXPECT_EQ(mailGetRFC822MessageInfo(m.get(), f.get(), "top"), m.get());
    EXPECT_EQ(mailGetRFC822MessageInfo(m.get(), f.get(), "none"), nullptr);
    EXPECT_EQ(mailGetRFC822MessageInfo(nullptr, f.get(), "top"), nullptr);
    // Header blocks that run on far behind every part end the search, and the list.
    const std::string part = "--b\nContent-Type: message/rfc822\n";
    for (int parts : {10, 100}) {
        text = kMixed;
        for (int i = 0; i < parts; i++) text += part + "x\nX: y\n";
        text += part + "x\nContent-Type: a/b\n" + std::string(100'000, 'x') + "\n\n";
        text += part + "\n" + inner;
        EXPECT_EQ(parse(text, "in@x")->messageId != nullptr, parts == 10) << parts;
        kit::Message whole(text);
        MailAttach* list = mailGetAttachList(whole.info, 0, whole.file.get());
        int listed = 0;
        while (list[listed].mimeType) listed++;
        EXPECT_EQ(listed == parts + 2, parts == 10) << listed;
        mailAttachListFree(list);
    }
}

}  // namespace
