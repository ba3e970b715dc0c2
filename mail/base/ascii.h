#ifndef ATTALVEN_MAIL_BASE_ASCII_H
#define ATTALVEN_MAIL_BASE_ASCII_H

// Locale-free character classes and text work on string_view. Bytes of 0x80 and above belong to no
// class. `head` and `tail` clamp, so they replace string_view::substr, which would need the C++
// runtime for its exception.

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>

namespace attalven {

using std::string_view;

constexpr bool isUpper(char c) {
    return c >= 'A' && c <= 'Z';
}
constexpr bool isLower(char c) {
    return c >= 'a' && c <= 'z';
}
constexpr bool isAlpha(char c) {
    return isUpper(c) || isLower(c);
}
constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
constexpr bool isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
constexpr char toLower(char c) {
    return isUpper(c) ? static_cast<char>(c + 32) : c;
}
constexpr unsigned char byteOf(char c) {
    return static_cast<unsigned char>(c);
}

/// A NULL text reads as the empty one.
constexpr string_view viewOf(const char* text) {
    return text ? string_view(text) : string_view();
}

constexpr string_view head(string_view s, size_t n) {
    return {s.data(), std::min(n, s.size())};
}
constexpr string_view tail(string_view s, size_t from) {
    s.remove_prefix(std::min(from, s.size()));
    return s;
}

constexpr bool equalNoCase(string_view a, string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return toLower(x) == toLower(y);
           });
}
constexpr bool startsWithNoCase(string_view s, string_view prefix) {
    return s.size() >= prefix.size() && equalNoCase(head(s, prefix.size()), prefix);
}
/// Position of `token` in `s` ignoring case, npos when absent.
constexpr size_t findNoCase(string_view s, string_view token) {
    auto hit = std::search(s.begin(), s.end(), token.begin(), token.end(),
                           [](char x, char y) { return toLower(x) == toLower(y); });
    return hit == s.end() && !token.empty() ? string_view::npos
                                            : static_cast<size_t>(hit - s.begin());
}

constexpr string_view trimHead(string_view s) {
    while (!s.empty() && isSpace(s.front())) s.remove_prefix(1);
    return s;
}
constexpr string_view trimTail(string_view s) {
    while (!s.empty() && isSpace(s.back())) s.remove_suffix(1);
    return s;
}
constexpr string_view trim(string_view s) {
    return trimTail(trimHead(s));
}

/// The line without its LF or CR LF.
constexpr string_view withoutLineEnd(string_view line) {
    if (!line.empty() && line.back() == '\n') line.remove_suffix(1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    return line;
}
constexpr bool isEmptyLine(string_view line) {
    return line == "\n" || line == "\r\n";
}

/// The text after the first `c`, leading white space skipped; nothing when `c` is absent.
constexpr std::optional<string_view> valueAfter(string_view s, char c) {
    size_t at = s.find(c);
    if (at == string_view::npos) return std::nullopt;
    return trimHead(tail(s, at + 1));
}

/// Decimal value by strtol's rules (leading white space, a sign, digits up to the first other byte;
/// 0 without any), clamped to the range of a 32-bit int.
constexpr int decimal(string_view s) {
    s = trimHead(s);
    bool negative = !s.empty() && s.front() == '-';
    if (!s.empty() && (s.front() == '-' || s.front() == '+')) s.remove_prefix(1);
    int64_t n = 0;
    for (; !s.empty() && isDigit(s.front()) && n <= INT32_MAX; s.remove_prefix(1))
        n = n * 10 + (s.front() - '0');
    n = negative ? -n : n;
    return static_cast<int>(std::clamp<int64_t>(n, INT32_MIN, INT32_MAX));
}

/// A 64-bit position or length as a record's 32-bit field holds it.
constexpr int clampInt(int64_t n) {
    return static_cast<int>(std::clamp<int64_t>(n, INT32_MIN, INT32_MAX));
}

/// Length of the longest start of `s` that has at most `max` bytes and does not end between the
/// bytes of a two-byte character (lead byte 0x81 and above).
constexpr size_t cutLength(string_view s, size_t max) {
    if (s.size() <= max) return s.size();
    // Only the run of high bytes before the cut can shift the pairing; its length decides.
    size_t run = 0;
    while (run < max && byteOf(s[max - 1 - run]) >= 0x81) run++;
    return run % 2 ? max - 1 : max;
}

}  // namespace attalven

#endif
