// The converter: the same text, error and place whatever the pieces of output; valid text as the C
// library converts it; what HZ writes reads back. The first three bytes choose the sets and the
// size of the pieces.

#include <iconv.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "support/support.h"
#include "tests/kit/conversion.h"

namespace {

using kit::Outcome, std::string;

Outcome ours(const char* to, const char* from, const string& text, size_t step = 16384) {
    msiconv_t cd = msiconv_open(to, from);
    if (cd == reinterpret_cast<msiconv_t>(-1)) abort();
    Outcome o = kit::convertAll([cd](auto... a) { return msiconv(cd, a...); }, text, step);
    msiconv_close(cd);
    return o;
}

Outcome bare(const char* to, const char* from, const string& text) {
    iconv_t cd = iconv_open(to, from);
    Outcome o = kit::convertAll([cd](auto... a) { return iconv(cd, a...); }, text, 16384);
    iconv_close(cd);
    return o;
}

/// No byte that the C library reads in its own way.
bool isPlain(const string& text) {
    return std::none_of(text.begin(), text.end(), [](char c) {
        return c == '\\' || c == '~' || ((c & 0xFF) >= 0x80 && (c & 0xFF) <= 0xA0) ||
               (c & 0xFF) == 0xFF;
    });
}

const struct {
    const char *name, *bare;
} sets[] = {{"EUC-KR", "EUC-KR"}, {"GB2312", "EUC-CN"},     {"SHIFT-JIS", "SJIS"},
            {"EUC-JP", "EUC-JP"}, {"UTF-8", "UTF-8"},       {"BIG5", nullptr},
            {"HZ", nullptr},      {"ISO-2022-JP", nullptr}, {"ISO-2022-KR", nullptr}};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    auto &to = sets[data[0] % std::size(sets)], &from = sets[data[1] % std::size(sets)];
    string text(data + 3, data + size);
    Outcome whole = ours(to.name, from.name, text);
    // Shift sequences give no output, so their place may differ.
    if (!strstr(from.name, "2022") && whole != ours(to.name, from.name, text, 8u + data[2] % 64))
        abort();
    if (to.bare && from.bare && isPlain(text)) {
        Outcome expected = bare(to.bare, from.bare, text);
        if ((!expected.error || &to == &from) && whole != expected) abort();
    }
    if (!strcmp(to.name, "HZ") && !whole.error && ours("HZ", "HZ", whole.text).text != whole.text)
        abort();
    return 0;
}
