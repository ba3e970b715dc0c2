#ifndef ATTALVEN_HOST_KIT_REQUEST_H
#define ATTALVEN_HOST_KIT_REQUEST_H

// The request of a CGI program (RFC 3875): query, form fields and uploaded files. Everything in it
// may be made up; values are UTF-8 whatever the browser sent.

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// Ends the program with an error page: HTTP status, and the number of the page's text in the
/// message table, which says what the user can do.
struct PageError : std::runtime_error {
    PageError(int httpStatus, int messageNumber)
        : std::runtime_error("page error"), status(httpStatus), message(messageNumber) {}
    int status, message;
};

/// A file of a form (RFC 7578), stored under a private name (mode 0600) that ends with the program
/// unless the program moves it.
struct Upload {
    std::string field, name, type;  // name: UTF-8, without folders and control bytes
    std::string path;
    long size;
};

class Request {
  public:
    /// Reads the environment and standard input. PageError 400 for a malformed form, 413 for one
    /// with more than 8 MiB of text. Uploads are stored below `uploadFolder`; files are passed over
    /// when that is "", and those beyond the site's limits (admOptions.attachFileLimitSize in MiB,
    /// attachFileLimitNum files), so that what was typed beside them is not lost.
    explicit Request(const std::string& uploadFolder = "");
    ~Request();
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    bool isPost() const { return post_; }
    /// The first value of a field, "" without one; all of its values.
    std::string value(const std::string& name) const;
    std::vector<std::string> values(const std::string& name) const;
    /// The first value as its bytes came: names in the library's links are in the mail's page set.
    std::string raw(const std::string& name) const;
    /// The field as a number from `least` to `most`, `otherwise` when it is anything else.
    long number(const std::string& name, long least, long most, long otherwise) const;
    bool has(const std::string& name) const;
    const std::vector<Upload>& uploads() const { return uploads_; }
    /// Whether files were passed over that would have gone beyond the limits.
    bool lacksFiles() const { return lacksFiles_; }

  private:
    struct Field {
        std::string name, raw, value;
    };
    const Field* find(const std::string& name) const;
    void readPairs(std::string_view text);
    void readBody(const std::string& contentType, long length, const std::string& uploadFolder);
    void convertTexts();

    bool post_ = false, lacksFiles_ = false;
    std::vector<Field> fields_;
    std::vector<Upload> uploads_;
    friend class FormReader;
};

}  // namespace host

#endif
