#ifndef ATTALVEN_MAIL_BASE_FILE_H
#define ATTALVEN_MAIL_BASE_FILE_H

// Owned streams, and opening that cannot be tricked by links, FIFOs or devices.

#include <cstdio>
#include <memory>

#include "ascii.h"

namespace attalven {

struct CloseFile {
    void operator()(FILE* f) const { fclose(f); }
};
using OwnedFile = std::unique_ptr<FILE, CloseFile>;

/// A stream as the target of append(), as the texts have it. Errors stay in the stream (ferror).
struct OutStream {
    FILE* stream;
    void append(string_view s) {
        if (!s.empty()) fwrite(s.data(), 1, s.size(), stream);
    }
};

/// Whether a symbolic link as the last path component is followed: installation files may be links,
/// files in shared directories may not.
enum class Links { kFollow, kRefuse };

/// A regular file for reading, NULL for anything else. Never blocks on a FIFO.
OwnedFile openRegular(const char* path, Links links = Links::kFollow);
/// The same for a name relative to the open directory `directory`.
OwnedFile openRegularAt(int directory, const char* name, Links links);

}  // namespace attalven

#endif
