// Names of character sets: those that the C library lacks, those that it reads as something else
// than mail means by them, and those that browsers read with a wider table. A name that is not
// listed goes to the C library as it is.

#include "converter_sets.h"

namespace attalven::converter {
namespace {

constexpr Charset plain(const char* name, const char* wide = nullptr, Screen screen = Screen::none,
                        uint8_t wideLead = 0) {
    return {name, name, wide, wide, Shape::stateless, screen, wideLead};
}

constexpr Charset eucKr = plain("EUC-KR", "UHC", Screen::korean);
constexpr Charset shiftJis = plain("SJIS", "CP932", Screen::shiftJis);
constexpr Charset eucJp = plain("EUC-JP", "EUC-JP-MS", Screen::japanese);
// GBK is for reading. Of writing it lends the middle dot and the dash, which GB2312 has in row 1
// and the C library maps to other characters than everybody types.
constexpr Charset gb2312 = plain("EUC-CN", "GBK", Screen::none, 0xA1);
constexpr Charset big5 = plain("BIG5", "BIG5-HKSCS", Screen::big5);
constexpr Charset hz = {"EUC-CN", "EUC-CN", nullptr, nullptr, Shape::hz, Screen::none, 0};
constexpr Charset iso2022Jp = {
    .read = "ISO-2022-JP", .write = "ISO-2022-JP", .shape = Shape::shifting};
// Between ISO-2022-JP and ISO-2022-JP-2 (RFC 2237): read as the larger, written as the smaller.
constexpr Charset iso2022Jp1 = {
    .read = "ISO-2022-JP-2", .write = "ISO-2022-JP", .shape = Shape::shifting};
constexpr Charset iso2022Jp2 = {
    .read = "ISO-2022-JP-2", .write = "ISO-2022-JP-2", .shape = Shape::shifting};
// Its header sequence must come once only, so nobody but the C library may end its shift state.
constexpr Charset iso2022Kr = {.read = "ISO-2022-KR", .write = "ISO-2022-KR"};
constexpr Charset ascii = plain("US-ASCII");
constexpr Charset utf8 = plain("UTF-8");
constexpr Charset latin1 = plain("ISO-8859-1");
constexpr Charset uhc = plain("UHC"), cp932 = plain("CP932"), eucJpMs = plain("EUC-JP-MS");
constexpr Charset gbk = plain("GBK"), windows1252 = plain("CP1252");
constexpr Charset iso88596 = plain("ISO-8859-6"), iso88598 = plain("ISO-8859-8");
constexpr Charset macRoman = plain("MACINTOSH"), macCyrillic = plain("MAC-CYRILLIC");
constexpr Charset thai = plain("CP874");
// Holds a letter back until it knows whether a combining mark follows.
constexpr Charset hkscs = {.read = "BIG5-HKSCS", .write = "BIG5-HKSCS"};
constexpr Charset chineseRoman = {.read = "GB_1988-80", .write = "GB_1988-80"};

struct Name {
    std::string_view name;
    const Charset* set;
};
constexpr Name names[] = {
    // Korean
    {"EUC-KR", &eucKr},
    {"EUCKR", &eucKr},
    {"CSEUCKR", &eucKr},
    {"X-EUC-KR", &eucKr},
    {"KS_C_5601-1987", &eucKr},
    {"KS_C_5601-1989", &eucKr},
    {"KSC_5601", &eucKr},
    {"KSC5601", &eucKr},
    {"CSKSC56011987", &eucKr},
    {"KOREAN", &eucKr},
    {"ISO-IR-149", &eucKr},
    {"WINDOWS-949", &uhc},
    {"X-WINDOWS-949", &uhc},
    {"CP949", &uhc},
    {"MS949", &uhc},
    {"UHC", &uhc},
    {"ISO-2022-KR", &iso2022Kr},
    {"CSISO2022KR", &iso2022Kr},
    // Japanese. In mail "JP" marks Shift-JIS text; the 7-bit set that shares the name is a part of
    // it.
    {"SHIFT-JIS", &shiftJis},
    {"SHIFT_JIS", &shiftJis},
    {"SJIS", &shiftJis},
    {"X-SJIS", &shiftJis},
    {"MS_KANJI", &shiftJis},
    {"CSSHIFTJIS", &shiftJis},
    {"JP", &shiftJis},
    {"WINDOWS-31J", &cp932},
    {"CSWINDOWS31J", &cp932},
    {"CP932", &cp932},
    {"MS932", &cp932},
    {"X-MS-CP932", &cp932},
    {"EUC-JP", &eucJp},
    {"EUCJP", &eucJp},
    {"X-EUC-JP", &eucJp},
    {"X-EUC", &eucJp},
    {"CSEUCPKDFMTJAPANESE", &eucJp},
    {"EXTENDED_UNIX_CODE_PACKED_FORMAT_FOR_JAPANESE", &eucJp},
    {"CP51932", &eucJpMs},
    {"ISO-2022-JP", &iso2022Jp},
    {"CSISO2022JP", &iso2022Jp},
    {"ISO-2022-JP-1", &iso2022Jp1},
    {"ISO-2022-JP-2", &iso2022Jp2},
    {"CSISO2022JP2", &iso2022Jp2},
    // Chinese
    {"GB2312", &gb2312},
    {"EUC-CN", &gb2312},
    {"CN-GB", &gb2312},
    {"CSGB2312", &gb2312},
    {"GB_2312-80", &gb2312},
    {"CSISO58GB231280", &gb2312},
    {"ISO-IR-58", &gb2312},
    {"CHINESE", &gb2312},
    {"X-EUC-CN", &gb2312},
    {"CSISO57GB1988", &chineseRoman},
    {"GBK", &gbk},
    {"X-GBK", &gbk},
    {"CP936", &gbk},
    {"MS936", &gbk},
    {"WINDOWS-936", &gbk},
    {"HZ", &hz},
    {"HZ-GB-2312", &hz},
    {"BIG5", &big5},
    {"BIG-5", &big5},
    {"BIGFIVE", &big5},
    {"BIG-FIVE", &big5},
    {"CSBIG5", &big5},
    {"CN-BIG5", &big5},
    {"UNICODEBIG", &big5},  // a member of the Chinese family, not the 16-bit form of Unicode
    {"X-X-BIG5", &big5},
    {"BIG5-ETEN", &big5},
    {"CP950", &big5},
    {"WINDOWS-950", &big5},
    {"BIG5-HKSCS", &hkscs},
    {"BIG5HKSCS", &hkscs},
    // the rest
    {"UTF-8", &utf8},
    {"UTF8", &utf8},
    {"UNICODE-1-1-UTF-8", &utf8},
    {"US-ASCII", &ascii},
    {"ASCII", &ascii},
    {"ANSI_X3.4-1968", &ascii},
    {"ISO-8859-1", &latin1},
    {"ISO8859-1", &latin1},
    {"LATIN1", &latin1},
    {"WINDOWS-1252", &windows1252},
    {"X-CP1252", &windows1252},
    {"ISO-8859-6-I", &iso88596},
    {"ISO-8859-6-E", &iso88596},
    {"ISO-8859-8-I", &iso88598},
    {"ISO-8859-8-E", &iso88598},
    {"X-MAC-ROMAN", &macRoman},
    {"X-MAC-CYRILLIC", &macCyrillic},
    {"DOS-874", &thai},
};

constexpr bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
constexpr char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
}

bool sameName(std::string_view given, std::string_view listed) {
    if (given.size() != listed.size()) return false;
    for (size_t i = 0; i < given.size(); i++)
        if (upper(given[i]) != listed[i]) return false;
    return true;
}

}  // namespace

const Charset* findCharset(std::string_view name) {
    for (const Name& row : names)
        if (sameName(name, row.name)) return row.set;
    return nullptr;
}

bool isCharsetName(std::string_view name) {
    if (name.empty() || name.size() > 64) return false;
    for (char c : name)
        if (!isLetter(c) && !(c >= '0' && c <= '9') &&
            std::string_view("._:+-").find(c) == std::string_view::npos)
            return false;
    return true;
}

}  // namespace attalven::converter
