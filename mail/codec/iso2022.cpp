// The 7-bit ISO-2022 encodings of mail, and EUC-JP, by their rules alone: no tables, no converter,
// so that damaged text still shows what it holds. The only state is the mode, ASCII or two-byte.
// Survives escapes and pairs cut by the end of the text, and bytes that a mode does not expect:
// output is never longer than input.

#include "iso2022.h"

#include <cstring>

#include "mail/codec.h"
#include "part_stream.h"

namespace attalven {

namespace {

constexpr char kEscape = '\x1b', kShiftOut = '\x0e', kShiftIn = '\x0f';
constexpr string_view kAscii = "\x1b(B", kRoman = "\x1b(J", kKanji78 = "\x1b$@", kKanji = "\x1b$B";

constexpr bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

/// Writes a JIS X 0208 pair as Shift-JIS.
char* putKanji(char first, char second, char* out) {
    int c1 = byteOf(first), c2 = byteOf(second);
    jis2sjis(&c1, &c2);
    *out++ = static_cast<char>(c1);
    *out++ = static_cast<char>(c2);
    return out;
}

int finish(char* dst, const char* end) {
    dst[end - dst] = 0;
    return clampInt(end - dst);
}

}  // namespace

size_t decodeIso2022Kr(bool& korean, string_view text, char* out) {
    char* o = out;
    while (!text.empty()) {
        char c = text.front();
        if (c == kEscape && text.starts_with(kKoreanDesignator)) {
            text.remove_prefix(kKoreanDesignator.size());
            continue;
        }
        if (c == kShiftOut || c == kShiftIn)
            korean = c == kShiftOut;
        else
            *o++ = korean && !isBlank(c) ? static_cast<char>(byteOf(c) | 0x80) : c;
        text.remove_prefix(1);
    }
    return static_cast<size_t>(o - out);
}

}  // namespace attalven

using namespace attalven;

int SearchISO2022KRDesignator(const char* text) {
    if (!text) return 0;
    string_view line(text, strcspn(text, "\n"));
    return line.find(kKoreanDesignator) != string_view::npos;
}

int SearchISO2022JPDesignator(const char* text) {
    constexpr string_view kDesignators[] = {kAscii, kRoman, kKanji78, kKanji};
    for (string_view s = viewOf(text); (s = tail(s, s.find(kEscape))).size() >= 3; s = tail(s, 1))
        for (int kind = 0; kind < 4; kind++)
            if (s.starts_with(kDesignators[kind])) return kind;
    return 0;
}

int DecodeISO2022KR(char* dst, const char* text) {
    if (!dst) return 0;
    bool korean = false;
    return finish(dst, dst + decodeIso2022Kr(korean, viewOf(text), dst));
}

int DecodeISO2022JP(char* dst, const char* text) {
    if (!dst) return 0;
    char* out = dst;
    bool kanji = false;
    for (string_view s = viewOf(text); !s.empty();) {
        size_t taken = 1;
        if (s.starts_with(kKanji) || s.starts_with(kAscii)) {
            kanji = s[1] == '$';
            taken = 3;
        } else if (!kanji || isBlank(s[0]) || s.size() == 1) {
            *out++ = s[0];
        } else {
            out = putKanji(s[0], s[1], out);
            taken = 2;
        }
        s = tail(s, taken);
    }
    return finish(dst, out);
}

void jis2sjis(int* c1, int* c2) {
    if (!c1 || !c2) return;
    int64_t first = *c1, second = *c2;
    *c1 = static_cast<int>((first + 1) / 2 + (first <= 0x5E ? 0x70 : 0xB0));
    if (first % 2 == 0)
        second += 0x7E;
    else
        second += second <= 0x5F ? 0x1F : 0x20;
    *c2 = static_cast<int>(second);
}

int DecodeEucJP2ShiftJIS(char* dst, const char* text) {
    if (!dst) return 0;
    auto within = [](char c, unsigned low, unsigned high) {
        return byteOf(c) >= low && byteOf(c) <= high;
    };
    char* out = dst;
    for (string_view s = viewOf(text); !s.empty();) {
        char next = s.size() > 1 ? s[1] : '\0';
        size_t taken = 2;
        if (within(s[0], 0xA1, 0xFE) && within(next, 0xA1, 0xFE)) {
            out = putKanji(static_cast<char>(s[0] & 0x7F), static_cast<char>(next & 0x7F), out);
        } else if (byteOf(s[0]) == 0x8E && within(next, 0xA1, 0xDF)) {
            *out++ = next;
        } else {
            *out++ = s[0];
            taken = 1;
        }
        s = tail(s, taken);
    }
    return finish(dst, out);
}

void strmDecodeISO2022KR(FILE* out, FILE* in, int length) {
    if (!out || !in) return;
    BlockWriter writer(out);
    LineReader lines(in, kStreamLine);
    int64_t left = length;
    bool designated = false, korean = false;
    for (LinePiece line; left > 0 && !writer.failed() && lines.next(line);) {
        left -= static_cast<int64_t>(line.text.size());
        if (line.text.find(kKoreanDesignator) != string_view::npos) designated = true;
        if (line.startsLine) korean = false;  // RFC 1557: each line begins in ASCII
        if (char* to = designated ? writer.room(line.text.size()) : nullptr)
            writer.commit(decodeIso2022Kr(korean, line.text, to));
        else
            writer.write(line.text);
    }
}
