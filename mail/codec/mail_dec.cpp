// The transfer decoders: thin rows over the kernels, from texts to buffers and new texts and from
// parts of a file to streams. No state outlives a call. Survives any text, lines that announce more
// than they carry, parts whose length is wrong and outputs that take no more.

#include <cstring>

#include "base64.h"
#include "mail/codec.h"
#include "part_stream.h"
#include "quoted_printable.h"
#include "uuencode.h"

namespace attalven {

namespace {

constexpr size_t kSlice = 12 * 1024;  // bytes of text per step

int finish(char* dst, size_t written, size_t length) {
    dst[written] = 0;
    return clampInt(static_cast<int64_t>(length));
}

/// Decoded groups as texts: what follows a NUL byte in a group is left out. Gives the new length.
size_t cutGroupsAtNul(char* bytes, size_t size) {
    if (!memchr(bytes, 0, size)) return size;
    size_t kept = 0;
    for (size_t i = 0; i < size; i += 3) {
        size_t n = strnlen(bytes + i, 3);
        memmove(bytes + kept, bytes + i, n);
        kept += n;
    }
    return kept;
}

int decodeQpLine(char* dst, string_view text) {
    QpDecoder d{QpSoftBreak::kEndsText};
    size_t n = qpDecode(d, text, dst);
    n += qpDecodeEnd(d, dst + n);
    return finish(dst, n, n);
}

/// -1 for other characters than digits and upper-case letters.
int strictDigit(char c) {
    return isDigit(c) ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

}  // namespace

}  // namespace attalven

using namespace attalven;

int DecodeBase64(char* dst, const char* text) {
    if (!dst) return 0;
    Base64Decoder d;
    Base64Decoded n = base64Decode(d, viewOf(text), dst);
    return finish(dst, n.written, n.counted);
}

char* mailDecodeBase64(const char* text) {
    if (viewOf(text).empty()) return nullptr;
    Base64Decoder d;
    Text result;
    appendSlices(result, text, kSlice, base64DecodedRoom(kSlice), [&](string_view rest, char* out) {
        return cutGroupsAtNul(out, base64Decode(d, head(rest, kSlice), out).written);
    });
    return result.take();
}

void strmDecodeBase64(FILE* out, FILE* in, int length) {
    Base64Decoder d{true};
    convertPart(out, in, length, base64DecodedRoom(kRun),
                [&](string_view run, char* to) { return base64Decode(d, run, to).counted; });
}

int DecodeQP(char* dst, const char* text) {
    return dst ? decodeQpLine(dst, viewOf(text)) : 0;
}

char* mailDecodeQP(const char* text) {
    if (viewOf(text).empty()) return nullptr;
    QpDecoder d{QpSoftBreak::kSkipsBoth};
    Text result;
    appendSlices(result, text, kSlice, kSlice + 2, [&](string_view rest, char* out) {
        char* end = out + qpDecode(d, head(rest, kSlice), out);
        return static_cast<size_t>(std::remove(out, end, '\0') - out);
    });
    if (char* out = result.room(2)) result.commit(qpDecodeEnd(d, out));
    return result.take();
}

void strmDecodeQP(FILE* out, FILE* in, int length) {
    QpDecoder d{QpSoftBreak::kEndsLine};
    BlockWriter writer(out);
    convertPart(writer, in, length, kRun + 2,
                [&](string_view run, char* to) { return qpDecode(d, run, to); });
    if (char* to = writer.room(2)) writer.commit(qpDecodeEnd(d, to));
}

int DecodeQP_ORG(char* dst, const char* text) {
    if (!dst) return 0;
    char* out = dst;
    for (string_view s = viewOf(text); !s.empty();) {
        size_t taken = 1;
        char byte = s[0] == '_' ? ' ' : s[0];
        if (s[0] == '=' && s.size() > 1 && (s[1] == '\n' || s[1] == '\r')) {
            s = tail(s, 2);
            continue;
        }
        if (s[0] == '=' && s.size() > 2) {
            int high = strictDigit(s[1]), low = strictDigit(s[2]);
            int value = low < 0 ? 255 : (high < 0 ? 15 : high) << 4 | low;
            if (value != 0) {
                byte = static_cast<char>(value);
                taken = 3;
            }
        }
        *out++ = byte;
        s = tail(s, taken);
    }
    size_t n = static_cast<size_t>(out - dst);
    return finish(dst, n, n);
}

int DecodeUU(char* dst, const char* line) {
    char bytes[kUuBytes];
    string_view all = viewOf(line);
    size_t announced = uuDecodeLine(all, bytes);
    if (!dst || announced == 0) return 0;
    size_t n = std::min(announced, all.size());
    memcpy(dst, bytes, n);
    return finish(dst, n, announced);
}

void strmDecodeUU(FILE* out, FILE* in, int length) {
    if (!out || !in) return;
    BlockWriter writer(out);
    LineReader lines(in, kStreamLine);
    int64_t left = length;
    for (LinePiece line; left > 0 && !writer.failed() && lines.next(line);) {
        if (line.startsLine && line.text.starts_with("begin")) continue;
        if (line.startsLine && line.text.starts_with("end")) break;
        left -= static_cast<int64_t>(line.text.size());
        char bytes[kUuBytes];
        writer.write({bytes, uuDecodeLine(line.text, bytes)});
    }
}
