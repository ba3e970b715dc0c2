#ifndef ATTALVEN_TESTS_KIT_TABLE_H
#define ATTALVEN_TESTS_KIT_TABLE_H

// Tables of tests/data: what is given and what is to come out, a row a line.

#include <string>
#include <vector>

namespace kit {

struct TableRow {
    std::string input, expected;
    std::string section;                 // the last line "[NAME]" before the row
    std::vector<std::string> arguments;  // the parts of the input between " | "
    std::string label;                   // file, line, and the comment before the row
};

/// Rows "input -> expected" of tests/data/NAME; without an arrow nothing is expected. \n, \r, \t,
/// \\ and \xHH stand for bytes, \{99 text} for repeated text; lines that begin with "# " are
/// comments.
std::vector<TableRow> table(const std::string& name);

}  // namespace kit

#endif
