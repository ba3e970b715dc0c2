#ifndef ATTALVEN_MAIL_BASE_SINK_H
#define ATTALVEN_MAIL_BASE_SINK_H

// Texts of unknown origin on their way into a header line, a command line or a parameter: none may
// end its line and start another one. Each function appends `s` to `out`, which has
// append(string_view) (Text, BoundedText, OutStream); text without the bytes in question passes
// unchanged.

#include "ascii.h"

namespace attalven {

constexpr bool isLineBreak(char c) {
    return c == '\n' || c == '\r';
}

/// The pieces of `s` between the bytes for which `drop` holds.
template <typename Out, typename Drop>
void appendWithout(Out& out, string_view s, Drop drop) {
    while (!s.empty()) {
        size_t n = static_cast<size_t>(std::find_if(s.begin(), s.end(), drop) - s.begin());
        out.append(head(s, n));
        s = tail(s, n + 1);
    }
}

/// One line: line breaks are dropped. For commands, envelopes and words of a line.
template <typename Out>
void appendOneLine(Out& out, string_view s) {
    appendWithout(out, s, isLineBreak);
}

/// Whether a header field may be folded before `rest`: a blank, and text before the next break (RFC
/// 5322 section 2.2.3; a line of blanks alone would be taken for the end of the header by many).
constexpr bool continuesField(string_view rest) {
    if (rest.empty() || (rest.front() != ' ' && rest.front() != '\t')) return false;
    size_t text = rest.find_first_not_of(" \t");
    return text != string_view::npos && !isLineBreak(rest[text]);
}

/// The value of a header field: a line break that folds it stays, as LF; any other is dropped.
template <typename Out>
void appendHeaderFold(Out& out, string_view s) {
    while (!s.empty()) {
        size_t n = static_cast<size_t>(std::find_if(s.begin(), s.end(), isLineBreak) - s.begin());
        out.append(head(s, n));
        s = tail(s, n);
        bool broken = false;
        for (; !s.empty() && isLineBreak(s.front()); s.remove_prefix(1)) broken = true;
        if (broken && continuesField(s)) out.append("\n");
    }
}

/// The inside of a quoted string, such as a display name or a file name: folds stay, `"` and `\`
/// are escaped (RFC 5322 section 3.2.4).
template <typename Out>
void appendQuoted(Out& out, string_view s) {
    struct Escaping {
        Out& out;
        void append(string_view piece) {
            while (!piece.empty()) {
                size_t n = std::min(piece.find_first_of("\"\\"), piece.size());
                out.append(head(piece, n));
                if (n < piece.size()) out.append("\\");
                if (n < piece.size()) out.append(string_view(&piece[n], 1));
                piece = tail(piece, n + 1);
            }
        }
    } escaping{out};
    appendHeaderFold(escaping, s);
}

/// The inside of a quoted parameter that readers compare as it stands (boundary, charset): line
/// breaks and `"` are dropped.
template <typename Out>
void appendPlainParameter(Out& out, string_view s) {
    appendWithout(out, s, [](char c) { return isLineBreak(c) || c == '"'; });
}

}  // namespace attalven

#endif
