#include "encoded_word.h"

#include <algorithm>

#include "mail/mail.h"

namespace host {

namespace {

std::string decoded(char letter, std::string_view text) {
    std::string coded(text), bytes(text.size() + 4, '\0');
    if (letter == 'b' || letter == 'B') {
        DecodeBase64(bytes.data(), coded.c_str());
    } else {
        std::replace(coded.begin(), coded.end(), '_', ' ');
        DecodeQP(bytes.data(), coded.c_str());
    }
    bytes.resize(bytes.find('\0'));
    return bytes;
}

}  // namespace

bool findWord(std::string_view value, size_t at, EncodedWord& word) {
    for (; (at = value.find("=?", at)) != value.npos; at += 2) {
        size_t letter = value.find('?', at + 2) + 1;
        if (letter == 0 || letter + 1 >= value.size()) return false;
        bool isKnown = std::string_view("bBqQ").find(value[letter]) != value.npos;
        if (value[letter + 1] != '?' || !isKnown) continue;
        size_t text = letter + 2, end = value.find("?=", text);
        if (end == value.npos) return false;
        std::string_view set = value.substr(at + 2, letter - at - 3);
        word = {at, end + 2, std::string(set.substr(0, set.find('*'))),
                decoded(value[letter], value.substr(text, end - text))};
        return true;
    }
    return false;
}

}  // namespace host
