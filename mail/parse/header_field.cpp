// Status, X-Priority, Message-ID and Subject.

#include "header_field.h"

#include "mail/base/sink.h"
#include "mail/codec/encoded_word_decode.h"
#include "mail_mime_field.h"

namespace attalven {

unsigned statusBits(string_view value) {
    unsigned bits = 0;
    for (char c : value) bits |= c == 'O' ? 0x100u : c == 'R' ? 0x10u : 0u;
    return bits;
}

int priorityOf(string_view value) {
    char first = value.empty() ? '\0' : value.front();
    return first >= '1' && first <= '5' ? first - '0' : 3;
}

void readMessageId(string_view value, Text& id) {
    string_view written = betweenBrackets(value);
    id.clear();
    appendWithout(id, written, [](char c) { return isLineBreak(c) || c == '"' || c == '/'; });
    // Links carry the identifier; with such an ending they would name a database file.
    for (string_view ending : {".dbf", ".fpt", ".cdx"}) {
        if (written.find(ending) == string_view::npos) continue;
        id.append("_msgid");
        break;
    }
}

bool readSubject(string_view value, Text& subject) {
    subject.clear();
    if (value.find('\r') == string_view::npos && value.find('\n') == string_view::npos)
        subject.append(value);
    else
        appendOneLine(subject, value);
    if (subject.empty()) return false;
    if (!isPlainValue(subject.view())) {
        OwnedText decoded = decodeWords(subject.view());
        if (!decoded) return subject.fail();
        subject.clear();
        subject.append(decoded.get());
    }
    char* text = subject.c_str();
    if (text && subject.view().find('\t') != string_view::npos)
        std::replace(text, text + subject.size(), '\t', ' ');
    return text != nullptr;
}

}  // namespace attalven
