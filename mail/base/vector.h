#ifndef ATTALVEN_MAIL_BASE_VECTOR_H
#define ATTALVEN_MAIL_BASE_VECTOR_H

// Vector code of the loops over all bytes of a mail: AVX2, compiled for itself alone and chosen at
// run time. Elsewhere the portable code beside it gives the same results.

#if defined(__x86_64__)
#include <immintrin.h>
#define ATTALVEN_AVX2 __attribute__((target("avx2")))
#endif

namespace attalven {

/// Whether the processor runs functions marked ATTALVEN_AVX2.
inline bool hasVector() {
#if defined(__x86_64__)
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

#if defined(__x86_64__)

inline ATTALVEN_AVX2 __m256i load256(const char* s) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
}
inline ATTALVEN_AVX2 void store256(char* out, __m256i v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), v);
}
inline ATTALVEN_AVX2 unsigned maskOf(__m256i v) {
    return static_cast<unsigned>(_mm256_movemask_epi8(v));
}
/// Signed comparison: bytes of 0x80 and above are below all others.
inline ATTALVEN_AVX2 __m256i between(__m256i v, char above, char below) {
    return _mm256_and_si256(_mm256_cmpgt_epi8(v, _mm256_set1_epi8(above)),
                            _mm256_cmpgt_epi8(_mm256_set1_epi8(below), v));
}

#endif

}  // namespace attalven

#endif
