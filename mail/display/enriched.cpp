// Text/enriched bodies as plain text (RFC 1896). State: the last character handled, which tells a
// single line break (a space) from further ones (kept), and whether a parameter is being skipped.
// Lines come in pieces of at most 1023 characters; a tag that the end of a piece cuts waits for the
// next piece. One that does not fit a piece is not looked for beyond its end, so unclosed ones cost
// no more than that.

#include "mail/base/line_reader.h"
#include "mail/display.h"

namespace attalven {

namespace {

constexpr size_t kLineLimit = 1024;

/// A piece that ends inside its line, without the tag that it cuts; a piece of nothing but such a
/// tag whole. Of a run of "<" each two are a literal one.
string_view withoutCutTag(const LinePiece& piece) {
    string_view s = piece.text;
    size_t at = s.rfind('<');
    if (piece.endsLine() || at == string_view::npos || s.find('>', at) != string_view::npos)
        return s;
    size_t run = 1;
    while (run <= at && s[at - run] == '<') run++;
    return run % 2 && at > 0 ? head(s, at) : s;
}

class EnrichedPrinter {
  public:
    void print(string_view piece) {
        while (!piece.empty()) {
            if (inParameter_)
                piece = skipParameter(piece);
            else if (piece.front() == '<')
                piece = command(piece);
            else
                piece = character(piece);
        }
    }

  private:
    string_view character(string_view s) {
        char c = s.front();
        putchar_unlocked(c == '\n' && last_ != '\n' ? ' ' : c);
        last_ = c;
        return tail(s, 1);
    }

    string_view command(string_view s) {
        last_ = '<';
        if (s.starts_with("<<")) {
            putchar_unlocked('<');
            return tail(s, 2);
        }
        if (startsWithNoCase(s, "<param>")) {
            inParameter_ = true;
            return tail(s, 7);
        }
        size_t end = s.find('>');
        return end == string_view::npos ? string_view() : tail(s, end + 1);
    }

    string_view skipParameter(string_view s) {
        constexpr string_view kEnd = "</param>";
        size_t at = findNoCase(s, kEnd);
        if (at == string_view::npos) return {};
        inParameter_ = false;
        return tail(s, at + kEnd.size());
    }

    char last_ = 0;
    bool inParameter_ = false;
};

}  // namespace
}  // namespace attalven

using namespace attalven;

void mailTextEnrichedHandler(MailBody* part, FILE** fp) {
    if (!part || !fp || !*fp) return;
    LineReader lines(*fp, kLineLimit);
    EnrichedPrinter printer;
    LinePiece piece;
    for (int64_t left = part->bodySize; left > 0 && lines.next(piece);) {
        string_view text = withoutCutTag(piece);
        lines.seek(piece.offset + static_cast<int64_t>(text.size()));
        left -= static_cast<int64_t>(text.size());
        printer.print(text);
    }
}
