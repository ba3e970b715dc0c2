#include "table.h"

#include <cstdlib>
#include <fstream>

namespace kit {
namespace {

std::string unescaped(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] != '\\') {
            out += text[i];
            continue;
        }
        char c = text.at(++i);
        if (c == 'x') {
            out += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else if (c == '{') {
            size_t blank = text.find(' ', i), end = text.find('}', i);
            std::string piece = unescaped(text.substr(blank + 1, end - blank - 1));
            for (int n = std::stoi(text.substr(i + 1)); n > 0; n--) out += piece;
            i = end;
        } else {
            out += c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : c;
        }
    }
    return out;
}

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> parts;
    size_t at = 0;
    for (size_t bar; (bar = text.find(" | ", at)) != text.npos; at = bar + 3)
        parts.push_back(unescaped(text.substr(at, bar - at)));
    parts.push_back(unescaped(text.substr(at)));
    return parts;
}

}  // namespace

std::vector<TableRow> table(const std::string& name) {
    std::ifstream in(TEST_DATA "/" + name);
    std::vector<TableRow> rows;
    std::string section, comment;
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        number++;
        size_t arrow = (line + " ").find(" -> ");
        if (line.starts_with("# ")) {
            comment = line.substr(1);
        } else if (line.starts_with('[') && line.ends_with(']') && arrow == line.npos) {
            section = line.substr(1, line.size() - 2);
            comment.clear();
        } else if (!line.empty()) {
            std::string input = line.substr(0, arrow);
            std::string expected = line.substr(std::min(line.size(), input.size() + 4));
            rows.push_back({unescaped(input), unescaped(expected), section, split(input),
                            name + ":" + std::to_string(number) + comment});
        }
    }
    if (rows.empty()) abort();
    return rows;
}

}  // namespace kit
