#ifndef ATTALVEN_MAIL_PARSE_HEADER_LINES_H
#define ATTALVEN_MAIL_PARSE_HEADER_LINES_H

// Unfolding of header blocks (RFC 5322 section 2.2.3), one set of rules for message headers and
// part headers, whether the lines come from a stream or from memory. A source of lines has
// `bool next(LinePiece&)` and says whether its texts outlive the next call.

#include <cstring>

#include "mail/base/line_reader.h"
#include "mail/base/text.h"

namespace attalven {

/// Message headers are read in pieces of at most 5119 bytes, part headers in pieces of 29999.
inline constexpr size_t kHeaderLineLimit = 5120;
inline constexpr size_t kPartHeaderLineLimit = 30000;

/// The lines of a stream that begin before `end`.
struct StreamLines {
    static constexpr bool kTextsLast = false;
    LineReader& reader;
    int64_t end = INT64_MAX;

    bool next(LinePiece& piece) { return reader.position() < end && reader.next(piece); }
};

/// The lines of a window on a file, cut as LineReader cuts them. Unless the window reaches to the
/// end of the file, a line that may go on behind the window is not given: `ranOut` is set instead.
struct WindowLines {
    static constexpr bool kTextsLast = true;
    string_view window;
    bool isWholeFile;
    size_t taken = 0;
    bool ranOut = false;

    bool next(LinePiece& piece) {
        string_view rest = head(tail(window, taken), kHeaderLineLimit - 1);
        const void* lf = rest.empty() ? nullptr : memchr(rest.data(), '\n', rest.size());
        if (lf) {
            rest = head(rest, static_cast<size_t>(static_cast<const char*>(lf) - rest.data()) + 1);
        } else if (rest.size() < kHeaderLineLimit - 1 && !isWholeFile) {
            ranOut = true;
            return false;
        }
        piece.text = rest;
        taken += rest.size();
        return !rest.empty();
    }
};

/// The header that is being collected: a view while it is one lasting line, a copy otherwise. A
/// header that memory cannot hold is lost as a whole, but still counts as pending.
class PendingHeader {
  public:
    bool empty() const { return view_.empty() && !lost_; }
    bool lost() const { return lost_; }
    string_view view() const { return view_; }

    template <bool kTextsLast>
    void start(string_view line) {
        lost_ = false;
        view_ = line;
        if constexpr (!kTextsLast) {
            joined_.clear();
            join(line);
        }
    }
    void append(string_view line) {
        if (line.empty() || lost_) return;
        if (joined_.view().data() != view_.data() || joined_.size() != view_.size()) {
            joined_.clear();
            joined_.append(view_);
        }
        join(line);
    }

  private:
    void join(string_view line) {
        joined_.append(line);
        if (joined_.failed()) {
            joined_ = Text();
            lost_ = true;
        }
        view_ = joined_.view();
    }

    string_view view_;
    Text joined_;
    bool lost_ = false;
};

/// Whether a line that begins with a blank ends the block: without its blanks, wherever they stand,
/// it is an empty line.
inline bool isBlankLine(string_view line) {
    auto behindBlanks = [](string_view s) { return tail(s, s.find_first_not_of(" \t")); };
    line = behindBlanks(line);
    if (line.starts_with('\r')) line = behindBlanks(tail(line, 1));
    return line == "\n";
}

/// Gives each header of a block to `handle`, unfolded: continuation lines trimmed and appended with
/// nothing in between. Ends behind the empty (or blank) line, or when `handle` returns false,
/// behind the line that showed the header to be complete. Empty lines before the first header are
/// skipped; a header still pending at the end of the lines is dropped.
template <typename Lines, typename Handle>
void unfoldHeaders(Lines& lines, Handle&& handle) {
    PendingHeader pending;
    for (LinePiece piece; lines.next(piece);) {
        string_view line = piece.text;
        bool continues = line.front() == ' ' || line.front() == '\t';
        if (continues && !isBlankLine(line)) {
            pending.append(trim(line));
            continue;
        }
        bool ends = continues || (isEmptyLine(line) && !pending.empty());
        if (!pending.empty() && !pending.lost() && !handle(pending.view())) return;
        if (ends) return;
        pending.template start<Lines::kTextsLast>(trim(line));
    }
}

/// The value of a header: the text behind its first colon without white space around it, up to the
/// first NUL. Nothing when there is no colon.
inline std::optional<string_view> headerValue(string_view header) {
    std::optional<string_view> value = valueAfter(header, ':');
    if (value) value = trimTail(head(*value, value->find('\0')));
    return value;
}

}  // namespace attalven

#endif
