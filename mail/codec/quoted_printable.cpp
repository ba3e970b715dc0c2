// The quoted-printable kernel. The encoder's state is the position on the output line, the
// decoder's the start of an escape that a piece of text did not complete. Runs of literal bytes are
// found and copied 16 at a time where the processor has SSE2; everything else goes by table.
// Survives any bytes: escapes with other characters than digits decode to the low eight bits of the
// arithmetic.

#include "quoted_printable.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace attalven {

namespace {

/// "=XX" of every byte, and a fourth byte so that one store writes it.
constexpr auto kEscapes = [] {
    std::array<std::array<char, 4>, 256> escapes{};
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (size_t c = 0; c < escapes.size(); c++)
        escapes[c] = {'=', kDigits[c >> 4], kDigits[c & 15], '\0'};
    return escapes;
}();

/// What a character counts as a digit, whatever it is.
constexpr auto kDigitValues = [] {
    std::array<uint8_t, 256> values{};
    for (unsigned c = 0; c < values.size(); c++)
        values[c] = static_cast<uint8_t>(c > 64 ? (c & ~32u) - 55 : c - '0');
    return values;
}();

char escaped(char high, char low) {
    return static_cast<char>(kDigitValues[byteOf(high)] << 4 | kDigitValues[byteOf(low)]);
}

template <typename Word>
void copyEnds(char* out, const char* s, size_t n) {
    Word first, last;
    memcpy(&first, s, sizeof first);
    memcpy(&last, s + n - sizeof last, sizeof last);
    memcpy(out, &first, sizeof first);
    memcpy(out + n - sizeof last, &last, sizeof last);
}

/// Copies fewer than 16 bytes without a call; the areas may overlap.
void copyFew(char* out, const char* s, size_t n) {
    if (n >= 8) return copyEnds<uint64_t>(out, s, n);
    if (n >= 4) return copyEnds<uint32_t>(out, s, n);
    if (n >= 2) return copyEnds<uint16_t>(out, s, n);
    if (n == 1) *out = *s;
}

bool isLineEnd(char c) {
    return c == '\n' || c == '\r';
}

#if defined(__SSE2__)

constexpr size_t kWide = 16;

__m128i loadWide(const char* s) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
}

__m128i between(__m128i v, char above, char below) {
    return _mm_and_si128(_mm_cmpgt_epi8(v, _mm_set1_epi8(above)),
                         _mm_cmplt_epi8(v, _mm_set1_epi8(below)));
}

/// One bit for each byte that is not literal and no blank. Bytes of 0x80 and above are negative.
unsigned specialBytes(__m128i v) {
    __m128i low = between(v, ' ' - 1, '='), high = between(v, 'G', 127);
    __m128i tab = _mm_cmpeq_epi8(v, _mm_set1_epi8('\t'));
    return ~static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(low, high), tab))) &
           0xffff;
}

unsigned equalsSigns(__m128i v) {
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_set1_epi8('='))));
}

/// Copies bytes of `s` until `stops` gives one a bit, at most `most` (of them all, or as many as
/// allow another look at kWide bytes).
template <unsigned (*stops)(__m128i)>
size_t copyWide(string_view s, size_t most, char* out) {
    size_t n = 0;
    while (n < most && s.size() - n >= kWide) {
        __m128i v = loadWide(s.data() + n);
        unsigned stop = stops(v);
        size_t run = std::min(most - n, stop ? static_cast<size_t>(__builtin_ctz(stop)) : kWide);
        if (run < kWide) {
            copyFew(out + n, s.data() + n, run);
            return n + run;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + n), v);
        n += kWide;
    }
    return n;
}

#endif

/// One step of the encoder.
struct EncodeRun {
    const QpFolding& folding;
    int position;
    string_view text;
    const char* s;
    char* out;

    QpClass classOf(char c) const { return folding.classes[byteOf(c)]; }
    bool endsLine(const char* at) const {
        return at == text.data() + text.size() || isLineEnd(*at);
    }

    /// Literal bytes and blanks inside a line, up to its fold. Gives how many were taken.
    size_t takeLiterals(const char* stop) {
        if (position > folding.limit) return 0;
        size_t most = std::min(static_cast<size_t>(stop - s),
                               static_cast<size_t>(folding.limit - position) + 1);
        size_t n = 0;
#if defined(__SSE2__)
        if (folding.vector)
            n = copyWide<specialBytes>(tail(text, static_cast<size_t>(s - text.data())), most, out);
#endif
        for (; n < most; n++) {
            QpClass c = classOf(s[n]);
            if (c != QpClass::kLow && c != QpClass::kHigh && c != QpClass::kBlank) break;
            out[n] = s[n];
        }
        if (n && classOf(s[n - 1]) == QpClass::kBlank && endsLine(s + n)) n--;
        s += n;
        out += n;
        position += static_cast<int>(n);
        return n;
    }

    void takeEscapes(const char* stop) {
        for (; s < stop && position <= folding.limit && classOf(*s) == QpClass::kEscape; s++) {
            memcpy(out, kEscapes[byteOf(*s)].data(), 4);
            out += 3;
            position += 3;
        }
    }

    void put(string_view bytes) {
        memcpy(out, bytes.data(), bytes.size());
        out += bytes.size();
    }

    /// One byte by the full rules.
    void takeByte() {
        QpClass c = classOf(*s);
        if (position > (c == QpClass::kLow ? folding.lowLimit : folding.limit)) {
            put(folding.fold);
            position = 0;
        }
        char byte = *s++;
        switch (c) {
            case QpClass::kEscape:
                put({kEscapes[byteOf(byte)].data(), 3});
                position += 3;
                return;
            case QpClass::kReturn:
                return;
            case QpClass::kLineFeed:
                *out++ = byte;
                position = 0;
                return;
            case QpClass::kBlank:
                *out++ = byte;
                position++;
                if (!endsLine(s)) return;
                put("=\n");
                position = 0;
                return;
            case QpClass::kLow:
            case QpClass::kHigh:
                *out++ = byte;
                position++;
        }
    }
};

}  // namespace

size_t qpEncode(const QpFolding& folding, int& position, string_view text, size_t take, char* out) {
    EncodeRun run{folding, position, text, text.data(), out};
    const char* stop = text.data() + std::min(take, text.size());
    while (run.s < stop) {
        if (run.takeLiterals(stop) == 0) run.takeByte();
        run.takeEscapes(stop);
    }
    position = run.position;
    return static_cast<size_t>(run.out - out);
}

namespace {

/// Copies bytes up to the first "=". Gives how many.
size_t copyPlain(const QpDecoder& d, string_view s, char* out) {
    size_t n = 0;
#if defined(__SSE2__)
    if (d.vector) n = copyWide<equalsSigns>(s, s.size(), out);
#endif
    for (; n < s.size() && s[n] != '='; n++) out[n] = s[n];
    return n;
}

/// Takes the held start of an escape with the bytes of `text` that complete it, if they do.
bool completeHeld(QpDecoder& d, string_view& text) {
    while (d.heldSize < 3 && !(d.heldSize == 2 && isLineEnd(d.held[1]))) {
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

}  // namespace

size_t qpDecode(QpDecoder& d, string_view text, char* out) {
    char* o = out;
    auto takeEscape = [&](char high, char low) {
        *o = escaped(high, low);
        if (*o != '\0' || !d.dropNuls) o++;
    };
    if (d.heldSize) {
        if (!completeHeld(d, text)) return 0;
        if (d.heldSize == 3)
            takeEscape(d.held[1], d.held[2]);
        else
            text = afterSoftBreak(d, d.held[1], text);
        d.heldSize = 0;
    }
    while (!text.empty()) {
        if (text.front() != '=') {
            size_t n = copyPlain(d, text, o);
            o += n;
            text.remove_prefix(n);
        } else if (text.size() > 1 && isLineEnd(text[1])) {
            text = afterSoftBreak(d, text[1], tail(text, 2));
        } else if (text.size() > 2) {
            takeEscape(text[1], text[2]);
            text.remove_prefix(3);
        } else {
            d.heldSize = text.size();
            copyFew(d.held, text.data(), text.size());
            break;
        }
    }
    return static_cast<size_t>(o - out);
}

size_t qpDecodeEnd(QpDecoder& d, char* out) {
    copyFew(out, d.held, d.heldSize);
    size_t n = d.heldSize;
    d.heldSize = 0;
    return n;
}

}  // namespace attalven
