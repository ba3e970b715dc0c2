// Names of character sets: those that the C library lacks, those that it reads as something else
// than mail means by them, and those that browsers read with a wider table. A name that is not
// listed goes to the C library as it is.

#include "converter_sets.h"

#include "mail/base/ascii.h"

namespace attalven::converter {
namespace {

constexpr Charset plain(const char* name, const char* wide = nullptr, Screen screen = Screen::kNone,
                        uint8_t wideLead = 0) {
    return {name, name, wide, wide, Shape::kStateless, screen, wideLead};
}

constexpr Charset kEucKr = plain("EUC-KR", "UHC", Screen::kKorean);
constexpr Charset kShiftJis = plain("SJIS", "CP932", Screen::kShiftJis);
constexpr Charset kEucJp = plain("EUC-JP", "EUC-JP-MS", Screen::kJapanese);
// GBK is for reading. Of writing it lends the middle dot and the dash, which GB2312 has in row 1
// and the C library maps to other characters than everybody types.
constexpr Charset kGb2312 = plain("EUC-CN", "GBK", Screen::kNone, 0xA1);
constexpr Charset kBig5 = plain("BIG5", "BIG5-HKSCS", Screen::kBig5);
constexpr Charset kHz = {"EUC-CN", "EUC-CN", nullptr, nullptr, Shape::kHz, Screen::kNone, 0};
constexpr Charset kIso2022Jp = {
    .read = "ISO-2022-JP", .write = "ISO-2022-JP", .shape = Shape::kShifting};
// Between ISO-2022-JP and ISO-2022-JP-2 (RFC 2237): read as the larger, written as the smaller.
constexpr Charset kIso2022Jp1 = {
    .read = "ISO-2022-JP-2", .write = "ISO-2022-JP", .shape = Shape::kShifting};
constexpr Charset kIso2022Jp2 = {
    .read = "ISO-2022-JP-2", .write = "ISO-2022-JP-2", .shape = Shape::kShifting};
// Its header sequence must come once only, so nobody but the C library may end its shift state.
constexpr Charset kIso2022Kr = {.read = "ISO-2022-KR", .write = "ISO-2022-KR"};
constexpr Charset kAscii = plain("US-ASCII");
constexpr Charset kUtf8 = plain("UTF-8");
constexpr Charset kLatin1 = plain("ISO-8859-1");
constexpr Charset kUhc = plain("UHC"), kCp932 = plain("CP932"), kEucJpMs = plain("EUC-JP-MS");
constexpr Charset kGbk = plain("GBK"), kWindows1252 = plain("CP1252");
constexpr Charset kIso88596 = plain("ISO-8859-6"), kIso88598 = plain("ISO-8859-8");
constexpr Charset kMacRoman = plain("MACINTOSH"), kMacCyrillic = plain("MAC-CYRILLIC");
constexpr Charset kThai = plain("CP874");
// Holds a letter back until it knows whether a combining mark follows.
constexpr Charset kHkscs = {.read = "BIG5-HKSCS", .write = "BIG5-HKSCS"};
constexpr Charset kChineseRoman = {.read = "GB_1988-80", .write = "GB_1988-80"};

struct Name {
    std::string_view name;
    const Charset* set;
};
constexpr Name kNames[] = {
    // Korean
    {"EUC-KR", &kEucKr},
    {"EUCKR", &kEucKr},
    {"CSEUCKR", &kEucKr},
    {"X-EUC-KR", &kEucKr},
    {"KS_C_5601-1987", &kEucKr},
    {"KS_C_5601-1989", &kEucKr},
    {"KSC_5601", &kEucKr},
    {"KSC5601", &kEucKr},
    {"CSKSC56011987", &kEucKr},
    {"KOREAN", &kEucKr},
    {"ISO-IR-149", &kEucKr},
    {"WINDOWS-949", &kUhc},
    {"X-WINDOWS-949", &kUhc},
    {"CP949", &kUhc},
    {"MS949", &kUhc},
    {"UHC", &kUhc},
    {"ISO-2022-KR", &kIso2022Kr},
    {"CSISO2022KR", &kIso2022Kr},
    // Japanese. In mail "JP" marks Shift-JIS text; the 7-bit set that shares the name is a part of
    // it.
    {"SHIFT-JIS", &kShiftJis},
    {"SHIFT_JIS", &kShiftJis},
    {"SJIS", &kShiftJis},
    {"X-SJIS", &kShiftJis},
    {"MS_KANJI", &kShiftJis},
    {"CSSHIFTJIS", &kShiftJis},
    {"JP", &kShiftJis},
    {"WINDOWS-31J", &kCp932},
    {"CSWINDOWS31J", &kCp932},
    {"CP932", &kCp932},
    {"MS932", &kCp932},
    {"X-MS-CP932", &kCp932},
    {"EUC-JP", &kEucJp},
    {"EUCJP", &kEucJp},
    {"X-EUC-JP", &kEucJp},
    {"X-EUC", &kEucJp},
    {"CSEUCPKDFMTJAPANESE", &kEucJp},
    {"EXTENDED_UNIX_CODE_PACKED_FORMAT_FOR_JAPANESE", &kEucJp},
    {"CP51932", &kEucJpMs},
    {"ISO-2022-JP", &kIso2022Jp},
    {"CSISO2022JP", &kIso2022Jp},
    {"ISO-2022-JP-1", &kIso2022Jp1},
    {"ISO-2022-JP-2", &kIso2022Jp2},
    {"CSISO2022JP2", &kIso2022Jp2},
    // Chinese
    {"GB2312", &kGb2312},
    {"EUC-CN", &kGb2312},
    {"CN-GB", &kGb2312},
    {"CSGB2312", &kGb2312},
    {"GB_2312-80", &kGb2312},
    {"CSISO58GB231280", &kGb2312},
    {"ISO-IR-58", &kGb2312},
    {"CHINESE", &kGb2312},
    {"X-EUC-CN", &kGb2312},
    {"CSISO57GB1988", &kChineseRoman},
    {"GBK", &kGbk},
    {"X-GBK", &kGbk},
    {"CP936", &kGbk},
    {"MS936", &kGbk},
    {"WINDOWS-936", &kGbk},
    {"HZ", &kHz},
    {"HZ-GB-2312", &kHz},
    {"BIG5", &kBig5},
    {"BIG-5", &kBig5},
    {"BIGFIVE", &kBig5},
    {"BIG-FIVE", &kBig5},
    {"CSBIG5", &kBig5},
    {"CN-BIG5", &kBig5},
    {"UNICODEBIG", &kBig5},  // a member of the Chinese family, not the 16-bit form of Unicode
    {"X-X-BIG5", &kBig5},
    {"BIG5-ETEN", &kBig5},
    {"CP950", &kBig5},
    {"WINDOWS-950", &kBig5},
    {"BIG5-HKSCS", &kHkscs},
    {"BIG5HKSCS", &kHkscs},
    // the rest
    {"UTF-8", &kUtf8},
    {"UTF8", &kUtf8},
    {"UNICODE-1-1-UTF-8", &kUtf8},
    {"US-ASCII", &kAscii},
    {"ASCII", &kAscii},
    {"ANSI_X3.4-1968", &kAscii},
    {"ISO-8859-1", &kLatin1},
    {"ISO8859-1", &kLatin1},
    {"LATIN1", &kLatin1},
    {"WINDOWS-1252", &kWindows1252},
    {"X-CP1252", &kWindows1252},
    {"ISO-8859-6-I", &kIso88596},
    {"ISO-8859-6-E", &kIso88596},
    {"ISO-8859-8-I", &kIso88598},
    {"ISO-8859-8-E", &kIso88598},
    {"X-MAC-ROMAN", &kMacRoman},
    {"X-MAC-CYRILLIC", &kMacCyrillic},
    {"DOS-874", &kThai},
};

}  // namespace

const Charset* findCharset(std::string_view name) {
    for (const Name& row : kNames)
        if (equalNoCase(name, row.name)) return row.set;
    return nullptr;
}

}  // namespace attalven::converter
