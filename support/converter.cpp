// msiconv_open, msiconv and msiconv_close over the C library's tables, with HZ as a stage of its
// own before or after them. Opening tables costs 25 to 90 us once a process uses three sets in
// turn, because the C library unloads them; so closed handles stay open here, the most recently
// used 32 of them, and opening the same pair again costs nothing. Names are checked before they
// reach the C library.

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "converter_hz.h"
#include "converter_pair.h"
#include "mail/base/charset_name.h"
#include "support.h"

namespace attalven::converter {
namespace {

struct Name {
    char text[kCharsetNameMax + 1];
    uint8_t size;
    void assign(string_view name) {
        size = static_cast<uint8_t>(std::min(name.size(), sizeof text - 1));
        memcpy(text, name.data(), size);
        text[size] = 0;
    }
    bool is(string_view name) const { return name == string_view(text, size); }
};

/// An open conversion: source, [from HZ], tables, [to HZ], target.
class Converter {
  public:
    Name target, source;
    unsigned long used;  // when it was closed, for the choice of the one to give up

    bool open();
    void close() { pair_.close(); }
    void reset();
    size_t convert(char** in, size_t* inLeft, char** out, size_t* outLeft);
    size_t finish(char** out, size_t* outLeft);

  private:
    size_t fromHz(char** in, size_t* inLeft, char** out, size_t* outLeft);
    size_t toTarget(char** in, size_t* inLeft, char** out, size_t* outLeft);
    bool fewToHz(char** in, size_t* inLeft, char** out, size_t* outLeft);
    bool frame(const char* text, const char* end, char** out, size_t* outLeft);

    Pair pair_;
    bool readsHz_, writesHz_;
    bool gbIn_, gbOut_;  // HZ modes of both sides
};

constexpr size_t kStageSize = 1024;

bool Converter::open() {
    const Charset *to = findCharset({target.text, target.size}),
                  *from = findCharset({source.text, source.size});
    readsHz_ = from && from->shape == Shape::kHz;
    writesHz_ = to && to->shape == Shape::kHz;
    gbIn_ = gbOut_ = false;
    return pair_.open(to, target.text, from, source.text);
}

void Converter::reset() {
    gbIn_ = gbOut_ = false;
    pair_.convert(nullptr, nullptr, nullptr, nullptr);
}

size_t Converter::finish(char** out, size_t* outLeft) {
    gbIn_ = false;
    if (!writesHz_) return pair_.convert(nullptr, nullptr, out, outLeft);
    char* to = *out;
    if (!closeHz(gbOut_, to, to + *outLeft)) {
        errno = E2BIG;
        return Pair::kFailed;
    }
    *outLeft -= static_cast<size_t>(to - *out);
    *out = to;
    return 0;
}

size_t Converter::convert(char** in, size_t* inLeft, char** out, size_t* outLeft) {
    return readsHz_ ? fromHz(in, inLeft, out, outLeft) : toTarget(in, inLeft, out, outLeft);
}

/// Unwraps a stage full, converts it, and on failure unwraps again up to the character that failed,
/// so that the caller's pointer stands there.
size_t Converter::fromHz(char** in, size_t* inLeft, char** out, size_t* outLeft) {
    char stage[kStageSize];
    for (size_t inexact = 0;;) {
        const char *start = *in, *end = *in + *inLeft, *p = start;
        char* stageEnd = stage;
        bool gb = gbIn_;
        HzResult got = readHz(gb, p, end, stageEnd, stage + sizeof stage);
        char* q = stage;
        size_t left = static_cast<size_t>(stageEnd - stage);
        size_t result = toTarget(&q, &left, out, outLeft);
        if (result == Pair::kFailed) {
            p = start, stageEnd = stage, gb = gbIn_;
            readHz(gb, p, end, stageEnd, q);
        }
        gbIn_ = gb;
        *in += p - start;
        *inLeft -= static_cast<size_t>(p - start);
        if (result == Pair::kFailed) return result;
        inexact += result;
        if (got == HzResult::kDone) return inexact;
        if (got == HzResult::kFull) continue;
        errno = got == HzResult::kInvalid ? EILSEQ : EINVAL;
        return Pair::kFailed;
    }
}

bool Converter::frame(const char* text, const char* end, char** out, size_t* outLeft) {
    char* to = *out;
    if (!writeHz(gbOut_, text, end, to, to + *outLeft)) return false;
    *outLeft -= static_cast<size_t>(to - *out);
    *out = to;
    return true;
}

/// One or two characters, where the room for output is scarce: false when not even one fits.
bool Converter::fewToHz(char** in, size_t* inLeft, char** out, size_t* outLeft) {
    for (size_t few = 2; few > 0; few--) {
        char stage[2], *q = stage, *start = *in;
        size_t left = *inLeft, room = few;
        size_t result = pair_.convert(in, inLeft, &q, &room);
        if (q == stage && (result != Pair::kFailed || errno != E2BIG))
            return result != Pair::kFailed;
        if (q > stage && frame(stage, q, out, outLeft)) return true;
        *in = start, *inLeft = left;
    }
    errno = E2BIG;
    return false;
}

size_t Converter::toTarget(char** in, size_t* inLeft, char** out, size_t* outLeft) {
    if (!writesHz_) return pair_.convert(in, inLeft, out, outLeft);
    char stage[kStageSize];
    while (*inLeft > 0) {
        size_t room = std::min(sizeof stage, *outLeft / 4);
        if (room < 2) {
            if (!fewToHz(in, inLeft, out, outLeft)) return Pair::kFailed;
            continue;
        }
        char* q = stage;
        size_t result = pair_.convert(in, inLeft, &q, &room);
        int error = errno;
        frame(stage, q, out, outLeft);
        errno = error;
        if (result == Pair::kFailed && error != E2BIG) return result;
    }
    return 0;
}

bool isHandle(msiconv_t cd) {
    if (cd && cd != reinterpret_cast<msiconv_t>(-1)) return true;
    errno = EBADF;
    return false;
}

// Closed handles. An open one belongs to its caller and is not in here.
Converter* idle[32];
unsigned long closings;

Converter* takeIdle(string_view target, string_view source) {
    for (Converter*& slot : idle)
        if (slot && slot->target.is(target) && slot->source.is(source)) {
            Converter* found = slot;
            slot = nullptr;
            return found;
        }
    return nullptr;
}

void discard(Converter* converter) {
    if (!converter) return;
    converter->close();
    free(converter);
}

void keepIdle(Converter* converter) {
    Converter** oldest = &idle[0];
    for (Converter*& slot : idle)
        if (!slot || (*oldest && slot->used < (*oldest)->used)) oldest = &slot;
    discard(*oldest);
    converter->used = ++closings;
    *oldest = converter;
}

Converter* openNew(string_view target, string_view source) {
    auto* converter = static_cast<Converter*>(malloc(sizeof(Converter)));
    if (!converter) return nullptr;
    converter->target.assign(target);
    converter->source.assign(source);
    if (converter->open()) return converter;
    free(converter);
    return nullptr;
}

}  // namespace
}  // namespace attalven::converter

using namespace attalven;
using namespace attalven::converter;

msiconv_t msiconv_open(const char* target, const char* source) {
    if (target && source) {
        const string_view to(target), from(source);
        if (Converter* converter = takeIdle(to, from)) {
            converter->reset();
            return converter;
        }
        if (isCharsetForm(to) && isCharsetForm(from))
            if (Converter* converter = openNew(to, from)) return converter;
    }
    errno = EINVAL;
    return reinterpret_cast<msiconv_t>(-1);
}

size_t msiconv(msiconv_t cd, char** in, size_t* inLeft, char** out, size_t* outLeft) {
    if (!isHandle(cd)) return Pair::kFailed;
    auto* converter = static_cast<Converter*>(cd);
    if (in && *in) return converter->convert(in, inLeft, out, outLeft);
    if (out && *out) return converter->finish(out, outLeft);
    converter->reset();
    return 0;
}

int msiconv_close(msiconv_t cd) {
    if (!isHandle(cd)) return -1;
    keepIdle(static_cast<Converter*>(cd));
    return 0;
}
