#ifndef ATTALVEN_HOST_MAILWRITE_ENTRIES_H
#define ATTALVEN_HOST_MAILWRITE_ENTRIES_H

// The files of a form as the composer takes them, and pictures inside an HTML body.

#include <string>
#include <vector>

#include "mailwrite_files.h"

namespace host {

/// What the form puts around HTML source that is no whole document.
constexpr const char* kHtmlStart = "<HTML>\n<BODY>\n";
constexpr const char* kHtmlEnd = "\n</BODY>\n</HTML>\n";

/// Whether the ending of a file name is that of a picture.
bool isImageName(const std::string& name);

/// A picture that the body shows.
struct Image {
    int number;             // the user writes "[image N]"
    std::string name;       // for readers that show no pictures
    std::string contentId;  // the same whenever the form is composed
    std::string path;
};
std::vector<Image> imagesOf(const FormFolder& folder);

/// HTML source with each "[image N]" replaced by its picture; pictures without a place at the end.
std::string withImages(const std::string& html, const std::vector<Image>& images);

/// The reverse for one picture: "[image N]" for the tag that shows the Content-ID.
std::string withoutImage(const std::string& html, const std::string& contentId, int number);

/// The attachment list of mailCompose(), and the names that its files need for as long: links with
/// the real names in the page set, and pictures where the composer looks for uploads.
class Entries {
  public:
    Entries(const FormFolder& folder, const std::string& pageSet, bool isHtml);
    ~Entries();
    Entries(const Entries&) = delete;
    Entries& operator=(const Entries&) = delete;
    char** list() { return list_.data(); }

  private:
    void addFile(const FormFile& file, const std::string& pageSet);
    void addImage(const Image& image, const std::string& pageSet);
    void addMessage(const FormFile& file);

    std::string links_;
    std::vector<std::string> texts_;
    std::vector<char*> list_;
};

}  // namespace host

#endif
