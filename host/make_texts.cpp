// make_texts SOURCE TARGET: makes from SOURCE/templates/*.html and SOURCE/texts/*.tsv what a site
// and its programs read, below TARGET:
//
//   template/<language>1/*.html   each template with its {{labels}} filled, in the page character
//                                 set of the language
//   conf/msg.<language>           the numbered texts, to be added to the site's message table
//   static/*                      as it is
//   include/host_texts.h          the numbers by name: "session_ended" is kTextSessionEnded
//
// Stops at the first row or label that is wrong.

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "kit/language.h"
#include "kit/text.h"

namespace host {

namespace {

namespace fs = std::filesystem;

struct Row {
    int number;  // 0: a label of templates only
    std::array<std::string, 4> texts;
};
using Rows = std::map<std::string, Row>;

[[noreturn]] void fail(const std::string& where, const std::string& what) {
    throw std::runtime_error(where + ": " + what);
}

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    if (!in) fail(path, "cannot be read");
    return content.str();
}

/// A file that has the content already stays as it is, so that nothing is built again for it.
void writeFile(const fs::path& path, const std::string& content) {
    if (fs::exists(path) && readFile(path) == content) return;
    std::ofstream out(path, std::ios::binary);
    out << content;
    out.close();
    if (!out) fail(path, "cannot be written");
}

std::vector<fs::path> filesOf(const fs::path& folder, const char* extension) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        if (entry.path().extension() == extension || !*extension) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<std::string> columnsOf(const std::string& line) {
    std::vector<std::string> columns;
    std::istringstream in(line);
    for (std::string column; std::getline(in, column, '\t');) columns.push_back(column);
    return columns;
}

/// name TAB number TAB one text for each language; "#" starts a comment.
void readTexts(const fs::path& path, Rows& rows) {
    std::istringstream lines(readFile(path));
    int n = 0;
    for (std::string line; std::getline(lines, line);) {
        std::string where = path.filename().string() + ":" + std::to_string(++n);
        if (line.empty() || line[0] == '#') continue;
        std::vector<std::string> columns = columnsOf(line);
        if (columns.size() != 6) fail(where, "a row has a name, a number and four texts");
        Row row{columns[1].empty() ? 0 : std::stoi(columns[1]), {}};
        std::copy(columns.begin() + 2, columns.end(), row.texts.begin());
        for (size_t i = 0; i < languages().size(); i++) {
            if (row.texts[i].empty() || !isUtf8(row.texts[i])) fail(where, "an empty or bad text");
            if (row.number && !fitsInto(row.texts[i], languages()[i].charSet))
                fail(where, std::string("no text in ") + languages()[i].charSet);
        }
        if (!rows.emplace(columns[0], row).second) fail(where, columns[0] + " stands twice");
    }
}

void checkNumbers(const Rows& rows) {
    std::map<int, std::string> names;
    for (const auto& [name, row] : rows)
        if (row.number && !names.emplace(row.number, name).second)
            fail(name, "has the number of " + names[row.number]);
}

/// The template with the texts of its labels, escaped.
std::string filled(const std::string& content, const Rows& rows, size_t language,
                   const std::string& where) {
    std::string out;
    size_t at = 0;
    for (size_t begin; (begin = content.find("{{", at)) != std::string::npos;) {
        size_t end = content.find("}}", begin);
        if (end == std::string::npos) fail(where, "a label without end");
        auto row = rows.find(content.substr(begin + 2, end - begin - 2));
        if (row == rows.end()) fail(where, "no text " + content.substr(begin, end + 2 - begin));
        out += content.substr(at, begin - at) + escaped(row->second.texts[language]);
        at = end + 2;
    }
    return out + content.substr(at);
}

std::string constantName(const std::string& name) {
    std::string constant = "kText";
    bool capital = true;
    for (char c : name) {
        bool word = isalnum(static_cast<unsigned char>(c)) != 0;
        if (word) constant += capital ? static_cast<char>(toupper(c)) : c;
        capital = !word;
    }
    return constant;
}

std::string header(const Rows& rows) {
    std::string out =
        "// Made by make_texts: the numbers of the web mail's messages.\n#pragma once\n";
    for (const auto& [name, row] : rows)
        if (row.number)
            out += "inline constexpr int " + constantName(name) + " = " +
                   std::to_string(row.number) + ";\n";
    return out;
}

void makeLanguage(const fs::path& source, const fs::path& target, const Rows& rows, size_t i) {
    const Language& language = languages()[i];
    std::map<int, std::string> messages;
    for (const auto& [name, row] : rows)
        if (row.number) messages[row.number] = row.texts[i];
    std::string table;
    for (const auto& [number, text] : messages)
        table += std::to_string(number) + "\t" + toSet(text, language.charSet) + "\n";
    writeFile(target / "conf" / (std::string("msg.") + language.code), table);

    fs::path folder = target / "template" / (std::string(language.code) + "1");
    fs::create_directories(folder);
    for (const fs::path& path : filesOf(source / "templates", ".html")) {
        std::string content = filled(readFile(path), rows, i, path.filename());
        writeFile(folder / path.filename(), toPage(content, language.charSet));
    }
}

void run(const fs::path& source, const fs::path& target) {
    Rows rows;
    for (const fs::path& path : filesOf(source / "texts", ".tsv")) readTexts(path, rows);
    checkNumbers(rows);
    for (const char* folder : {"conf", "static", "include"})
        fs::create_directories(target / folder);
    for (size_t i = 0; i < languages().size(); i++) makeLanguage(source, target, rows, i);
    for (const fs::path& path : filesOf(source / "static", ""))
        writeFile(target / "static" / path.filename(), readFile(path));
    writeFile(target / "include" / "host_texts.h", header(rows));
}

}  // namespace

}  // namespace host

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    try {
        host::run(argv[1], argv[2]);
    } catch (const std::exception& e) {
        fprintf(stderr, "%s\n", e.what());
        return 1;
    }
    return 0;
}
