// Message headers and their summaries.

#include "kit/summary.h"
#include "kit/table.h"
#include "kit/tree.h"

namespace {

using attalven::HeaderResult;
using attalven::HeaderSummary;
using attalven::OwnedMessage;
using kit::parse;
using kit::shown;

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

}  // namespace
