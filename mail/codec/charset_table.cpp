// The tables of character sets. Names come from mail and forms; what is no name, and what would
// open a converter that no mail needs and hostile mail could use, is refused before it reaches the
// converter.

#include "charset_table.h"

#include "mail/base/charset_name.h"

namespace attalven {
namespace {

struct Member {
    string_view name, page;
};
constexpr string_view kKorean = "EUC-KR", kJapanese = "SHIFT-JIS", kSimplified = "GB2312",
                      kTraditional = "BIG5", kHz = "HZ";
constexpr Member kFamilies[] = {
    {"EUC-KR", kKorean},
    {"EUCKR", kKorean},
    {"ISO-2022-KR", kKorean},
    {"CSISO2022KR", kKorean},
    {"CSEUCKR", kKorean},
    {"SHIFT-JIS", kJapanese},
    {"SJIS", kJapanese},
    {"JP", kJapanese},
    {"EUC-JP", kJapanese},
    {"EUCJP", kJapanese},
    {"ISO-2022-JP", kJapanese},
    {"ISO-2022-JP-1", kJapanese},
    {"ISO-2022-JP-2", kJapanese},
    {"CSISO2022JP", kJapanese},
    {"ISO646-JP", kJapanese},
    {"CSISO2022JP2", kJapanese},
    {"EXTENDED_UNIX_CODE_PACKED_FORMAT_FOR_JAPANESE", kJapanese},
    {"JIS_C6220-1969-RO", kJapanese},
    {"ISO-IR-14", kJapanese},
    {"CSISO14JISC6220RO", kJapanese},
    {"CSEUCPKDFMTJAPANESE", kJapanese},
    {"GB2312", kSimplified},
    {"CN-GB", kSimplified},
    {"GB_1988-80", kSimplified},
    {"CSISO57GB1988", kSimplified},
    {"CSGB2312", kSimplified},
    {"BIG5", kTraditional},
    {"BIG-5", kTraditional},
    {"BIGFIVE", kTraditional},
    {"BIG-FIVE", kTraditional},
    {"CSBIG5", kTraditional},
    {"CN-BIG5", kTraditional},
    {"UNICODEBIG", kTraditional},
    {"HZ", kHz},
    {"HZ-GB-2312", kHz},
};

constexpr string_view kUtfCandidates[] = {kKorean, kJapanese, kSimplified, kTraditional};

// "cnt" and "cns" are what existing settings hold, although they read like the other way round.
constexpr Member kUtfSending[] = {
    {"jpn-utf-", kJapanese},
    {"kor-utf-", kKorean},
    {"cnt-utf-", kSimplified},
    {"cns-utf-", kTraditional},
};

// Starts of names, hyphens left out, of stateful sets that no mail is written in and whose
// converters had faults that a text alone could trigger (CVE-2024-2961 and assertions).
constexpr string_view kDenied[] = {"ISO2022CNEXT", "IBM1364",   "CP1364",     "CSIBM1364",
                                   "IBM1390",      "CP1390",    "CSIBM1390",  "IBM1399",
                                   "CP1399",       "CSIBM1399", "ISO2022JP3", "UTF7IMAP"};

bool startsDenied(string_view name, string_view denied) {
    size_t matched = 0;
    for (char c : name) {
        if (c == '-' || c == '_') continue;
        if (toLower(c) != toLower(denied[matched])) return false;
        if (++matched == denied.size()) return true;
    }
    return false;
}

}  // namespace

string_view pageCharset(string_view name) {
    for (const Member& member : kFamilies)
        if (equalNoCase(member.name, name)) return member.page;
    return head(name, 30);
}

std::span<const string_view> utfCandidates() {
    return kUtfCandidates;
}

string_view utfPageCharset(string_view name) {
    for (const Member& sending : kUtfSending)
        if (startsWithNoCase(name, sending.name)) return sending.page;
    return {};
}

bool isCharsetName(string_view name) {
    if (!isCharsetForm(name)) return false;
    // The denied names start with one of these.
    if (string_view("ICUicu").find(name.front()) == string_view::npos) return true;
    for (string_view denied : kDenied)
        if (startsDenied(name, denied)) return false;
    return true;
}

}  // namespace attalven
