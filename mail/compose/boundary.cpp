// The choice of a boundary. Content that is written without an encoding, raw texts and forwarded
// messages, may hold any line; everything else cannot hold a delimiter.

#include "boundary.h"

#include "attachment_ref.h"
#include "mail/base/line_reader.h"
#include "mail/compose.h"
#include "text_part.h"

namespace attalven {

namespace {

/// Each draw is looked for in all of the content; more of them there are no accident.
constexpr int kForeseeableDraws = 8;

bool contains(string_view text, string_view token) {
    return text.find(token) != string_view::npos;
}

bool fileContains(const char* fileName, string_view token) {
    OwnedFile file = openAttachment(viewOf(fileName));
    LineReader reader(file.get(), LineReader::kBlock);
    for (string_view block; (block = reader.peek(LineReader::kBlock)).size() >= token.size();) {
        if (contains(block, token)) return true;
        reader.skip(block.size() - token.size() + 1);
    }
    return false;
}

bool occurs(const MailBody* parts, string_view token, int bodyEncoding, int depth) {
    for (; parts && depth < kMaxNesting; parts = parts->next) {
        bool found = isTextInMemory(*parts)
                         ? bodyEncoding == kRaw && contains(viewOf(parts->content), token)
                         : parts->type == kMessage && fileContains(parts->fileName, token);
        if (found || occurs(parts->child, token, bodyEncoding, depth + 1)) return true;
    }
    return false;
}

}  // namespace

Text newBoundary(const MailBody* parts, int bodyEncoding, const Boundaries* around) {
    auto isTaken = [&](string_view text) {
        for (const Boundaries* b = around; b; b = b->outer)
            if (b->text == text) return true;
        return occurs(parts, text, bodyEncoding, 0);
    };
    Text boundary;
    const char* drawn = mailGenBoundary();
    for (int draws = 1;; draws++) {
        boundary.clear();
        boundary.append("----=_NextPart_");
        boundary.append(drawn);
        if (draws > kForeseeableDraws || boundary.failed() || !isTaken(boundary.view()))
            return boundary;
        drawn = draws < kForeseeableDraws ? redrawBoundary() : drawSecretBoundary();
    }
}

}  // namespace attalven
