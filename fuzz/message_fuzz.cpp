// A message of any bytes: its parts are disjoint and lie inside the file, nesting and number are
// bounded, and the summary equals the record, whether it is read from a stream or from windows.

#include "fuzz.h"
#include "mail/parse/header_lines.h"
#include "tests/kit/summary.h"

using namespace attalven;
using fuzz::require;
using kit::shown;

namespace {

int parts;

/// Checks a chain of parts that must lie between `from` and `to`.
void checkChain(const MailBody* part, int64_t from, int64_t to, int depth) {
    require(depth <= kMaxNesting + 1);
    for (; part; part = part->next) {
        int64_t end = int64_t{part->bodyOffset} + part->bodySize;
        require(from <= part->offset && part->offset <= part->bodyOffset);
        require(part->bodySize >= 0 && end <= to);
        require(part->type >= kUnknown && part->type <= kVideo);
        require(++parts <= 10'002);
        checkChain(part->child, part->bodyOffset, end, depth + 1);
        from = end;
    }
}

void checkSummary(const MailInfo& m, string_view file, FILE* fp) {
    HeaderSummary summary;
    for (size_t n = std::min<size_t>(file.size(), 64);; n = std::min(n * 2, file.size())) {
        bool isWhole = n == file.size();
        if (readHeaderSummary(head(file, n), isWhole, summary) == HeaderResult::kDone) break;
        require(!isWhole);
    }
    require(shown(summary) == shown(m));
    rewind(fp);
    LineReader reader(fp, kHeaderLineLimit);
    readHeaderSummary(reader, summary);
    require(shown(summary) == shown(m) && reader.position() == m.bodyOffset);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    std::string file = fuzz::textOf(data, size);
    FILE* fp = fmemopen(file.data(), size, "r");
    OwnedMessage top(mailGetHeaderInfo(0, static_cast<int>(size), fp));
    checkSummary(*top, file, fp);
    mailParseBody(top.get(), fp);
    parts = 0;
    // The text before a uuencoded file counts from the start of the message.
    checkChain(top->body->child, 0, static_cast<int64_t>(size), 1);
    OwnedMessage nested(mailProcessing(0, static_cast<int>(size), "in@x", fp));
    require(nested && nested->body);
    fclose(fp);
    return 0;
}
