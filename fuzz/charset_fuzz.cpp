// The converter: the same text, error and place whatever the pieces of output; valid text as the C
// library converts it; what HZ writes reads back. The first three bytes choose the sets and the
// size of the pieces.

#include <iconv.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "support/support.h"

namespace {

struct Outcome {
    std::string text;
    int error = 0;
    size_t left = 0;
    bool operator==(const Outcome&) const = default;
};

template <typename Convert>
Outcome run(Convert convert, const std::vector<char>& text, size_t step) {
    Outcome o;
    std::vector<char> area(step);
    char nothing = 0, *in = text.empty() ? &nothing : const_cast<char*>(text.data());
    o.left = text.size();
    for (bool closing = false;;) {
        char* out = area.data();
        size_t room = step;
        bool failed = convert(closing ? nullptr : &in, closing ? nullptr : &o.left, &out, &room) ==
                      static_cast<size_t>(-1);
        o.error = failed ? errno : 0;
        o.text.append(area.data(), step - room);
        if (o.error == E2BIG && room < step) continue;
        if (o.error || closing) return o;
        closing = true;
    }
}

Outcome ours(const char* to, const char* from, const std::vector<char>& text, size_t step) {
    msiconv_t cd = msiconv_open(to, from);
    if (cd == reinterpret_cast<msiconv_t>(-1)) abort();
    Outcome o = run([cd](auto... a) { return msiconv(cd, a...); }, text, step);
    msiconv_close(cd);
    return o;
}

Outcome bare(const char* to, const char* from, const std::vector<char>& text) {
    iconv_t cd = iconv_open(to, from);
    Outcome o = run([cd](auto... a) { return iconv(cd, a...); }, text, 4096);
    iconv_close(cd);
    return o;
}

struct Set {
    const char *name, *bare, *screened;
};
const Set sets[] = {{"EUC-KR", "EUC-KR", "korean"},
                    {"GB2312", "EUC-CN", ""},
                    {"SHIFT-JIS", "SJIS", "\\~"},
                    {"EUC-JP", "EUC-JP", "korean"},
                    {"UTF-8", "UTF-8", ""},
                    {"BIG5", nullptr, ""},
                    {"HZ", nullptr, ""},
                    {"ISO-2022-JP", nullptr, ""},
                    {"ISO-2022-KR", nullptr, ""}};

bool isScreened(const Set& set, const std::vector<char>& text) {
    bool high = strcmp(set.screened, "korean") == 0;
    for (char c : text)
        if (high ? ((c & 0xFF) >= 0x80 && (c & 0xFF) <= 0xA0) || (c & 0xFF) == 0xFF
                 : c && strchr(set.screened, c))
            return true;
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t count = sizeof sets / sizeof *sets;
    if (size < 3) return 0;
    const Set &to = sets[data[0] % count], &from = sets[data[1] % count];
    std::vector<char> text(data + 3, data + size);
    Outcome whole = ours(to.name, from.name, text, 16384);
    // The shift sequences of ISO-2022 as sources come without output: their place may differ by
    // them.
    if (!strstr(from.name, "2022") && whole != ours(to.name, from.name, text, 8u + data[2] % 64))
        abort();
    if (to.bare && from.bare && !isScreened(from, text)) {
        Outcome expected = bare(to.bare, from.bare, text);
        if (!expected.error && whole != expected) abort();
        if (&to == &from && whole != expected) abort();
    }
    if (!strcmp(to.name, "HZ") && !whole.error) {
        std::vector<char> hz(whole.text.begin(), whole.text.end());
        if (ours("HZ", "HZ", hz, 16384).text != whole.text) abort();
    }
    return 0;
}
