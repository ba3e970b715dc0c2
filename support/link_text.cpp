// The grammar of addresses in text. A byte that follows one of 0x80 or above may be the second half
// of a character and is never taken into an address; where an address would start with one there is
// no address. All looking back is bounded, and all looking ahead ends at bytes that the caller then
// skips, so that no text takes more than linear time.

#include "link_text.h"

#include "mail/base/byte_set.h"

namespace attalven {

namespace {

constexpr size_t kLocalMax = 64, kDomainMax = 253;

// RFC 3986: unreserved, gen-delims, sub-delims and "%".
constexpr ByteSet kUrl = ByteSet("-._~:/?#[]@!$&'()*+,;=%").withAlnum();
// Of RFC 5322's atext what needs no encoding in a mailto URL and occurs in real addresses.
constexpr ByteSet kLocal = ByteSet("._+-").withAlnum();
constexpr ByteSet kDomain = ByteSet(".-").withAlnum();
constexpr ByteSet kAlnum = ByteSet("").withAlnum();

// What a sentence puts behind an address.
constexpr ByteSet kPunctuation(".,;:!?'&*([");

// Behind these an address would be part of something longer: a scheme such as "svn+http", and the
// rest of atext, unless sentences and forms put it before an address.
constexpr ByteSet kNotBeforeWeb = ByteSet("+").withAlnum();
constexpr ByteSet kNotBeforeMail("@/&#!$%?\\");

bool mayFollow(const ByteSet& refused, char before) {
    return byteOf(before) < 0x80 && !refused.has(before);
}

/// Length of the scheme of `s` and its "://", 0 for any but the three that are linked.
size_t schemeLength(string_view s) {
    for (string_view scheme : {"https://", "http://", "ftp://"})
        if (startsWithNoCase(s, scheme)) return scheme.size();
    return 0;
}

/// The character references that stand for bytes no URL holds, and any numeric one.
bool endsUrl(string_view reference) {
    for (string_view end : {"&#", "&lt;", "&gt;", "&quot;", "&apos;", "&nbsp;"})
        if (startsWithNoCase(reference, end)) return true;
    return false;
}

/// Length of the URL bytes at the start of `s`.
size_t urlRun(string_view s) {
    size_t n = 0;
    while (n < s.size() && kUrl.has(s[n]) && !(s[n] == '&' && endsUrl(head(tail(s, n), 6)))) n++;
    if (n < s.size() && s[n] == '{' && n > 0 && s[n - 1] == '~') n--;  // the shift of an HZ section
    return n;
}

/// Without the punctuation of the sentence around the URL: closing brackets stay if the URL opened
/// them.
size_t withoutPunctuation(string_view url) {
    ptrdiff_t round = 0, square = 0;
    for (char c : url) {
        round += (c == '(') - (c == ')');
        square += (c == '[') - (c == ']');
    }
    while (!url.empty()) {
        char last = url.back();
        bool stray = (last == ')' && round < 0) || (last == ']' && square < 0);
        if (!stray && !kPunctuation.has(last)) break;
        round -= (last == '(') - (last == ')');
        square -= (last == '[') - (last == ']');
        url.remove_suffix(1);
    }
    return url.size();
}

/// Length of the whole web address at the start of `s`, 0 for none.
size_t webAddressLength(string_view s, bool inSentence) {
    size_t scheme = schemeLength(s);
    if (!scheme || scheme >= s.size()) return 0;
    if (!kAlnum.has(s[scheme])) return 0;
    size_t length = urlRun(s);
    return inSentence ? withoutPunctuation(head(s, length)) : length;
}

/// domain = label 1*( "." label ), the last label starting with a letter and two bytes or longer:
/// the length of the longest one at the start of `s`.
size_t domainLength(string_view s) {
    size_t run = kDomain.run(s, kDomainMax + 1);
    if (run == 0 || run > kDomainMax || !kAlnum.has(s[0])) return 0;
    while (run > 0 && (s[run - 1] == '.' || s[run - 1] == '-')) run--;
    string_view domain = head(s, run);
    for (string_view wrong : {"..", ".-", "-."})
        if (domain.find(wrong) != string_view::npos) return 0;
    size_t dot = domain.rfind('.');
    if (dot == string_view::npos) return 0;
    string_view top = tail(domain, dot + 1);
    return top.size() >= 2 && isAlpha(top.front()) ? run : 0;
}

/// Length of the mail address that starts `s`, 0 if none does.
size_t mailAddressLength(string_view s) {
    size_t local = kLocal.run(s, kLocalMax + 1);
    if (local == 0 || local > kLocalMax || local >= s.size() || s[local] != '@') return 0;
    if (s[0] == '.' || s[local - 1] == '.' || head(s, local).find("..") != string_view::npos)
        return 0;
    size_t domain = domainLength(tail(s, local + 1));
    return domain ? local + 1 + domain : 0;
}

}  // namespace

Address webAddressAt(string_view s, size_t colon, size_t floor) {
    if (!tail(s, colon).starts_with("://")) return {};
    for (size_t scheme : {5U, 4U, 3U}) {
        if (colon < floor + scheme) continue;
        size_t begin = colon - scheme;
        if (!schemeLength(tail(s, begin))) continue;
        if (begin > 0 && !mayFollow(kNotBeforeWeb, s[begin - 1])) return {};
        size_t length = webAddressLength(tail(s, begin), true);
        return {begin, begin + length, false};
    }
    return {};
}

Address mailAddressAt(string_view s, size_t at, size_t floor) {
    size_t begin = at;
    while (begin > floor && at - begin <= kLocalMax && kLocal.has(s[begin - 1])) begin--;
    if (begin > 0 && (!mayFollow(kNotBeforeMail, s[begin - 1]) || kLocal.has(s[begin - 1])))
        return {};
    // "O'Brien@" is one local part, "'kim@" a quoted address.
    if (begin > 1 && s[begin - 1] == '\'' && kLocal.has(s[begin - 2])) return {};
    while (begin < at && s[begin] == '.') begin++;  // an ellipsis
    size_t length = mailAddressLength(tail(s, begin));
    if (!length || tail(s, begin + length).starts_with('@')) return {};
    return {begin, begin + length, true};
}

Address bracketedAddress(string_view s) {
    string_view inside = tail(s, 1);
    if (size_t length = webAddressLength(inside, false))
        return tail(inside, length).starts_with('>') ? Address{1, 1 + length, false} : Address{};
    size_t skip = startsWithNoCase(inside, kMailto) ? kMailto.size() : 0;
    size_t length = mailAddressLength(tail(inside, skip));
    bool whole = length && tail(inside, skip + length).starts_with('>');
    return whole ? Address{1 + skip, 1 + skip + length, true} : Address{};
}

Link canonicalLink(string_view s) {
    if (!s.starts_with(kLinkOpen)) return {};
    string_view url = tail(s, kLinkOpen.size()), text;
    if (url.starts_with(kMailto)) {
        text = tail(url, kMailto.size());
        text = head(text, mailAddressLength(text));
        url = head(url, text.empty() ? 0 : kMailto.size() + text.size());
    } else {
        url = text = head(url, webAddressLength(url, false));
    }
    string_view rest = tail(s, kLinkOpen.size() + url.size());
    if (url.empty() || !rest.starts_with(kLinkMiddle)) return {};
    rest = tail(rest, kLinkMiddle.size());
    if (!rest.starts_with(text) || !tail(rest, text.size()).starts_with(kLinkClose)) return {};
    return {url, text,
            kLinkOpen.size() + url.size() + kLinkMiddle.size() + text.size() + kLinkClose.size()};
}

}  // namespace attalven
