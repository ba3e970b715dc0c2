#ifndef ATTALVEN_TESTS_KIT_TABLE_H
#define ATTALVEN_TESTS_KIT_TABLE_H

#include <string>
#include <vector>

namespace kit {

struct TableRow {
    std::string input, expected;
};

/// Rows "input -> expected" of tests/data/NAME. \n, \r, \t, \\ and \xHH stand for bytes; lines that
/// begin with "# " are comments.
std::vector<TableRow> table(const std::string& name);

}  // namespace kit

#endif
