#ifndef ATTALVEN_HOST_KIT_FORM_READER_H
#define ATTALVEN_HOST_KIT_FORM_READER_H

// multipart/form-data (RFC 7578) from standard input, in constant memory: files go to disk as they
// come. Called by Request only.

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "request.h"

namespace host {

constexpr long kFormTextMax = 8L << 20;  // bytes of all text fields together
constexpr size_t kFieldMax = 20000;      // fields of a form

class FormReader {
  public:
    /// `boundary` is that of the Content-Type; a body of `length` bytes lies on standard input.
    FormReader(Request& request, const std::string& boundary, long length,
               const std::string& uploadFolder);
    void read();

  private:
    struct PartHead {
        std::string name, fileName, type;
        bool isFile = false;
    };
    bool fill();
    /// Passes what stands before the next delimiter to `take(bytes)`, and the delimiter.
    template <typename Take>
    void copyToDelimiter(Take take);
    std::string readLine();
    PartHead readHead();
    void readText(const PartHead& head);
    void readFile(const PartHead& head);

    Request& request_;
    std::string delimiter_, folder_, buffer_;
    long left_;
    long textSize_ = 0, fileSize_ = 0;
};

}  // namespace host

#endif
