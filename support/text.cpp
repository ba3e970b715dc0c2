// Texts in place and growable texts. Everything is byte for byte and blind to the locale, so that a
// calling program that has set one parses mail the same way. No operation keeps state.

#include "mail/base/text.h"

#include <climits>
#include <cstring>

#include "mail/base/ascii.h"
#include "mail/base/owned.h"
#include "support.h"

using namespace attalven;

namespace {

int compareNoCase(string_view a, string_view b) {
    size_t common = std::min(a.size(), b.size());
    for (size_t i = 0; i < common; i++)
        if (int d = byteOf(toLower(a[i])) - byteOf(toLower(b[i]))) return d;
    return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

string_view viewOf(const char* text, size_t limit) {
    return text ? string_view(text, strnlen(text, limit)) : string_view();
}

/// Keeps the bytes that `keep` accepts.
template <typename Keep>
char* filter(char* text, Keep keep) {
    if (!text) return nullptr;
    char* end = text;
    for (const char* p = text; *p; p++)
        if (keep(*p)) *end++ = *p;
    *end = 0;
    return text;
}

template <typename Map>
char* transform(char* text, Map map) {
    if (!text) return nullptr;
    for (char* p = text; *p; p++) *p = map(*p);
    return text;
}

}  // namespace

const char* strSafeAssign(const char* text) {
    return text ? text : "";
}

int strCaseCmp(const char* a, const char* b) {
    return compareNoCase(viewOf(a), viewOf(b));
}

int strNCaseCmp(const char* a, const char* b, int n) {
    if (n <= 0) return 0;
    auto limit = static_cast<size_t>(n);
    return compareNoCase(viewOf(a, limit), viewOf(b, limit));
}

char* strCaseStr(const char* text, const char* token) {
    if (!text) return nullptr;
    if (!token || !*token) return const_cast<char*>(text);
    size_t at = findNoCase(text, token);
    return at == string_view::npos ? nullptr : const_cast<char*>(text) + at;
}

char* strChrNextStr(const char* text, int c) {
    const char* at = text && c ? strchr(text, c) : nullptr;
    if (!at) return nullptr;
    do at++;
    while (isSpace(*at));
    return const_cast<char*>(at);
}

char* strMakeWord(char* buffer, int c) {
    if (!buffer) return nullptr;
    char* end = strchrnul(buffer, c);
    auto length = static_cast<size_t>(end - buffer);
    char* word = length ? copyText({buffer, length}).release() : nullptr;
    if (*end) end++;
    memmove(buffer, end, strlen(end) + 1);
    return word;
}

char* strRmCrLf(char* text) {
    return filter(text, [](char b) { return b != '\r' && b != '\n'; });
}

char* strRmWhiteSpace(char* text) {
    return filter(text, [](char b) { return !isSpace(b); });
}

char* strRmChar(char* text, int c) {
    return filter(text, [c](char b) { return b != static_cast<char>(c); });
}

char* strRmHeadWhiteSpace(char* text) {
    if (!text) return nullptr;
    size_t blanks = 0;
    while (isSpace(text[blanks])) blanks++;
    if (blanks) memmove(text, text + blanks, strlen(text + blanks) + 1);
    return text;
}

char* strRmTailWhiteSpace(char* text) {
    if (text) text[trimTail(text).size()] = 0;
    return text;
}

char* strTabToSpc(char* text) {
    return transform(text, [](char b) { return b == '\t' ? ' ' : b; });
}

char* strToLwr(char* text) {
    return transform(text, [](char b) { return toLower(b); });
}

int strChkHan(const char* text) {
    for (; text && *text; text++)
        if (byteOf(*text) >= 0x80) return 1;
    return 0;
}

char* getArgs(char* dst, const char* src, const char* delimiters) {
    if (!dst) return nullptr;
    const char* begin = src && delimiters && *delimiters ? strchr(src, delimiters[0]) : nullptr;
    const char* end =
        begin ? strchr(begin + 1, delimiters[1] ? delimiters[1] : delimiters[0]) : nullptr;
    if (!end) {
        *dst = 0;
        return nullptr;
    }
    auto length = static_cast<size_t>(end - begin - 1);
    memmove(dst, begin + 1, length);
    dst[length] = 0;
    return dst;
}

char* memStrInit(void) {
    return allocate<char>().release();
}

char* memStrCat(char* buffer, const char* text, int step, int* length, int* capacity) {
    int ownLength = 0, ownCapacity = 0;
    if (!length) length = &ownLength;
    if (!capacity) capacity = &ownCapacity;
    if (*capacity < 0) return nullptr;  // it failed before
    // Counters of 0 may come with a text that another operation made.
    size_t used = buffer && *capacity ? static_cast<size_t>(*length) : viewOf(buffer).size();
    size_t added = viewOf(text).size(), need = used + added + 1;
    if (!buffer || need > static_cast<size_t>(*capacity)) {
        auto unit = static_cast<size_t>(step > 0 ? step : 1);
        size_t want = std::max(need, used + used / 2);
        want = std::min<size_t>((want + unit - 1) / unit * unit, INT_MAX);
        char* moved = need <= INT_MAX ? static_cast<char*>(realloc(buffer, want)) : nullptr;
        if (!moved) {
            free(buffer);
            *length = 0;
            *capacity = -1;
            return nullptr;
        }
        buffer = moved;
        *capacity = static_cast<int>(want);
    }
    if (added) memcpy(buffer + used, text, added);
    buffer[used + added] = 0;
    *length = static_cast<int>(used + added);
    return buffer;
}
