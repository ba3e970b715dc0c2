#ifndef ATTALVEN_SUPPORT_CONVERTER_PAIR_H
#define ATTALVEN_SUPPORT_CONVERTER_PAIR_H

// Conversion between two character sets through the C library: the strict tables first, the wide
// ones for single characters that the strict ones refuse.

#include <iconv.h>

#include "converter_sets.h"

namespace attalven::converter {

class Pair {
  public:
    static constexpr size_t kFailed = static_cast<size_t>(-1);

    /// Opens the tables for two listed sets, or for plain names where a set is NULL.
    bool open(const Charset* to, const char* toName, const Charset* from, const char* fromName);
    void close();
    /// The contract of iconv: `in` NULL closes the shift state (with `out`) or forgets it
    /// (without).
    size_t convert(char** in, size_t* inLeft, char** out, size_t* outLeft);

  private:
    enum class Next : uint8_t { kStrict, kWide, kWideOrStrict, kItself, kInvalid };
    struct Stop {
        const char* at;  // the strict table may read up to here
        Next next;       // who reads the character there
    };

    bool hasWide() const;
    bool openWide();
    void copyAscii(char** in, size_t* inLeft, char** out, size_t* outLeft) const;
    static Next readerOf(char c, Screen screen);
    Stop findStop(const char* from, const char* scan, const char* end) const;
    size_t strict(char** in, size_t size, size_t* inLeft, char** out, size_t* outLeft);
    bool readWide(char** in, size_t* inLeft, char** out, size_t* outLeft);
    bool copyByte(char** in, size_t* inLeft, char** out, size_t* outLeft);
    bool readNext(Next next, char** in, size_t* inLeft, char** out, size_t* outLeft);

    iconv_t strict_, wide_;
    const Charset *to_, *from_;
    bool stateless_;  // both sets: nothing to forget between two texts, nothing to close behind one
    bool wideOpen_, wideTried_;
};

}  // namespace attalven::converter

#endif
