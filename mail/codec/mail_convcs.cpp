// Conversion between character sets through the support library's converter: the choice of source
// and target, and one conversion of a whole text. Input is read where it stands and output grows in
// one block, as far as the text needs; the shift state of the target is closed, so that mail text
// ends in ASCII. A text with one invalid byte does not convert at all: the callers show it as it
// is.

#include <cerrno>

#include "charset_table.h"
#include "mail/base/bounded_text.h"
#include "mail/base/charset_name.h"
#include "mail/base/text.h"
#include "mail/codec.h"
#include "support/support.h"

namespace attalven {
namespace {

/// An open conversion, closed at the end of its block.
class Conversion {
  public:
    Conversion(string_view target, string_view source) {
        if (!isCharsetName(target) || !isCharsetName(source)) return;
        BoundedText<kCharsetNameMax> to, from;
        to.assign(target);
        from.assign(source);
        cd_ = msiconv_open(to.c_str(), from.c_str());
    }
    ~Conversion() {
        if (isOpen()) msiconv_close(cd_);
    }
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;

    bool isOpen() const { return cd_ != none(); }
    OwnedText convert(string_view text);

  private:
    static msiconv_t none() { return reinterpret_cast<msiconv_t>(-1); }
    enum class Step { kDone, kFull, kFailed };
    Step step(Text& out, char** in, size_t* left, size_t room);

    msiconv_t cd_ = none();
};

/// One call of the converter with `room` bytes for its output. An incomplete character at the end
/// is dropped.
Conversion::Step Conversion::step(Text& out, char** in, size_t* left, size_t room) {
    char* area = out.room(room);
    if (!area) return Step::kFailed;
    char* to = area;
    size_t before = left ? *left : 0;
    size_t result = msiconv(cd_, in, left, &to, &room);
    int error = result == static_cast<size_t>(-1) ? errno : 0;
    out.commit(static_cast<size_t>(to - area));
    if (!error || error == EINVAL) return Step::kDone;
    bool moved = to > area || (left && *left < before);
    return error == E2BIG && moved ? Step::kFull : Step::kFailed;
}

OwnedText Conversion::convert(string_view text) {
    msiconv(cd_, nullptr, nullptr, nullptr, nullptr);
    Text out;
    char* in = const_cast<char*>(text.data());
    size_t left = text.size();
    Step got;
    do {
        // Two bytes to three is what double-byte text takes in UTF-8; the rest is for escape
        // sequences.
        got = step(out, &in, &left, left + left / 2 + 64);
    } while (got == Step::kFull);
    if (got == Step::kDone) got = step(out, nullptr, nullptr, 16);
    return got == Step::kDone ? OwnedText(out.take()) : nullptr;
}

OwnedText convert(string_view target, string_view source, string_view text) {
    Conversion conversion(target, source);
    return conversion.isOpen() && !text.empty() ? conversion.convert(text) : nullptr;
}

OwnedText fromUtf(string_view text, string_view charset) {
    for (string_view page : utfCandidates())
        if (OwnedText converted = convert(page, charset, text)) return converted;
    return nullptr;
}

OwnedText decodeTolerantly(int (*decode)(char*, const char*), const char* text) {
    auto decoded = allocate<char>(2 * viewOf(text).size() + 1);
    if (decoded) decode(decoded.get(), text);
    return decoded;
}

OwnedText toPage(const char* text, string_view charset) {
    if (startsWithNoCase(charset, "utf-")) return fromUtf(text, charset);
    if (OwnedText converted = convert(pageCharset(charset), charset, text)) return converted;
    if (equalNoCase(charset, "iso-2022-kr")) return decodeTolerantly(DecodeISO2022KR, text);
    if (equalNoCase(charset, "iso-2022-jp")) return decodeTolerantly(DecodeISO2022JP, text);
    return nullptr;
}

OwnedText fromPage(string_view text, string_view charset) {
    string_view page = pageCharset(charset);
    string_view utfPage = utfPageCharset(charset);
    if (utfPage.empty()) return convert(charset, page, text);
    return convert(tail(page, kLanguagePrefix), utfPage, text);
}

constexpr string_view kSourceCandidates[] = {"EUC-KR", "EUC-JP", "GB2312", "BIG5"};

struct Language {
    string_view code, charset;
};
constexpr Language kLanguages[] = {
    {"kor", "euc-kr"}, {"eng", "iso-8859-1"}, {"jpn", "iso-2022-jp"}, {"chn", "gb2312"}};

// Results of the three operations below, each valid until its next call.
BoundedText<30> defaultCharSet;
BoundedText<100> srcCharSet;
BoundedText<20> langCharSet;

}  // namespace
}  // namespace attalven

using namespace attalven;

char* strConvCharSet(const char* target, const char* source, const char* text) {
    return convert(viewOf(target), viewOf(source), viewOf(text)).release();
}

char* getDefaultCharSet(const char* name) {
    string_view page = pageCharset(viewOf(name));
    if (page.data() != defaultCharSet.data()) defaultCharSet.assign(page);  // its own last result
    return defaultCharSet.data();
}

char* mailDecodeCharSet(const char* text, const char* charset) {
    return text ? toPage(text, viewOf(charset)).release() : nullptr;
}

char* mailEncodeCharSet(const char* text, const char* charset) {
    return fromPage(viewOf(text), viewOf(charset)).release();
}

char* mailGetSrcCharSet(const char* text) {
    for (string_view candidate : kSourceCandidates) {
        if (!convert(candidate, candidate, viewOf(text))) continue;
        srcCharSet.assign(candidate);
        return srcCharSet.data();
    }
    return nullptr;
}

char* mailGetLangCharSet(const char* lang) {
    langCharSet.assign("iso-8859-1");
    for (const Language& row : kLanguages)
        if (row.code == viewOf(lang)) langCharSet.assign(row.charset);
    return langCharSet.data();
}
