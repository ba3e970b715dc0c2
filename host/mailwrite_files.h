#ifndef ATTALVEN_HOST_MAILWRITE_FILES_H
#define ATTALVEN_HOST_MAILWRITE_FILES_H

// What a compose form keeps on the server between its requests: a folder of its own below "upload"
// in the user's mailbox directory, named by the form's unguessable id. It holds each file in a
// folder of its own, under its real name, and notes of what has become of the form.

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "kit/request.h"
#include "kit/session.h"

namespace host {

using File = std::unique_ptr<FILE, int (*)(FILE*)>;
/// A name without folders and control bytes, at most `most` bytes of it, its ending kept.
std::string fileName(const std::string& given, size_t most);
/// An unnamed file that only this process sees. PageError 507 when there is no room.
File temporaryFile();
/// Everything written is in the file. PageError 507 otherwise.
void checkWritten(FILE* file);

enum class FileKind : char { kAttached = 'a', kImage = 'i', kForwarded = 'f' };

struct FormFile {
    FileKind kind;
    std::string key;  // "a01": kind and number
    std::string name, path;
    long size;
};

/// Where uploads of the user arrive; made when it is missing. What is older than a day goes.
std::string uploadFolder(const User& user);

class FormFolder {
  public:
    /// PageError 400 for an id that newId() cannot have made. The folder is made, and belongs to
    /// this process until it ends: a second request of the same form waits.
    FormFolder(const User& user, const std::string& id);
    ~FormFolder();
    FormFolder(const FormFolder&) = delete;
    FormFolder& operator=(const FormFolder&) = delete;
    static std::string newId();

    const std::string& path() const { return path_; }
    /// By kind and number.
    std::vector<FormFile> files() const;
    /// The path of a new file of that name (shortened to 200 bytes), whose folder is made.
    /// PageError 507 when that fails.
    std::string newFile(FileKind kind, const std::string& name);
    void take(const Upload& upload, FileKind kind);
    void remove(const std::string& key);
    /// Removes all files; the notes stay.
    void removeFiles();

    /// A short text under a name of lower-case letters, "" without one.
    std::string note(const char* name) const;
    /// PageError 507 when it cannot be written.
    void setNote(const char* name, const std::string& text);

  private:
    std::string path_;
    int lock_;
};

/// Whether a message may have these (attachFileLimitNum, attachFileLimitSize in MiB); forwarded
/// messages, which the site has taken already, do not count.
bool isWithinLimits(const std::vector<FormFile>& files);

}  // namespace host

#endif
