// The transfer encoders: thin rows over the kernels, from texts to buffers, new texts and streams
// and from streams to streams, and the identity transfer. The only state is the line position of
// each quoted-printable encoder, which lives for the process. Survives any input, parts whose
// length is wrong and outputs that take no more, in constant memory but for the result.

#include <cstring>
#include <numeric>

#include "base64.h"
#include "mail/codec.h"
#include "part_stream.h"
#include "quoted_printable.h"

namespace attalven {

namespace {

constexpr int kLine = 76;            // characters of a line of an encoded body
constexpr int kTextLine = 56;        // and of one in a new text
constexpr size_t kRead = 57 * 4096;  // bytes of whole lines, and of whole disk blocks
constexpr size_t kSlice = 57 * 256;  // bytes per step: whole lines, their encoded form in one block

/// The line position of EncodeQP, strmEncodeQP and strmDestEncodeQP.
int x_pos = 0;

enum { kTextToBuffer = 1, kTextToStream = 2, kStreamToStream = 3 };

/// A line feed follows when the number of characters, which grows by fours, is a multiple of
/// `lineLen`.
Base64Encoder base64Encoder(int lineLen) {
    return {static_cast<size_t>(lineLen ? std::lcm(int64_t{4}, int64_t{lineLen}) : 0)};
}

int base64Count(uint64_t bytes) {
    return clampInt(static_cast<int64_t>(base64Length(bytes)));
}

int encodeToBuffer(char* dst, string_view text, Base64Encoder e) {
    dst[base64Encode(e, text, dst)] = 0;
    return base64Count(text.size());
}

void writeBase64(BlockWriter& writer, Base64Encoder& e, string_view bytes) {
    for (; !bytes.empty() && !writer.failed(); bytes = tail(bytes, kSlice))
        if (char* out = writer.room(base64Room(e, kSlice)))
            writer.commit(base64Encode(e, head(bytes, kSlice), out));
}

int encodeStream(FILE* out, FILE* in, Base64Encoder e) {
    OwnedText block(static_cast<char*>(malloc(kRead)));
    if (!block) return 0;
    BlockWriter writer(out);
    uint64_t total = 0;
    for (size_t got = kRead; got == kRead && !writer.failed(); total += got) {
        got = fread(block.get(), 1, kRead, in);
        writeBase64(writer, e, {block.get(), got});
    }
    return base64Count(total);
}

int encodeToStream(FILE* out, string_view text, Base64Encoder e) {
    BlockWriter writer(out);
    writeBase64(writer, e, text);
    return base64Count(text.size());
}

/// Calls use(encoded piece) for the text in quoted-printable.
template <typename Use>
void forEncodedSlices(string_view text, Use use) {
    constexpr size_t kBytes = 4096;
    const QpFolding folding = qpStreamFolding();
    char piece[4 * kBytes];  // more than qpRoom()
    for (; !text.empty(); text = tail(text, kBytes))
        use({piece, qpEncode(folding, x_pos, text, kBytes, piece)});
}

}  // namespace

}  // namespace attalven

using namespace attalven;

int funcEncodeBase64(void* dst, const void* src, int lineLen, int mode) {
    if (!dst || !src) return 0;
    Base64Encoder e = base64Encoder(lineLen);
    const char* text = static_cast<const char*>(src);
    FILE* out = static_cast<FILE*>(dst);
    switch (mode) {
        case kTextToBuffer:
            return encodeToBuffer(static_cast<char*>(dst), text, e);
        case kTextToStream:
            return encodeToStream(out, text, e);
        case kStreamToStream:
            return encodeStream(out, static_cast<FILE*>(const_cast<void*>(src)), e);
        default:
            return 0;
    }
}

int EncodeBase64(char* dst, const char* text) {
    return viewOf(text).empty() ? 0 : funcEncodeBase64(dst, text, kLine, kTextToBuffer);
}

int strmEncodeBase64(FILE* out, FILE* in) {
    return funcEncodeBase64(out, in, kLine, kStreamToStream);
}

int strmDestEncodeBase64(FILE* out, const char* text) {
    return viewOf(text).empty() ? 0 : funcEncodeBase64(out, text, kLine, kTextToStream);
}

char* mailEncodeBase64(const char* text) {
    if (viewOf(text).empty()) return nullptr;
    Base64Encoder e{kTextLine};
    Text result;
    appendSlices(result, text, kSlice, base64Room(e, kSlice), [&](string_view rest, char* out) {
        return base64Encode(e, head(rest, kSlice), out);
    });
    return result.take();
}

int EncodeQP(char* dst, const char* text) {
    if (!dst) return 0;
    char* end = dst;
    forEncodedSlices(viewOf(text), [&](string_view encoded) {
        memcpy(end, encoded.data(), encoded.size());
        end += encoded.size();
    });
    *end = 0;
    return clampInt(end - dst);
}

int strmDestEncodeQP(FILE* out, const char* text) {
    if (!out) return 0;
    BlockWriter writer(out);
    int64_t total = 0;
    forEncodedSlices(viewOf(text), [&](string_view encoded) {
        writer.write(encoded);
        total += static_cast<int64_t>(encoded.size());
    });
    return clampInt(total);
}

void strmEncodeQP(FILE* out, FILE* in, int length) {
    const QpFolding folding = qpStreamFolding();
    convertPart(out, in, length, qpRoom(folding, kRun), [&](string_view run, char* to) {
        return qpEncode(folding, x_pos, run, run.size(), to);
    });
}

char* mailEncodeQP(const char* text) {
    static int x_pos = 0;
    if (viewOf(text).empty()) return nullptr;
    const QpFolding folding = qpTextFolding();
    Text result;
    appendSlices(result, text, kSlice, qpRoom(folding, kSlice), [&](string_view rest, char* out) {
        return qpEncode(folding, x_pos, rest, kSlice, out);
    });
    return result.take();
}

void strmXBit(FILE* out, FILE* in, int length) {
    if (!out || !in) return;
    BlockWriter writer(out);
    size_t left = static_cast<size_t>(std::max(length, 0)), got = 1;
    while (left > 0 && got > 0) {
        size_t n = std::min(left, BlockWriter::kBlock);
        char* to = writer.room(n);
        if (!to) return;
        got = fread(to, 1, n, in);
        writer.commit(got);
        left -= got;
    }
}

int strmDestXBit(FILE* out, const char* text) {
    if (!out || !text) return 0;
    BlockWriter(out).write(text);
    return clampInt(static_cast<int64_t>(strlen(text)));
}
