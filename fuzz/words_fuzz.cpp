// Encoded words: what is written reads back, and every value decodes to a text, wherever it stands.

#include "fuzz.h"
#include "mail/codec/encoded_word_decode.h"
#include "mail/mail.h"

namespace {

using fuzz::require, fuzz::taken;

void remove(std::string& s, const char* piece) {
    for (size_t at; (at = s.find(piece)) != std::string::npos;)
        s.erase(at, std::string(piece).size());
}

/// Words under a name that no converter knows keep their bytes.
void roundTrip(std::string text, char* (*encode)(const char*, const char*)) {
    std::string words = taken(encode(text.c_str(), "x-fuzz"));
    remove(words, "\n\t");
    if (encode == mailEncodeSubjectQP) remove(text, "\r");
    require(taken(mailDecodeSubject(words.c_str())) == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string bytes = fuzz::textOf(data, size), text = bytes.c_str();
    if (text.empty()) return 0;
    std::string value = taken(mailDecodeSubject(text.c_str()));
    require(value == taken(attalven::decodeWords(bytes).release()));
    require(value.size() <= 3 * text.size() + 64);
    roundTrip(text, mailEncodeSubjectBase64);
    roundTrip(text, mailEncodeSubjectQP);
    const char* sets[] = {"euc-kr", "iso-2022-jp", "kor-utf-8", "cns-utf-8", "hz"};
    for (const char* set : sets) free(mailEncodeSubject(text.c_str(), set, size % 3 + 1));
    return 0;
}
