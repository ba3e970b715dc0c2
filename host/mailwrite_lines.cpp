#include "mailwrite_lines.h"

#include <algorithm>
#include <cstdlib>

#include "kit/encoded_word.h"
#include "kit/text.h"
#include "mail/mail.h"
#include "support/support.h"

namespace host {

namespace {

constexpr size_t kWordBytes = 42;  // of one word, which then has at most 75 characters

bool isBlank(const std::string& text, size_t begin, size_t end) {
    size_t other = text.find_first_not_of(" \t\n", begin);
    return other >= end;
}

std::string wholeWords(const std::string& utf8, const std::string& set) {
    std::string words, bytes, held;
    auto write = [&] {
        words += words.empty() ? "" : "\n\t";
        words += takeText(mailEncodeSubjectBase64(bytes.c_str(), set.c_str()));
    };
    for (size_t at = 0, next; at < utf8.size(); at = next) {
        for (next = at + 1; next < utf8.size() && (utf8[next] & 0xC0) == 0x80;) next++;
        std::string character = utf8.substr(at, next - at);
        auto inSet = [&](const std::string& text) {
            return takeText(strConvCharSet(set.c_str(), "UTF-8", text.c_str()));
        };
        std::string longer = inSet(held + character);
        if (longer.size() > kWordBytes) {
            write();
            held.clear();
            longer = inSet(character);
        }
        held += character;
        bytes = longer;
    }
    write();
    return words;
}

/// Copies header lines and body lines of an entry, field by field.
class Copier {
  public:
    Copier(CopyFor purpose, FILE* out) : purpose_(purpose), out_(out) {}

    void line(const std::string& text) {
        if (!inHeader_) return bodyLine(text);
        if (text[0] == ' ' || text[0] == '\t') {
            field_ += text;
            return;
        }
        flush();
        if (text == "\n") {
            inHeader_ = false;
            write(text);
        } else {
            field_ = text;
        }
    }
    void flush() {
        if (boundary_.empty() && strNCaseCmp(field_.c_str(), "Content-Type:", 13) == 0) {
            size_t begin = field_.find("boundary=\"");
            if (begin != std::string::npos)
                boundary_ = "--" +
                            field_.substr(begin + 10, field_.find('"', begin + 10) - begin - 10) +
                            "\n";
        }
        write(withWholeWords(field_));
        field_.clear();
    }

  private:
    void bodyLine(const std::string& text) {
        if (purpose_ == CopyFor::kFolder && text.starts_with("From ")) write(">");
        write(text);
        inHeader_ = !boundary_.empty() && text == boundary_;
    }
    void write(const std::string& text) { fwrite(text.data(), 1, text.size(), out_); }

    CopyFor purpose_;
    FILE* out_;
    bool inHeader_ = true;
    std::string field_, boundary_;
};

}  // namespace

std::string withWholeWords(const std::string& value) {
    std::string out;
    size_t at = 0;
    EncodedWord word;
    for (bool more = findWord(value, 0, word); more;) {
        EncodedWord run = word;
        int words = 1;
        while ((more = findWord(value, run.end, word)) && word.set == run.set &&
               isBlank(value, run.end, word.begin)) {
            run.bytes += word.bytes;
            run.end = word.end;
            words++;
        }
        std::string utf8 = toUtf8(run.bytes, run.set.c_str());
        bool isRun = words > 1 && utf8.find(kReplacement) == std::string::npos;
        out += value.substr(at, run.begin - at);
        out += isRun ? wholeWords(utf8, run.set) : value.substr(run.begin, run.end - run.begin);
        at = run.end;
    }
    return out + value.substr(at);
}

void copyMessage(FILE* in, const std::string& fields, CopyFor purpose, FILE* out) {
    rewind(in);
    Copier copier(purpose, out);
    char* line = nullptr;
    size_t room = 0;
    bool isFirst = true;
    for (ssize_t n; (n = getline(&line, &room, in)) > 0; isFirst = false) {
        std::string text(line, static_cast<size_t>(n));
        if (!isFirst) {
            copier.line(text);
            continue;
        }
        fwrite(text.data(), 1, text.size(), out);
        fwrite(fields.data(), 1, fields.size(), out);
    }
    copier.flush();
    free(line);
}

}  // namespace host
