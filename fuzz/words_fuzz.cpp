// Encoded words: what is written reads back, and every value decodes to a text, wherever it stands.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "mail/codec/encoded_word_decode.h"
#include "mail/mail.h"

namespace {

std::string taken(char* text) {
    if (!text) abort();
    std::string copy = text;
    free(text);
    return copy;
}

void remove(std::string& s, const char* piece) {
    for (size_t at; (at = s.find(piece)) != std::string::npos;)
        s.erase(at, std::string(piece).size());
}

/// Words under a name that no converter knows keep their bytes.
void roundTrip(std::string text, char* (*encode)(const char*, const char*)) {
    std::string words = taken(encode(text.c_str(), "x-fuzz"));
    remove(words, "\n\t");
    if (encode == mailEncodeSubjectQP) remove(text, "\r");
    if (taken(mailDecodeSubject(words.c_str())) != text) abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    text = text.c_str();
    if (text.empty()) return 0;
    std::string value = taken(mailDecodeSubject(text.c_str()));
    if (value !=
        taken(attalven::decodeWords({reinterpret_cast<const char*>(data), size}).release()))
        abort();
    if (value.size() > 3 * text.size() + 64) abort();
    roundTrip(text, mailEncodeSubjectBase64);
    roundTrip(text, mailEncodeSubjectQP);
    const char* sets[] = {"euc-kr", "iso-2022-jp", "kor-utf-8", "cns-utf-8", "hz"};
    for (const char* set : sets) free(mailEncodeSubject(text.c_str(), set, size % 3 + 1));
    return 0;
}
