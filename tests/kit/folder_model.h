#ifndef ATTALVEN_TESTS_KIT_FOLDER_MODEL_H
#define ATTALVEN_TESTS_KIT_FOLDER_MODEL_H

// What a rewrite makes of a folder, written once more from its rules, with nothing of the library:
// lines in memory, one after the other. Tests and fuzzers compare the library with it.

#include <strings.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "mail/folder.h"

namespace kit {

using Lines = std::vector<std::string>;

/// The physical lines, each with its LF; the last one may lack it.
inline Lines linesOf(const std::string& content) {
    Lines lines;
    for (size_t at = 0; at < content.size();) {
        size_t lf = content.find('\n', at);
        size_t end = lf == std::string::npos ? content.size() : lf + 1;
        lines.push_back(content.substr(at, end - at));
        at = end;
    }
    return lines;
}

inline bool isFromLine(const std::string& line) {
    if (line.compare(0, 5, "From ") != 0) return false;
    Lines words;
    std::string rest(line.substr(0, 29999).c_str());
    for (size_t at; (at = rest.find(' ')) != std::string::npos; rest = rest.substr(at + 1))
        words.push_back(rest.substr(0, at));
    words.push_back(rest);
    auto isOneOf = [](const std::string& word, const char* names) {
        return word.size() == 3 && strcasestr(names, ("," + word + ",").c_str());
    };
    auto ends = [&words](size_t n) { return words.size() <= n || words[n].empty(); };
    if (ends(1) || words[1] == "Corvane" || ends(2)) return true;
    if (!isOneOf(words[2], ",Sun,Mon,Tue,Wed,Thu,Fri,Sat,")) return false;
    if (ends(3)) return true;
    if (!isOneOf(words[3], ",Jan,Feb,Mar,Apr,May,Jun,Jul,Aug,Sep,Oct,Nov,Dec,")) return false;
    return ends(4) || (atol(words[4].c_str()) >= 1 && atol(words[4].c_str()) <= 31);
}

struct ModelMessage {
    Lines header, body;
    std::string lineBetween;  // the empty line, "" when there is none
    size_t headerSize() const { return sizeOf(header); }
    size_t size() const { return sizeOf(header) + lineBetween.size() + sizeOf(body); }

  private:
    static size_t sizeOf(const Lines& lines) {
        size_t n = 0;
        for (const std::string& line : lines) n += line.size();
        return n;
    }
};

struct ModelFolder {
    size_t before = 0;  // bytes before the first message
    std::vector<ModelMessage> messages;

    explicit ModelFolder(const std::string& content) {
        for (const std::string& line : linesOf(content)) {
            if (isFromLine(line)) messages.emplace_back();
            if (messages.empty()) {
                before += line.size();
                continue;
            }
            ModelMessage& m = messages.back();
            if (!m.lineBetween.empty())
                m.body.push_back(line);
            else if (line == "\n" || line == "\r\n")
                m.lineBetween = line;
            else
                m.header.push_back(line);
        }
    }

    /// The folder with the status words given: 0x10 read, 0x100 old, 0x1000 leaves a message out.
    std::string rewritten(const std::vector<unsigned>& status) const {
        std::string out;
        for (size_t i = 0; i < messages.size(); i++) {
            if (status[i] & 0x1000) continue;
            std::string own = "Status: ";
            own += status[i] & 0x10 ? "R" : " ";
            own += status[i] & 0x100 ? "O\n" : " \n";
            bool met = false;
            for (const std::string& line : messages[i].header) {
                bool isStatus = strncasecmp(line.c_str(), "Status:", 7) == 0;
                met |= isStatus;
                out += isStatus ? own : line;
            }
            if (out.back() != '\n') out += '\n';
            if (!met) out += own;
            out += '\n';
            for (const std::string& line : messages[i].body) out += line;
        }
        return out;
    }
};

/// Where messages lie: "offset+headerSize/size " of each.
struct Spans {
    std::string text;
    template <typename Number>
    void add(Number offset, Number header, Number size) {
        text += std::to_string(offset) + "+" + std::to_string(header) + "/" + std::to_string(size) +
                " ";
    }
};

inline std::string spans(const ModelFolder& model) {
    Spans all;
    size_t at = model.before;
    for (const ModelMessage& m : model.messages) {
        all.add(at, m.headerSize(), m.size());
        at += m.size();
    }
    return all.text;
}

/// By the index.
inline std::string spans(Fldr* f) {
    Spans all;
    for (int n = 1; n <= fldrMsgMax(f); n++)
        all.add(fldrMsgEntryPos(n, f), fldrMsgHdrSize(n, f), fldrMsgSize(n, f));
    return all.text;
}

/// By a loop of fldrGetMsgSizeInfo().
inline std::string spans(FILE* stream) {
    Spans all;
    int offset, header, size;
    rewind(stream);
    while (fldrGetMsgSizeInfo(&offset, &header, &size, stream)) all.add(offset, header, size);
    return all.text;
}

}  // namespace kit

#endif
