#include "mail_text.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <map>
#include <vector>

#include "encoded_word.h"
#include "page.h"
#include "support/support.h"
#include "text.h"

namespace host {

namespace {

constexpr size_t kHeaderMax = 1 << 20;
constexpr size_t kSetsKept = 100;
constexpr const char* kNoSet = "!";  // a label that names no set to the library: bytes stay

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

bool isUtfName(const std::string& set) {
    return strNCaseCmp(set.c_str(), "utf-", 4) == 0;
}

/// UTF-16 and UTF-32, in which ASCII is not ASCII.
bool isWide(const std::string& set) {
    return strNCaseCmp(set.c_str(), "utf-16", 6) == 0 || strNCaseCmp(set.c_str(), "utf-32", 6) == 0;
}

/// Whether every set that mail uses reads the bytes as ASCII, but for the wide ones.
bool isPlainAscii(std::string_view text) {
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return c < 0 || c == '\x1B' || c == '~' || c == '+'; });
}

bool isKnown(const std::string& set) {
    if (strCaseCmp(set.c_str(), "us-ascii") == 0 || strCaseCmp(set.c_str(), "ascii") == 0)
        return false;
    // A folder has thousands of texts in a few sets.
    static std::map<std::string, bool> asked;
    if (asked.size() > kSetsKept) asked.clear();
    auto [answer, isNew] = asked.try_emplace(set);
    if (isNew) answer->second = !takeText(strConvCharSet("UTF-8", set.c_str(), "a")).empty();
    return answer->second;
}

/// The page set of a set's family. Names of mail programs that no family has are those of wider
/// tables, which browsers read under the family's name.
std::string familyOf(const std::string& set) {
    struct Alias {
        const char *name, *family;
    };
    constexpr Alias kAliases[] = {
        {"shift_jis", "SHIFT-JIS"}, {"windows-31j", "SHIFT-JIS"}, {"x-sjis", "SHIFT-JIS"},
        {"cp932", "SHIFT-JIS"},     {"ks_c_5601-1987", "EUC-KR"}, {"ksc5601", "EUC-KR"},
        {"windows-949", "EUC-KR"},  {"cp949", "EUC-KR"},          {"gbk", "GB2312"},
        {"gb18030", "GB2312"},      {"x-gbk", "GB2312"},          {"HZ", "GB2312"},
        {"hz-gb-2312", "GB2312"},   {"big5-hkscs", "BIG5"},       {"x-x-big5", "BIG5"}};
    for (const Alias& alias : kAliases)
        if (strCaseCmp(set.c_str(), alias.name) == 0) return alias.family;
    return getDefaultCharSet(set.c_str());
}

std::string likelySet(const std::string& text) {
    if (SearchISO2022KRDesignator(text.c_str())) return "ISO-2022-KR";
    if (SearchISO2022JPDesignator(text.c_str())) return "ISO-2022-JP";
    if (isUtf8(text)) return "UTF-8";
    const char* set = mailGetSrcCharSet(text.c_str());
    return set ? set : "ISO-8859-1";
}

/// Text outside of words. A word that does not end keeps what it has, as the library reads it.
std::string readText(const std::string& text, const CharSet& set) {
    bool hasWord = text.find("=?") != std::string::npos;
    std::string bytes = hasWord ? takeText(mailDecodeSubject(text.c_str())) : text;
    bool needsSet = !isPlainAscii(bytes) && !isWide(set.name());
    return mailToUtf8(bytes, needsSet ? set.name() : "");
}

/// The text of a word and of those that follow it, which end at `end`; `word` becomes the next one
/// behind them, if there are `more`. Only blanks stand between words that belong together, and
/// those of one set may share a character.
std::string readWords(const std::string& value, EncodedWord& word, size_t& end, bool& more) {
    std::string text, bytes = word.bytes;
    for (bool joins = true; joins;) {
        end = word.end;
        std::string set = word.set;
        more = findWord(value, end, word);
        joins = more && value.find_first_not_of(" \t", end) == word.begin;
        if (joins && strCaseCmp(word.set.c_str(), set.c_str()) == 0) {
            bytes += word.bytes;
            continue;
        }
        text += mailToUtf8(bytes, set);
        bytes = word.bytes;
    }
    return text;
}

/// The value in UTF-8; `form` makes of the text of words what shall stand in their place.
template <typename Form>
std::string readValue(const std::string& value, const CharSet& set, Form form) {
    std::string out;
    size_t at = 0;
    EncodedWord word;
    for (bool more = findWord(value, 0, word); more;) {
        out += readText(value.substr(at, word.begin - at), set);
        out += form(readWords(value, word, at, more));
    }
    return out + readText(value.substr(at), set);
}

std::string asWord(const std::string& utf8) {
    constexpr const char* kHex = "0123456789ABCDEF";
    std::string word = std::string("=?") + kNoSet + "?Q?";
    for (char c : utf8) {
        auto byte = static_cast<unsigned char>(c);
        word += {'=', kHex[byte >> 4], kHex[byte & 15]};
    }
    return word + "?=";
}

/// A value that stands in numbered pieces ("name*0*", "name*1") or is extended ("name*"), RFC 2231
/// sections 3 and 4: charset'language'text, percent-coded where the piece's name ends with "*".
std::string extendedValue(const std::map<std::string, std::string>& params,
                          const std::string& name) {
    std::string bytes, set;
    for (int n = -1; n < 1000; n++) {
        std::string piece = n < 0 ? name : name + "*" + std::to_string(n);
        auto plain = params.find(piece), coded = params.find(piece + "*");
        if (n < 0 && coded == params.end()) continue;
        if (coded == params.end() && plain == params.end()) break;
        std::string value = coded == params.end() ? plain->second : coded->second;
        if (coded != params.end()) {
            size_t quote = value.find('\''), second = value.find('\'', quote + 1);
            if (n <= 0 && second != std::string::npos) {
                set = value.substr(0, quote);
                value.erase(0, second + 1);
            }
            value = percentDecoded(value);
        }
        bytes += value;
        if (n < 0) break;
    }
    return mailToUtf8(bytes, set);
}

}  // namespace

std::string mailToUtf8(std::string_view bytes, const std::string& set) {
    std::string text(bytes);
    std::erase(text, '\0');
    if (text.empty() || (isPlainAscii(text) && !isWide(set))) return text;
    std::string from = isKnown(set) ? set : likelySet(text);
    if (isUtfName(from)) return toUtf8(text, from.c_str());
    // Of a set that is one of pages the library would only check the text.
    if (strCaseCmp(getDefaultCharSet(from.c_str()), from.c_str()) == 0) {
        std::string utf8 = toUtf8(text, from.c_str());
        if (utf8.find(kReplacement) == std::string::npos) return utf8;
    }
    if (char* page = mailDecodeCharSet(text.c_str(), from.c_str()))
        return toUtf8(takeText(page), getDefaultCharSet(from.c_str()));
    return toUtf8(text, from.c_str());
}

std::string readHeader(FILE* file, long offset, long size) {
    if (size <= 0 || fseeko(file, offset, SEEK_SET) != 0) return {};
    std::string block(std::min(static_cast<size_t>(size), kHeaderMax), '\0');
    block.resize(fread(block.data(), 1, block.size(), file));
    return block;
}

std::string_view takeLine(std::string_view& text) {
    std::string_view line = text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
    text.remove_prefix(line.size());
    return line;
}

/// One of blanks alone ends a header.
bool isFolded(std::string_view line) {
    return (line.starts_with(' ') || line.starts_with('\t')) &&
           line.find_first_not_of(" \t\r\n") != line.npos;
}

bool isField(std::string_view line, std::string_view name) {
    return line.size() > name.size() && line[name.size()] == ':' &&
           strNCaseCmp(line.data(), name.data(), static_cast<int>(name.size())) == 0;
}

std::string headerValue(std::string_view block, std::string_view name) {
    return headerValues(block, {name})[0];
}

std::vector<std::string> headerValues(std::string_view block,
                                      const std::vector<std::string_view>& names) {
    std::vector<std::string> values(names.size());
    std::vector<bool> found(names.size());
    std::string* value = nullptr;  // of the field that goes on
    size_t left = names.size();
    while (!block.empty()) {
        std::string_view line = takeLine(block);
        if (line.ends_with('\n')) line.remove_suffix(1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        bool isNew = !line.starts_with(' ') && !line.starts_with('\t');
        if (line.empty() || (isNew && left == 0)) break;
        if (isNew) value = nullptr;
        for (size_t i = 0; isNew && i < names.size(); i++) {
            if (found[i] || !isField(line, names[i])) continue;
            found[i] = true;
            left--;
            value = &values[i];
            line.remove_prefix(names[i].size() + 1);
            break;
        }
        if (value) *value += line;
    }
    for (std::string& text : values) text.erase(0, text.find_first_not_of(" \t"));
    return values;
}

std::string headerText(const std::string& value, const CharSet& set) {
    std::string text = readValue(value, set, [](const std::string& words) { return words; });
    std::erase_if(text, [](char c) { return (c >= 0 && c < ' ' && c != '\t') || c == '\x7F'; });
    return text;
}

Addresses headerAddresses(const std::string& value, const CharSet& set) {
    return {mailGetAddrList(readValue(value, set, asWord).c_str()),
            [](MailAddress* list) { mailFreeAddress(&list); }};
}

std::string headerParameter(const std::string& value, const std::string& name,
                            const std::string& set) {
    size_t semicolon = value.find(';');
    if (semicolon == std::string::npos) return {};
    std::string text = value.substr(semicolon + 1);
    MailParam* list = mailParseParams(text.data());
    std::map<std::string, std::string> params;
    for (MailParam* p = list; p; p = p->next) {
        std::string key = strSafeAssign(p->name);
        std::erase_if(key, isBlank);
        strToLwr(key.data());
        params.emplace(key, strSafeAssign(p->value));
    }
    mailFreeParam(&list);
    std::string extended = extendedValue(params, name);
    return extended.empty() ? headerText(params[name], set) : extended;
}

std::string percentDecoded(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); i++) {
        unsigned code = 0;
        const char* digits = text.data() + i + 1;
        bool coded = text[i] == '%' && i + 2 < text.size() &&
                     std::from_chars(digits, digits + 2, code, 16).ptr == digits + 2;
        out += coded ? static_cast<char>(code) : text[i];
        if (coded) i += 2;
    }
    return out;
}

std::string mailPageSet(const std::string& utf8, const std::string& set) {
    std::vector<std::string> candidates = {"EUC-KR", "SHIFT-JIS", "GB2312", "BIG5"};
    if (!isUtfName(set)) {
        std::string family = familyOf(set);
        bool isPageSet = std::count(candidates.begin(), candidates.end(), family) ||
                         strCaseCmp(family.c_str(), "ISO-8859-1") == 0;
        candidates.insert(candidates.begin(), isPageSet ? family : pageLanguage().charSet);
    }
    for (const std::string& candidate : candidates)
        if (fitsInto(utf8, candidate.c_str())) return candidate;
    return {};
}

}  // namespace host
