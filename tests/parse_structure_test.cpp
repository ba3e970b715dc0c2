// The structure of bodies, compared as one-line trees.

#include "kit/tree.h"

namespace {

using attalven::OwnedBody;
using attalven::OwnedMessage;
using kit::parse;
using kit::shown;
using kit::tree;

class Structure : public kit::Site {};

std::string treeOf(const std::string& text) {
    return tree(parse(text, "no such id")->body, text);
}

struct TreeRow {
    const char* label;
    std::string text, expected;
};

const std::string kText = "X: y\n\n";
const std::string kMixed = "Content-Type: multipart/mixed; boundary=b\n\n";

TEST_F(Structure, FollowsTheMarks) {
    const TreeRow rows[] = {
        {"no type", "\nX: y\n", "text/plain{}"},
        {"root keeps plain", "Content-Type: image\nContent-Disposition: inline; filename=f\n\nx",
         "image/plain \"f\"{x}"},
        {"unknown root", "Content-Type: foo\nContent-Transfer-Encoding:\n\nx",
         "x-unknown/plain enc5{x}"},
        {"name wins over filename",
         "Content-Disposition: x; filename=f\nContent-Type: text/html; name=n; charset=x\n\n",
         "text/html \"n\"{}"},
        {"delimiter inside a line longer than a piece",
         kMixed + "--b\n\n" + std::string(5119, 'x') + "--b\n\n--b--\n",
         "multipart/mixed[text/plain{" + std::string(5119, 'x') + "--b\n\n}]"},
        {"delimiters across blocks",
         kMixed + "--b\n\n" + std::string(256 * 1024 - 48, 'x') + "\n--b\n\ny\n--b--\n",
         "multipart/mixed[text/plain{" + std::string(256 * 1024 - 48, 'x') +
             "\n} text/plain{y\n}]"},
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
    };
    for (const auto& r : rows) EXPECT_EQ(treeOf(r.text), r.expected) << r.label;
}

TEST_F(Structure, ReadsPartHeaders) {
    const TreeRow rows[] = {
        {"part fields",
         kMixed + "--b\nCONTENT-TYPE: image/gif; "
                  "name=\"=?euc-kr?Q?n?=\"\nContent-Transfer-Encoding: Base64\n"
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
    };
    for (const auto& r : rows) EXPECT_EQ(treeOf(r.text), r.expected) << r.label;
}

TEST_F(Structure, SplitsAtAUuencodedFile) {
    kit::writeFile(dir + "/root/conf/mime.types", "image/gif\tgif\n");
    const TreeRow rows[] = {
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
    const struct {
        const char *input, *expected;
    } rows[] = {{"TOP", "-"}, {"", "-"}, {"none", "-"}, {"mid", "-"}, {"IN@x", "inner"}};
    for (const auto& r : rows) EXPECT_EQ(shown(parse(text, r.input)->subject), r.expected);
    EXPECT_STREQ(parse(text, "mid")->messageId, "mid");
    kit::File f = kit::fileOf(text);
    OwnedMessage m = parse(text);
    EXPECT_EQ(mailGetRFC822MessageInfo(m.get(), f.get(), "top"), m.get());
    EXPECT_EQ(mailGetRFC822MessageInfo(m.get(), f.get(), "none"), nullptr);
    EXPECT_EQ(mailGetRFC822MessageInfo(nullptr, f.get(), "top"), nullptr);
}

}  // namespace
