// From_ lines. The check reads words by position; an empty word (two blanks in a row, as delivery
// agents write before a one-digit day) ends the words, so that what was right up to there passes. A
// NUL ends the line, as it does for callers that hand over a C text. The search looks at every byte
// of a folder once: 32 positions at a time where the processor has AVX2.

#include "from_line.h"

#include <cstring>

#include "mail/base/vector.h"
#include "mail/folder.h"
#include "support/support.h"

namespace attalven {

namespace {

constexpr bool startsFromLine(string_view atLf) {
    return atLf.starts_with("\nFrom ");
}
constexpr bool endsHeader(string_view atLf) {
    return atLf.starts_with("\n\n") || atLf.starts_with("\n\r\n") || startsFromLine(atLf);
}

/// Position of the first LF for which `kMatches` holds.
template <bool (*kMatches)(string_view atLf)>
size_t findPortable(string_view s) {
    for (size_t at = 0; at < s.size(); at++) {
        const void* lf = memchr(s.data() + at, '\n', s.size() - at);
        if (!lf) break;
        at = static_cast<size_t>(static_cast<const char*>(lf) - s.data());
        if (kMatches(tail(s, at))) return at;
    }
    return string_view::npos;
}

/// The words between single blanks; the line end stays on the last one.
class Words {
  public:
    explicit Words(string_view line) : rest_(head(line, line.find('\0'))) {}
    /// The next word, empty when the words have run out.
    string_view next() {
        string_view word = head(rest_, rest_.find(' '));
        rest_ = word.empty() ? word : tail(rest_, word.size() + 1);
        return word;
    }

  private:
    string_view rest_;
};

bool isNameIn(const char* const* names, string_view word) {
    while (*names && !equalNoCase(*names, word)) names++;
    return *names;
}

}  // namespace

bool isFromLine(string_view line) {
    Words words(line);
    if (words.next() != "From") return false;
    string_view sender = words.next();
    if (sender.empty() || sender == "Corvane") return true;
    string_view weekday = words.next();
    if (weekday.empty()) return true;
    if (!isNameIn(week_eng, weekday)) return false;
    string_view month = words.next();
    if (month.empty()) return true;
    if (!isNameIn(month_eng, month)) return false;
    string_view day = words.next();
    if (day.empty()) return true;
    int number = decimal(day);
    return number >= 1 && number <= 31;
}

size_t findFromStartPortable(string_view s) {
    return findPortable<startsFromLine>(s);
}

size_t findHeaderBreakPortable(string_view s) {
    return findPortable<endsHeader>(s);
}

namespace {

#if defined(__x86_64__)

/// The same, 32 positions at a time: only an LF in front of one of `kNext` is looked at.
template <bool (*kMatches)(string_view atLf), char... kNext>
ATTALVEN_AVX2 size_t findVector(string_view s) {
    size_t at = 0;
    for (; s.size() - at > 32; at += 32) {
        const char* p = s.data() + at;
        __m256i here = load256(p), next = load256(p + 1), wanted = _mm256_setzero_si256();
        ((wanted = _mm256_or_si256(wanted, _mm256_cmpeq_epi8(next, _mm256_set1_epi8(kNext)))), ...);
        wanted = _mm256_and_si256(wanted, _mm256_cmpeq_epi8(here, _mm256_set1_epi8('\n')));
        for (unsigned hits = maskOf(wanted); hits; hits &= hits - 1) {
            size_t lf = at + static_cast<size_t>(__builtin_ctz(hits));
            if (kMatches(tail(s, lf))) return lf;
        }
    }
    size_t rest = findPortable<kMatches>(tail(s, at));
    return rest == string_view::npos ? rest : at + rest;
}

#else

template <bool (*kMatches)(string_view atLf), char...>
size_t findVector(string_view s) {
    return findPortable<kMatches>(s);
}

#endif

}  // namespace

size_t findFromStart(string_view s) {
    return hasVector() ? findVector<startsFromLine, 'F'>(s) : findFromStartPortable(s);
}

size_t findHeaderBreak(string_view s) {
    return hasVector() ? findVector<endsHeader, '\n', '\r', 'F'>(s) : findHeaderBreakPortable(s);
}

}  // namespace attalven

int mailChkRFC822From(const char* line) {
    return attalven::isFromLine(attalven::viewOf(line));
}
