// Oracles of the codecs: what is encoded decodes to itself, results stay in exact-size areas,
// vector and portable paths agree, and a stream form gives what its buffer form gives line by line.

#include <algorithm>
#include <memory>

#include "fuzz.h"
#include "mail/codec.h"
#include "mail/codec/base64.h"
#include "mail/codec/quoted_printable.h"

using namespace attalven;
using fuzz::require, fuzz::taken;

namespace {

using BufferForm = int (*)(char*, const char*);
using StreamForm = void (*)(FILE*, FILE*, int);

/// The counted bytes of a buffer form, in an area of exactly `room` bytes.
std::string buffered(BufferForm form, const std::string& text, size_t room) {
    std::unique_ptr<char[]> dst(new char[room]);
    int n = form(dst.get(), text.c_str());
    require(n >= 0 && static_cast<size_t>(n) < std::max<size_t>(room, 64));
    return {dst.get(), std::min(static_cast<size_t>(n), room - 1)};
}

std::string streamed(StreamForm form, std::string text) {
    FILE* in = fmemopen(text.data(), text.size(), "rb");
    int size = static_cast<int>(text.size());
    std::string result = fuzz::written([&](FILE* out) { form(out, in, size); });
    fclose(in);
    return result;
}

void checkLines(BufferForm buffer, StreamForm stream, const std::string& text) {
    EncodeQP(std::string(8, 0).data(), "\n");
    std::string lines;
    for (size_t at = 0, next; at < text.size(); at = next) {
        next = std::min(text.find('\n', at), text.size() - 1) + 1;
        if (next - at >= 5119) return;
        lines += buffered(buffer, text.substr(at, next - at), 4 * (next - at) + 16);
    }
    EncodeQP(std::string(8, 0).data(), "\n");
    require(streamed(stream, text) == lines);
}

void checkKernels(const std::string& bytes, size_t cut) {
    std::string results[2][2], out(bytes.size() + 2, 0);
    for (bool vector : {false, true}) {
        Base64Encoder e{76, 0, vector};
        std::string lines(base64Room(e, bytes.size()), 0);
        lines.resize(base64Encode(e, bytes, lines.data()));
        Base64Decoder d{true, 0, 0, 0, vector}, raw{false, 0, 0, 0, vector};
        require(base64Decode(d, lines, lines.data()).counted == bytes.size());
        require(lines.substr(0, bytes.size()) == bytes);
        QpDecoder q{QpSoftBreak::kSkipsBoth, vector};
        // The portable path takes the text in two steps.
        for (string_view part : {head(bytes, vector ? 0 : cut), tail(bytes, vector ? 0 : cut)}) {
            results[vector][0].append(out, 0, base64Decode(raw, part, out.data()).written);
            results[vector][1].append(out, 0, qpDecode(q, part, out.data()));
        }
    }
    require(results[0][0] == results[1][0] && results[0][1] == results[1][1]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    std::string bytes = fuzz::textOf(data, size), text = bytes;
    checkKernels(bytes, data[0] % size);
    std::erase(text, '\0');
    if (text.empty()) return 0;
    for (BufferForm decode : {DecodeBase64, DecodeQP, DecodeQP_ORG, DecodeUU, DecodeISO2022KR,
                              DecodeISO2022JP, DecodeEucJP2ShiftJIS})
        buffered(decode, text, text.size() + 1);
    std::string b64 = taken(mailEncodeBase64(text.c_str())), qp = taken(mailEncodeQP(text.c_str()));
    require(buffered(DecodeBase64, b64, 2 * text.size() + 8) == text);
    checkLines(DecodeBase64, strmDecodeBase64, text);
    checkLines(DecodeQP, strmDecodeQP, text);
    checkLines(EncodeQP, strmEncodeQP, text);
    std::erase(text, '\r');
    // Empty when nothing is left, and then no text at all.
    char* plain = mailDecodeQP(qp.c_str());
    require(text == viewOf(plain));
    free(plain);
    return 0;
}
