// SMTP replies from a hostile server: a code has three digits and stands in the bytes that were
// read.

#include "fuzz.h"
#include "support/support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    FILE* f = fmemopen(const_cast<uint8_t*>(data), size, "r");
    long before = 0;
    for (int code; (code = sockGetStatCode(f)) > 0; before = ftell(f)) {
        char digits[4];
        snprintf(digits, sizeof digits, "%03d", code);
        long after = ftell(f);
        fuzz::require(code <= 999 && after > before &&
                      memmem(data + before, static_cast<size_t>(after - before), digits, 3));
    }
    fclose(f);
    return 0;
}
