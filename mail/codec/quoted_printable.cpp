// The quoted-printable kernel. The encoder's state is the position on the output line, the
// decoder's the start of an escape that a piece of text did not complete. Runs of literal bytes are
// found and copied by vector code where the processor has it; everything else goes by table.
// Survives any bytes: escapes with other characters than digits decode to the low eight bits of the
// arithmetic.

#include "quoted_printable.h"

#include <cstring>

#include "mail/base/sink.h"
#include "qp_vector.h"

namespace attalven {

namespace {

/// What a character counts as a digit, whatever it is.
constexpr auto kDigitValues = [] {
    std::array<uint8_t, 256> values{};
    for (unsigned c = 0; c < values.size(); c++)
        values[c] = static_cast<uint8_t>(c > 64 ? (c & ~32u) - 55 : c - '0');
    return values;
}();

/// One step of the encoder.
struct EncodeRun {
    const QpFolding& folding;
    const char *end, *stop;  // of the text, and of what is to be encoded
    int position;
    const char* s;
    char* out;

    /// Bytes up to the fold or line end, with no branch on what they are: in text of two-byte
    /// characters nothing predicts where escapes begin and end.
    void takeText() {
        if (s == stop || position > folding.limit) return;
        // In locals: stores through `to` could reach the members.
        const char *at = s, *last = stop;
        char* to = out;
        int p = position, limit = folding.limit;
        const QpTokens& tokens = folding.tokens;
        if (folding.vector && static_cast<size_t>(end - at) >= kQpWindow &&
            tokens[byteOf(*at)].size == 1) {
            size_t n = std::min({qpCopyLiterals(at, to), static_cast<size_t>(last - at),
                                 static_cast<size_t>(limit + 1 - p)});
            at += n;
            to += n;
            p += static_cast<int>(n);
        }
        for (; at < last && p <= limit; at++) {
            QpToken token = tokens[byteOf(*at)];
            if (token.size == 0) break;
            memcpy(to, &token, sizeof token);
            to += token.size;
            p += token.size;
        }
        bool some = at > s;
        s = at;
        out = to;
        position = p;
        if (some) protectBlank();
    }

    /// A blank must not end a line: a soft break follows it.
    void protectBlank() {
        bool literalBlank = (s[-1] == ' ' || s[-1] == '\t') && out[-1] == s[-1];
        if (!literalBlank || (s < end && !isLineBreak(*s))) return;
        put("=\n");
        position = 0;
    }

    /// What takeText() stopped at: a fold, a line end, a byte that may stand beyond the fold.
    void takeOther() {
        char c = *s;
        if (position > (c >= 33 && c <= 60 ? folding.lowLimit : folding.limit)) {
            put(folding.fold);
            position = 0;
            return;
        }
        s++;
        if (c == '\r') return;
        *out++ = c;
        position = c == '\n' ? 0 : position + 1;
    }

    void put(string_view bytes) {
        memcpy(out, bytes.data(), bytes.size());
        out += bytes.size();
    }
};

}  // namespace

size_t qpEncode(const QpFolding& folding, int& position, string_view text, size_t take, char* out) {
    const char *s = text.data(), *end = s + text.size();
    EncodeRun run{folding, end, s + std::min(take, text.size()), position, s, out};
    for (run.takeText(); run.s < run.stop; run.takeText()) run.takeOther();
    position = run.position;
    return static_cast<size_t>(run.out - out);
}

namespace {

/// Takes the held start of an escape with the bytes of `text` that complete it, if they do.
bool completeHeld(QpDecoder& d, string_view& text) {
    while (d.heldSize < 3 && !(d.heldSize == 2 && isLineBreak(d.held[1]))) {
        if (text.empty()) return false;
        d.held[d.heldSize++] = text.front();
        text.remove_prefix(1);
    }
    return true;
}

/// What is left of `text` behind a soft break whose line end is the last byte before it.
string_view afterSoftBreak(const QpDecoder& d, char lineEnd, string_view text) {
    if (d.softBreak == QpSoftBreak::kSkipsBoth) return text;
    if (d.softBreak == QpSoftBreak::kEndsText) return {};
    if (lineEnd == '\n') return text;
    size_t end = text.find('\n');
    return end == string_view::npos ? string_view() : tail(text, end + 1);
}

char escaped(const char* digits) {
    return static_cast<char>(kDigitValues[byteOf(digits[0])] * 16 +
                             kDigitValues[byteOf(digits[1])]);
}

/// Decodes text that begins outside an escape; holds the start of one that ends it.
size_t decodeRun(QpDecoder& d, string_view text, char* out) {
    const char *s = text.data(), *end = s + text.size();
    char* o = out;
    // In place, vectors would store over what is still to be read.
    bool vector = d.vector && (out + text.size() <= s || out >= end);
    auto left = [&] { return static_cast<size_t>(end - s); };
    while (s < end) {
        if (*s != '=') {
            size_t n = vector ? qpCopyPlain(s, left(), o) : 0;
            for (; n < left() && s[n] != '='; n++) o[n] = s[n];
            o += n;
            s += n;
            continue;
        }
        if (vector) s += qpDecodeEscapes(s, left(), o);
        for (; left() > 2 && *s == '=' && !isLineBreak(s[1]); s += 3) *o++ = escaped(s + 1);
        if (s == end || *s != '=') continue;
        if (left() == 1 || !isLineBreak(s[1])) {
            d.heldSize = left();
            memcpy(d.held, s, left());
            break;
        }
        s = end - afterSoftBreak(d, s[1], {s + 2, left() - 2}).size();
    }
    return static_cast<size_t>(o - out);
}

}  // namespace

size_t qpDecode(QpDecoder& d, string_view text, char* out) {
    size_t n = 0;
    if (d.heldSize) {
        if (!completeHeld(d, text)) return 0;
        if (d.heldSize == 3)
            out[n++] = escaped(d.held + 1);
        else
            text = afterSoftBreak(d, d.held[1], text);
        d.heldSize = 0;
    }
    return n + decodeRun(d, text, out + n);
}

size_t qpDecodeEnd(QpDecoder& d, char* out) {
    memcpy(out, d.held, d.heldSize);
    size_t n = d.heldSize;
    d.heldSize = 0;
    return n;
}

}  // namespace attalven
