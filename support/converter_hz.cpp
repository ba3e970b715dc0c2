// HZ text (RFC 1843). The state is one flag: whether bytes pair up as GB2312. Reading follows what
// browsers did: a line end leaves the mode, an escape into the mode that is in force is harmless.
// Writing leaves the mode before every ASCII byte, so also before a line end.

#include "converter_hz.h"

#include <cstring>

#include "hz_section.h"

namespace attalven::converter {
namespace {

/// What one unit of HZ is: its length, how many bytes of text it gives, and the mode after it.
struct Unit {
    HzResult result = HzResult::kDone;
    size_t length = 1, made = 1;
    bool gb = false;
};

Unit unitAt(bool gb, const char* in, const char* end) {
    if (*in == '\n' || (!gb && *in != '~')) {
        if (*in & 0x80) return {HzResult::kInvalid};
        return {};
    }
    if (end - in < 2) return {HzResult::kIncomplete};
    char first = in[0], second = in[1];
    if (first != '~') {
        return {isHzPair(first, second) ? HzResult::kDone : HzResult::kInvalid, 2, 2, true};
    }
    if (second == '{' || second == '}') return {HzResult::kDone, 2, 0, second == '{'};
    if (second == '~') return {HzResult::kDone, 2, 1, gb};
    if (second == '\n') return {HzResult::kDone, 2, 0, gb};  // joins two lines
    return {HzResult::kInvalid};
}

}  // namespace

HzResult readHz(bool& gb, const char*& in, const char* end, char*& out, const char* outEnd) {
    while (in < end) {
        Unit unit = unitAt(gb, in, end);
        if (unit.result != HzResult::kDone) return unit.result;
        if (outEnd - out < static_cast<ptrdiff_t>(unit.made)) return HzResult::kFull;
        for (size_t i = 0; i < unit.made; i++)
            *out++ = static_cast<char>(unit.made == 2 ? in[i] | 0x80 : in[i]);
        in += unit.length;
        gb = unit.gb;
    }
    return HzResult::kDone;
}

bool closeHz(bool& gb, char*& out, const char* outEnd) {
    if (!gb) return true;
    if (outEnd - out < 2) return false;
    memcpy(out, "~}", 2);
    out += 2;
    gb = false;
    return true;
}

bool writeHz(bool& gb, const char* in, const char* end, char*& out, const char* outEnd) {
    bool mode = gb;
    char* to = out;
    while (in < end) {
        bool pair = *in & 0x80;
        if (!pair && !closeHz(mode, to, outEnd)) return false;
        if (outEnd - to < (mode ? 2 : pair ? 4 : 1 + (*in == '~'))) return false;
        if (pair && !mode) *to++ = '~', *to++ = '{';
        if (*in == '~') *to++ = '~';
        mode = pair;
        *to++ = static_cast<char>(*in++ & 0x7F);
        if (pair) *to++ = static_cast<char>(*in++ & 0x7F);
    }
    out = to;
    gb = mode;
    return true;
}

}  // namespace attalven::converter
