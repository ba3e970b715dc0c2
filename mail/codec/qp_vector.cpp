// Quoted-printable in vectors. In text of two-byte characters nothing predicts how many escapes
// make a word, so escapes are decoded ten at a time and the position moves by as many as there
// were, with no branch on their number.

#include "qp_vector.h"

#include <cstdint>

#include "mail/base/vector.h"

namespace attalven {

#if defined(__x86_64__)

namespace {

/// One bit for each byte that is neither literal nor a blank.
ATTALVEN_AVX2 inline unsigned specials(__m256i v) {
    __m256i low = between(v, ' ' - 1, '='), high = between(v, 'G', 127);
    __m256i tab = _mm256_cmpeq_epi8(v, _mm256_set1_epi8('\t'));
    return ~maskOf(_mm256_or_si256(_mm256_or_si256(low, high), tab));
}

ATTALVEN_AVX2 inline unsigned equalsSigns(__m256i v) {
    return maskOf(_mm256_cmpeq_epi8(v, _mm256_set1_epi8('=')));
}

/// A bit for each "=" of an escape that could begin at 0, 3, ... 27.
constexpr unsigned kEvery3rd = 0x09249249;

ATTALVEN_AVX2 inline __m256i letterDigits(__m256i v) {
    return between(_mm256_and_si256(v, _mm256_set1_epi8(~0x20)), 'A' - 1, 'F' + 1);
}

/// The bytes of the digit pairs at 1, 4, ... 28, of which each half of the vector holds five.
ATTALVEN_AVX2 inline void putPairs(__m256i v, __m256i letters, char* out) {
    __m256i values = _mm256_add_epi8(_mm256_and_si256(v, _mm256_set1_epi8(15)),
                                     _mm256_and_si256(letters, _mm256_set1_epi8(9)));
    __m256i bytes = _mm256_or_si256(_mm256_slli_epi16(values, 4), _mm256_srli_si256(values, 1));
    bytes = _mm256_shuffle_epi8(
        bytes, _mm256_setr_epi8(1, 4, 7, 10, 13, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,  //
                                0, 3, 6, 9, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(bytes));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 5), _mm256_extracti128_si256(bytes, 1));
}

/// Characters of the escapes at the start of a window: up to the first place among 0, 3, ... 30
/// without one.
unsigned escapesLength(unsigned escapes) {
    return static_cast<unsigned>(__builtin_ctz(~(escapes & kEvery3rd) & (kEvery3rd | 1u << 30)));
}

}  // namespace

ATTALVEN_AVX2 size_t qpCopyLiterals(const char* text, char* out) {
    __m256i first = load256(text), second = load256(text + 32);
    store256(out, first);
    store256(out + 32, second);
    uint64_t stops = specials(first) | uint64_t{specials(second)} << 32;
    return stops ? static_cast<size_t>(__builtin_ctzll(stops)) : kQpWindow;
}

ATTALVEN_AVX2 size_t qpCopyPlain(const char* text, size_t size, char* out) {
    size_t n = 0;
    for (; size - n >= kQpWindow; n += 32) {
        __m256i v = load256(text + n);
        store256(out + n, v);
        if (unsigned stops = equalsSigns(v)) return n + static_cast<size_t>(__builtin_ctz(stops));
    }
    return n;
}

ATTALVEN_AVX2 size_t qpDecodeEscapes(const char* text, size_t size, char*& out) {
    size_t at = 0;
    char* o = out;
    while (size - at >= kQpWindow) {
        __m256i v = load256(text + at), letters = letterDigits(v);
        unsigned equals = equalsSigns(v), taken = escapesLength(equals);
        // The next window depends on the equals signs alone; that true digits follow them is
        // checked aside.
        unsigned digits = maskOf(_mm256_or_si256(between(v, '0' - 1, '9' + 1), letters));
        unsigned needed = ((1u << taken) - 1) & ~kEvery3rd;
        if ((digits & needed) != needed) taken = escapesLength(equals & digits >> 1 & digits >> 2);
        if (taken == 0) break;
        putPairs(v, letters, o);
        o += taken / 3;
        *o = text[at + taken];
        unsigned plain = ~equals >> taken & 1;
        o += plain;
        at += taken + plain;
    }
    out = o;
    return at;
}

#else

size_t qpCopyLiterals(const char*, char*) {
    return 0;
}
size_t qpCopyPlain(const char*, size_t, char*) {
    return 0;
}
size_t qpDecodeEscapes(const char*, size_t, char*&) {
    return 0;
}

#endif

}  // namespace attalven
