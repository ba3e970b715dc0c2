// Base64 in AVX2: 24 bytes against 32 characters at a time, by byte shuffles and a 16-entry table
// lookup (the published method of Mula and Lemire). A line that is no multiple of a block ends with
// one that overlaps its predecessor. Loads and stores are exact: no byte outside the line is
// touched.

#include "base64_vector.h"

#include "mail/base/vector.h"

namespace attalven {

#if defined(__x86_64__)

namespace {

const __m128i* at(const char* p) {
    return reinterpret_cast<const __m128i*>(p);
}
__m128i* at(char* p) {
    return reinterpret_cast<__m128i*>(p);
}

ATTALVEN_AVX2 inline __m256i twice(__m128i v) {
    return _mm256_broadcastsi128_si256(v);
}

/// 24 bytes: 12 at the start of each lane of the shuffle, spread to one 24-bit group per 32 bits.
ATTALVEN_AVX2 inline void encodeBlock(const char* bytes, char* out) {
    const __m256i spread = _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,  //
                                            5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14);
    // Distance from a value's class to its character: 0 for a-z, 1-10 digits, "+", "/", 13 A-Z.
    const __m256i distance = twice(_mm_setr_epi8('a' - 26, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4,
                                                 '+' - 62, '/' - 63, 'A', 0, 0));
    __m256i v = _mm256_set_m128i(_mm_loadu_si128(at(bytes + 8)), _mm_loadu_si128(at(bytes)));
    v = _mm256_shuffle_epi8(v, spread);
    __m256i high = _mm256_mulhi_epu16(_mm256_and_si256(v, _mm256_set1_epi32(0x0fc0fc00)),
                                      _mm256_set1_epi32(0x04000040));
    __m256i low = _mm256_mullo_epi16(_mm256_and_si256(v, _mm256_set1_epi32(0x003f03f0)),
                                     _mm256_set1_epi32(0x01000010));
    __m256i values = _mm256_or_si256(high, low);
    __m256i upper =
        _mm256_and_si256(_mm256_cmpgt_epi8(_mm256_set1_epi8(26), values), _mm256_set1_epi8(13));
    __m256i kind = _mm256_or_si256(_mm256_subs_epu8(values, _mm256_set1_epi8(51)), upper);
    store256(out, _mm256_add_epi8(_mm256_shuffle_epi8(distance, kind), values));
}

/// False when the block holds a byte outside the alphabet; nothing is written then.
ATTALVEN_AVX2 inline bool decodeBlock(__m256i v, char* out) {
    // A byte is in the alphabet when the sets of its two halves have no bit in common.
    const __m256i lowSets = twice(_mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                                0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A));
    const __m256i highSets = twice(_mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08,
                                                 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10));
    const __m256i distance =
        twice(_mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0));
    const __m256i slash = _mm256_set1_epi8('/');  // as a mask it keeps bits that shuffles ignore
    __m256i high = _mm256_and_si256(_mm256_srli_epi32(v, 4), slash);
    __m256i low = _mm256_shuffle_epi8(lowSets, _mm256_and_si256(v, slash));
    if (!_mm256_testz_si256(low, _mm256_shuffle_epi8(highSets, high))) return false;
    __m256i kind = _mm256_add_epi8(_mm256_cmpeq_epi8(v, slash), high);
    v = _mm256_add_epi8(v, _mm256_shuffle_epi8(distance, kind));
    v = _mm256_maddubs_epi16(v, _mm256_set1_epi32(0x01400140));
    v = _mm256_madd_epi16(v, _mm256_set1_epi32(0x00011000));
    v = _mm256_shuffle_epi8(
        v, twice(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1)));
    v = _mm256_permutevar8x32_epi32(v, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, -1, -1));
    _mm_storeu_si128(at(out), _mm256_castsi256_si128(v));
    _mm_storel_epi64(at(out + 16), _mm256_extracti128_si256(v, 1));
    return true;
}

/// Gives the characters taken: all, or those of the blocks before the first that has another byte.
/// The last block is loaded before the others are stored, for decoding in place.
ATTALVEN_AVX2 inline size_t decodeLine(const char* text, size_t length, char* out) {
    size_t lastAt = length - kBase64Block;
    __m256i last = load256(text + lastAt);
    size_t at = 0;
    for (; at < lastAt; at += kBase64Block)
        if (!decodeBlock(load256(text + at), out + at / 4 * 3)) return at;
    return decodeBlock(last, out + lastAt / 4 * 3) ? length : at;
}

}  // namespace

ATTALVEN_AVX2 void base64EncodeLines(const char* bytes, size_t lines, size_t lineLength,
                                     char* out) {
    for (; lines > 0; lines--, bytes += lineLength / 4 * 3, out += lineLength + 1) {
        size_t lastAt = lineLength - kBase64Block;
        for (size_t i = 0; i < lastAt; i += kBase64Block) encodeBlock(bytes + i / 4 * 3, out + i);
        encodeBlock(bytes + lastAt / 4 * 3, out + lastAt);
        out[lineLength] = '\n';
    }
}

ATTALVEN_AVX2 size_t base64DecodeLines(const char* text, size_t size, size_t lineLength,
                                       char*& out) {
    size_t at = 0;
    while (size - at > lineLength && text[at + lineLength] == '\n') {
        size_t taken = decodeLine(text + at, lineLength, out);
        out += taken / 4 * 3;
        at += taken;
        if (taken < lineLength) break;
        at++;
    }
    return at;
}

ATTALVEN_AVX2 size_t base64DecodeBlocks(const char* text, size_t size, char*& out) {
    size_t at = 0;
    for (; size - at >= kBase64Block && decodeBlock(load256(text + at), out); at += kBase64Block)
        out += kBase64Block / 4 * 3;
    return at;
}

#else

void base64EncodeLines(const char*, size_t, size_t, char*) {}
size_t base64DecodeLines(const char*, size_t, size_t, char*&) {
    return 0;
}
size_t base64DecodeBlocks(const char*, size_t, char*&) {
    return 0;
}

#endif

}  // namespace attalven
