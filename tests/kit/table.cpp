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
        } else {
            out += c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : c;
        }
    }
    return out;
}

}  // namespace

std::vector<TableRow> table(const std::string& name) {
    std::ifstream in(TEST_DATA "/" + name);
    std::vector<TableRow> rows;
    for (std::string line; std::getline(in, line);) {
        size_t arrow = line.find(" -> ");
        if (line.starts_with("# ") || line.empty()) continue;
        if (arrow == line.npos) abort();
        rows.push_back({unescaped(line.substr(0, arrow)), unescaped(line.substr(arrow + 4))});
    }
    if (rows.empty()) abort();
    return rows;
}

}  // namespace kit
