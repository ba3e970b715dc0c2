// One pair of character sets. The strict tables convert whole stretches; between stretches stand
// single characters that they refuse, or that they must not read: the C library lets bytes 0x80 to
// 0x9F pass as control characters in EUC-KR and EUC-JP, 0xFF at the end of EUC-KR as half a
// character, takes ASCII's backslash and tilde for yen sign and overline in Shift-JIS, and reads
// the extension areas of Big5 as private characters. No state of its own, so a call may stop and go
// on anywhere; every loop advances, and what is scanned ahead is bounded by the room for output, so
// that hostile text costs linear time.

#include "converter_pair.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include "byte_blocks.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace attalven::converter {
namespace {

using Byte = unsigned char;

Byte byteAt(const char* p) {
    return static_cast<Byte>(*p);
}

/// One bit for each lane of a comparison that is true.
template <typename Lanes>
unsigned bitsOf(Lanes lanes) {
#if defined(__SSE2__)
    return static_cast<unsigned>(_mm_movemask_epi8((__m128i)lanes));
#else
    unsigned bits = 0;
    for (unsigned i = 0; i < sizeof lanes; i++) bits |= (lanes[i] ? 1u : 0u) << i;
    return bits;
#endif
}

constexpr size_t kAheadMost = 4096;  // a quarter of what is screened at a time

struct Range {
    Byte first, span;  // the bytes first to first + span
    auto lanes(ByteBlock b) const { return b - first <= span; }
};
/// The bytes that stop each screen, as characters of their own or as lead bytes.
constexpr Range kScreened[][3] = {
    {},                                          // none
    {{0x80, 0x20}, {0xFF, 0}, {0xFF, 0}},        // korean
    {{0x80, 0x0D}, {0x90, 0x10}, {0x90, 0x10}},  // japanese
    {{0x5C, 0}, {0x7E, 0}, {0x7E, 0}},           // shiftJis
    {{0x80, 0x20}, {0xC6, 0x02}, {0xFA, 0x04}},  // big5
};

/// Which of the next 16 bytes stop the screen; bytes behind the end stop none.
unsigned screenedBits(const char* p, const char* end, const Range (&r)[3]) {
    char last[16] = {};
    if (end - p < 16) {
        memcpy(last, p, static_cast<size_t>(end - p));
        p = last;
    }
    ByteBlock b = loadBlock(p);
    return bitsOf(r[0].lanes(b) | r[1].lanes(b) | r[2].lanes(b));
}

bool isLead(Byte b, Screen screen) {
    if (screen == Screen::kShiftJis) return (b >= 0x81 && b <= 0x9F) || (b >= 0xE0 && b <= 0xFC);
    return b >= 0x81 && b <= 0xFE;
}

/// Whether a character starts at `p`; one starts at `from`. Lead bytes in an unbroken run pair up.
bool startsCharacter(const char* from, const char* p, Screen screen) {
    const char* run = p;
    while (run > from && isLead(byteAt(run - 1), screen)) run--;
    return (p - run) % 2 == 0;
}

bool refuse(int error) {
    errno = error;
    return false;
}

bool isBytewise(Shape shape) {
    return shape == Shape::kStateless || shape == Shape::kHz;
}

}  // namespace

bool Pair::open(const Charset* to, const char* toName, const Charset* from, const char* fromName) {
    static constexpr Charset unlisted;
    to_ = to ? to : &unlisted;
    from_ = from ? from : &unlisted;
    stateless_ = isBytewise(to_->shape) && isBytewise(from_->shape);
    wideOpen_ = wideTried_ = false;
    strict_ = iconv_open(to ? to->write : toName, from ? from->read : fromName);
    return strict_ != reinterpret_cast<iconv_t>(-1);
}

void Pair::close() {
    iconv_close(strict_);
    if (wideOpen_) iconv_close(wide_);
}

/// A conversion from a set to itself is a check of its strict form. Escape sequences of a shifting
/// target would be written twice by two handles; HZ holds nothing beyond its strict table.
bool Pair::hasWide() const {
    return to_ != from_ && (from_->wideRead || to_->wideWrite) && isBytewise(from_->shape) &&
           to_->shape == Shape::kStateless;
}

bool Pair::openWide() {
    if (!wideTried_ && hasWide()) {
        wide_ = iconv_open(to_->wideWrite ? to_->wideWrite : to_->write,
                           from_->wideRead ? from_->wideRead : from_->read);
        wideOpen_ = wide_ != reinterpret_cast<iconv_t>(-1);
    }
    wideTried_ = true;
    return wideOpen_;
}

/// ASCII at the start of the text is the same in both sets.
void Pair::copyAscii(char** in, size_t* inLeft, char** out, size_t* outLeft) const {
    if (!stateless_) return;
    size_t most = std::min(*inLeft, *outLeft), n = 0;
    while (most - n >= 16 && !bitsOf(loadBlock(*in + n) > 0x7F)) n += 16;
    while (n < most && byteAt(*in + n) < 0x80) n++;
    memcpy(*out, *in, n);
    *in += n, *inLeft -= n;
    *out += n, *outLeft -= n;
}

Pair::Next Pair::readerOf(char c, Screen screen) {
    if (screen == Screen::kShiftJis) return Next::kItself;
    if (byteAt(&c) == 0x80 || byteAt(&c) == 0xFF) return Next::kInvalid;
    return screen == Screen::kKorean ? Next::kWide : Next::kWideOrStrict;
}

/// The first character from `scan` on that is not left to the strict table; `from` is a character's
/// start at or before it.
Pair::Stop Pair::findStop(const char* from, const char* scan, const char* end) const {
    Screen screen = from_->screen;
    if (screen == Screen::kNone || (screen == Screen::kShiftJis && to_->shape == Shape::kOther))
        return {end, Next::kStrict};
    for (const char* block = scan; block < end;
         block += std::min<std::ptrdiff_t>(16, end - block)) {
        unsigned bits = screenedBits(block, end, kScreened[static_cast<size_t>(screen)]);
        for (; bits; bits &= bits - 1) {
            const char* p = block + std::countr_zero(bits);
            if (screen == Screen::kJapanese) return {p, Next::kInvalid};
            if (startsCharacter(from, p, screen)) return {p, readerOf(*p, screen)};
            from = p + 1;
        }
    }
    return {end, Next::kStrict};
}

/// The strict table over the first `size` bytes.
size_t Pair::strict(char** in, size_t size, size_t* inLeft, char** out, size_t* outLeft) {
    if (size == 0) return 0;
    size_t left = size;
    size_t result = iconv(strict_, in, &left, out, outLeft);
    *inLeft -= size - left;
    return result;
}

/// One character of two bytes or more by the wide tables, written whole or not at all. They know
/// single bytes that no text means: those stay refused.
bool Pair::readWide(char** in, size_t* inLeft, char** out, size_t* outLeft) {
    if (byteAt(*in) < 0x80 || !openWide()) return refuse(EILSEQ);
    for (size_t size = 1; size <= std::min<size_t>(*inLeft, 4); size++) {
        char buffer[32];
        char *from = *in, *to = buffer;
        size_t left = size, room = sizeof buffer;
        iconv(wide_, nullptr, nullptr, nullptr, nullptr);
        if (iconv(wide_, &from, &left, &to, &room) == kFailed) {
            if (errno == EINVAL) continue;
            return refuse(EILSEQ);
        }
        iconv(wide_, nullptr, nullptr, &to, &room);  // a character that waits for a combining one
        size_t made = sizeof buffer - room;
        if (size == 1 || (to_->wideLead && byteAt(buffer) != to_->wideLead)) return refuse(EILSEQ);
        if (made > *outLeft) return refuse(E2BIG);
        memcpy(*out, buffer, made);
        *in += size, *inLeft -= size;
        *out += made, *outLeft -= made;
        return true;
    }
    return refuse(EINVAL);
}

/// A byte that stands for itself once the output is back in ASCII.
bool Pair::copyByte(char** in, size_t* inLeft, char** out, size_t* outLeft) {
    if (to_->shape == Shape::kShifting && iconv(strict_, nullptr, nullptr, out, outLeft) == kFailed)
        return false;
    if (*outLeft == 0) return refuse(E2BIG);
    *(*out)++ = *(*in)++;
    --*inLeft, --*outLeft;
    return true;
}

bool Pair::readNext(Next next, char** in, size_t* inLeft, char** out, size_t* outLeft) {
    if (next == Next::kItself) return copyByte(in, inLeft, out, outLeft);
    if (next == Next::kInvalid) return refuse(EILSEQ);
    if (readWide(in, inLeft, out, outLeft)) return true;
    if (next != Next::kWideOrStrict || errno != EILSEQ) return false;
    return strict(in, std::min<size_t>(*inLeft, 2), inLeft, out, outLeft) != kFailed;
}

size_t Pair::convert(char** in, size_t* inLeft, char** out, size_t* outLeft) {
    if (!in || !*in) return stateless_ ? 0 : iconv(strict_, nullptr, nullptr, out, outLeft);
    copyAscii(in, inLeft, out, outLeft);
    Stop stop = {*in, Next::kStrict};
    for (size_t inexact = 0;;) {
        const char* end = *in + *inLeft;
        // Screening goes no further ahead than the cache holds, and than the strict table can get:
        // every character of a screened set gives a byte of output or more.
        size_t most = *inLeft;
        if (from_->screen != Screen::kNone)
            most = std::min(std::min(*outLeft, kAheadMost) * 4 + 16, most);
        const char* window = *in + std::min(*inLeft, most);
        if (stop.next == Next::kStrict || stop.at < *in)
            stop = findStop(*in, std::max<const char*>(*in, stop.at), window);
        size_t result = strict(in, static_cast<size_t>(stop.at - *in), inLeft, out, outLeft);
        if (result == kFailed) {
            if (errno == E2BIG || (errno == EINVAL && stop.at == end)) return kFailed;
            bool cut = errno == EINVAL && stop.next == Next::kStrict;  // by the window's end
            if (!cut && !readWide(in, inLeft, out, outLeft)) return kFailed;
        } else {
            inexact += result;
            if (*in == end) return inexact;
            if (stop.next != Next::kStrict && !readNext(stop.next, in, inLeft, out, outLeft))
                return kFailed;
        }
    }
}

}  // namespace attalven::converter
