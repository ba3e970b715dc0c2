#ifndef ATTALVEN_HOST_KIT_ROW_READER_H
#define ATTALVEN_HOST_KIT_ROW_READER_H

// What a list shows of messages that it has not seen before, read from their headers. Many at a
// time: the library's index of a few hundred headers costs a fraction of one for each.

#include <ctime>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// Texts are UTF-8. However long the header's are, a subject has at most 300 bytes, a sender or
/// recipient 100, both with "..." behind what was cut, and a key 288 (messageKey()): a row takes
/// less than 900 bytes, 30,000 of them fit into the memory of a program.
struct RowContent {
    int priority = 0;
    time_t date = 0;
    std::string key, from, to, subject;
};

class RowReader {
  public:
    /// A header block with its From_ line.
    void add(std::string_view header);
    /// Whether it is time to read; more headers would only take more memory.
    bool isFull() const;
    /// What the headers that were added say, in their order; then there are none. PageError 503
    /// when memory is out.
    std::vector<RowContent> read();

  private:
    std::string headers_;       // one behind the other, each with an empty line
    std::vector<size_t> ends_;  // of each
    std::string indexed_;       // what the index reads of them
    bool isOdd_ = false;        // the last one may have no end for the index
};

}  // namespace host

#endif
