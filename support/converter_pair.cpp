// One pair of character sets. The strict tables convert whole stretches; between stretches stand
// single characters that they refuse, or that they must not read: the C library lets bytes 0x80 to
// 0x9F pass as control characters in EUC-KR and EUC-JP, takes ASCII's backslash and tilde for yen
// sign and overline in Shift-JIS, and reads the extension areas of Big5 as private characters. No
// state of its own, so a call may stop and go on anywhere; every loop advances, and what is scanned
// ahead is bounded by the room for output, so that hostile text costs linear time.

#include "converter_pair.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace attalven::converter {
namespace {

using Byte = unsigned char;
using Block = Byte __attribute__((vector_size(16)));

Byte byteAt(const char* p) {
    return static_cast<Byte>(*p);
}

Block load(const char* p) {
    Block b;
    memcpy(&b, p, sizeof b);
    return b;
}

bool any(Block mask) {
    uint64_t half[2];
    memcpy(half, &mask, sizeof half);
    return (half[0] | half[1]) != 0;
}

struct Range {
    Byte first, span;  // the bytes first to first + span
    template <typename T>
    auto holds(T byte) const {
        return static_cast<T>(byte - first) <= span;
    }
};
/// The bytes that stop each screen, as characters of their own or as lead bytes.
constexpr Range screened[][3] = {
    {},                                          // none
    {{0x80, 0x20}, {0x80, 0x20}, {0x80, 0x20}},  // korean
    {{0x80, 0x0D}, {0x90, 0x10}, {0x90, 0x10}},  // japanese
    {{0x5C, 0}, {0x7E, 0}, {0x7E, 0}},           // shiftJis
    {{0x80, 0x20}, {0xC6, 0x02}, {0xFA, 0x04}},  // big5
};

const char* findByte(const char* p, const char* end, const Range (&r)[3]) {
    for (; end - p >= 16; p += 16) {
        Block b = load(p);
        if (any((Block)(r[0].holds(b) | r[1].holds(b) | r[2].holds(b)))) break;
    }
    while (p < end && !r[0].holds(byteAt(p)) && !r[1].holds(byteAt(p)) && !r[2].holds(byteAt(p)))
        p++;
    return p;
}

bool isLead(Byte b, Screen screen) {
    if (screen == Screen::shiftJis) return (b >= 0x81 && b <= 0x9F) || (b >= 0xE0 && b <= 0xFC);
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
    return shape == Shape::stateless || shape == Shape::hz;
}

}  // namespace

bool Pair::open(const Charset* to, const char* toName, const Charset* from, const char* fromName) {
    static constexpr Charset unlisted;
    to_ = to ? to : &unlisted;
    from_ = from ? from : &unlisted;
    wideOpen_ = wideTried_ = false;
    strict_ = iconv_open(to ? to->write : toName, from ? from->read : fromName);
    return strict_ != reinterpret_cast<iconv_t>(-1);
}

void Pair::close() {
    iconv_close(strict_);
    if (wideOpen_) iconv_close(wide_);
}

/// A conversion from a set to itself is a check of its strict form. Escape sequences of a shifting
/// target would be written twice by two handles.
bool Pair::hasWide() const {
    return to_ != from_ && (from_->wideRead || to_->wideWrite) && isBytewise(to_->shape) &&
           isBytewise(from_->shape);
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
    if (!isBytewise(from_->shape) || !isBytewise(to_->shape)) return;
    size_t most = std::min(*inLeft, *outLeft), n = 0;
    constexpr Block high = {0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
                            0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80};
    while (most - n >= 16 && !any(load(*in + n) & high)) n += 16;
    while (n < most && byteAt(*in + n) < 0x80) n++;
    memcpy(*out, *in, n);
    *in += n, *inLeft -= n;
    *out += n, *outLeft -= n;
}

/// The first character from `scan` on that is not left to the strict table; `from` is a character's
/// start at or before it.
Pair::Stop Pair::findStop(const char* from, const char* scan, const char* end) const {
    Screen screen = from_->screen;
    if (screen == Screen::none || (screen == Screen::shiftJis && to_->shape == Shape::other))
        return {end, Next::strict};
    for (const char* p = scan;; from = ++p) {
        p = findByte(p, end, screened[static_cast<size_t>(screen)]);
        if (p == end) return {end, Next::strict};
        if (screen == Screen::japanese) return {p, Next::invalid};
        if (!startsCharacter(from, p, screen)) continue;
        if (screen == Screen::shiftJis) return {p, Next::itself};
        if (byteAt(p) == 0x80) return {p, Next::invalid};
        return {p, screen == Screen::korean ? Next::wide : Next::wideOrStrict};
    }
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
        if (iconv(wide_, &from, &left, &to, &room) == failed) {
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
    if (to_->shape == Shape::shifting && iconv(strict_, nullptr, nullptr, out, outLeft) == failed)
        return false;
    if (*outLeft == 0) return refuse(E2BIG);
    *(*out)++ = *(*in)++;
    --*inLeft, --*outLeft;
    return true;
}

bool Pair::readNext(Next next, char** in, size_t* inLeft, char** out, size_t* outLeft) {
    if (next == Next::itself) return copyByte(in, inLeft, out, outLeft);
    if (next == Next::invalid) return refuse(EILSEQ);
    if (readWide(in, inLeft, out, outLeft)) return true;
    if (next != Next::wideOrStrict || errno != EILSEQ) return false;
    return strict(in, std::min<size_t>(*inLeft, 2), inLeft, out, outLeft) != failed;
}

size_t Pair::convert(char** in, size_t* inLeft, char** out, size_t* outLeft) {
    if (!in || !*in) {
        if (wideOpen_) iconv(wide_, nullptr, nullptr, nullptr, nullptr);
        return iconv(strict_, nullptr, nullptr, out, outLeft);
    }
    copyAscii(in, inLeft, out, outLeft);
    Stop stop = {*in, Next::strict};
    for (size_t inexact = 0;;) {
        const char* end = *in + *inLeft;
        // Every character of a screened set gives a byte of output or more, so the strict table
        // gets no further than this in one go.
        bool whole = from_->screen == Screen::none || *outLeft >= *inLeft;
        size_t most = whole ? *inLeft : 4 * *outLeft + 16;
        const char* window = *in + std::min(*inLeft, most);
        if (stop.next == Next::strict || stop.at < *in)
            stop = findStop(*in, std::max<const char*>(*in, stop.at), window);
        size_t result = strict(in, static_cast<size_t>(stop.at - *in), inLeft, out, outLeft);
        if (result == failed) {
            if (errno == E2BIG || (errno == EINVAL && stop.at == end)) return failed;
            bool cut = errno == EINVAL && stop.next == Next::strict;  // by the window's end
            if (!cut && !readWide(in, inLeft, out, outLeft)) return failed;
        } else {
            inexact += result;
            if (*in == end) return inexact;
            if (stop.next != Next::strict && !readNext(stop.next, in, inLeft, out, outLeft))
                return failed;
        }
    }
}

}  // namespace attalven::converter
