#include "mailwrite_entries.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "host_texts.h"
#include "kit/mail_text.h"
#include "kit/text.h"
#include "mail/mail.h"
#include "support/support.h"

namespace host {

namespace {

namespace fs = std::filesystem;

// Of a name that has a random one in front and a visitor's address behind it in one file name.
constexpr size_t kUploadNameMax = 150;

[[noreturn]] void noRoom() {
    throw PageError(507, kTextStorageFull);
}

std::string placeOf(int number) {
    return "[image " + std::to_string(number) + "]";
}

std::string tagStart(const std::string& contentId) {
    return "<img src=\"cid:" + contentId + "\"";
}

std::string lowerEnding(const std::string& name) {
    size_t dot = name.rfind('.');
    std::string ending = dot == std::string::npos ? "" : name.substr(dot);
    strToLwr(ending.data());
    return ending;
}

/// Copies the rest of `in` into a new file (mode 0600), which must not exist.
void copyToNew(FILE* in, const std::string& head, const std::string& path) {
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    File out(fd < 0 ? nullptr : fdopen(fd, "w"), fclose);
    if (!out) noRoom();
    fputs(head.c_str(), out.get());
    char block[65536];
    for (size_t n; (n = fread(block, 1, sizeof block, in)) > 0;) fwrite(block, 1, n, out.get());
    if (ferror(in) || fflush(out.get()) != 0 || ferror(out.get())) noRoom();
}

File opened(const std::string& path) {
    File file(fopen(path.c_str(), "re"), fclose);
    if (!file) noRoom();
    return file;
}

}  // namespace

bool isImageName(const std::string& name) {
    return std::string(mimeGetType(lowerEnding(name).c_str())).starts_with("image/");
}

std::vector<Image> imagesOf(const FormFolder& folder) {
    std::vector<Image> images;
    std::string id = folder.path().substr(folder.path().rfind('/') + 1);
    for (const FormFile& file : folder.files()) {
        if (file.kind != FileKind::kImage) continue;
        // The composer finds the media type by the end of the whole entry, which is the id.
        int number = atoi(file.key.c_str() + 1);
        images.push_back({number, file.name,
                          file.key + "." + id + "@image" + lowerEnding(file.name), file.path});
    }
    return images;
}

std::string withImages(const std::string& html, const std::vector<Image>& images) {
    std::string text = html, rest;
    for (const Image& image : images) {
        std::string place = placeOf(image.number);
        std::string tag = tagStart(image.contentId) + " alt=\"" + escaped(image.name) + "\">";
        if (text.find(place) != std::string::npos)
            text = takeText(strConvTokenStr(text.c_str(), place.c_str(), tag.c_str()));
        else
            rest += "\n<p>" + tag + "</p>";
    }
    const char* end = strCaseStr(text.c_str(), "</BODY>");
    return text.insert(end ? static_cast<size_t>(end - text.c_str()) : text.size(), rest);
}

std::string withoutImage(const std::string& html, const std::string& contentId, int number) {
    std::string text = html, start = tagStart(contentId);
    for (size_t at = 0; (at = text.find(start, at)) != std::string::npos;)
        text.replace(at, std::min(text.find('>', at), text.size() - 1) + 1 - at, placeOf(number));
    return text;
}

Entries::Entries(const FormFolder& folder, const std::string& pageSet, bool isHtml)
    : links_(folder.path() + "/mail") {
    std::error_code error;
    fs::remove_all(links_, error);
    if (mkdir(links_.c_str(), 0700) != 0) noRoom();
    for (const FormFile& file : folder.files()) {
        if (file.kind == FileKind::kForwarded)
            addMessage(file);
        else if (file.kind == FileKind::kAttached || !isHtml)
            addFile(file, pageSet);
    }
    if (isHtml)
        for (const Image& image : imagesOf(folder)) addImage(image, pageSet);
    for (std::string& text : texts_) list_.push_back(text.data());
    list_.push_back(nullptr);
}

Entries::~Entries() {
    // Only the pictures, which are copies: the form's own files stay, even if its site lies in
    // /tmp.
    std::erase_if(list_, [](const char* text) {
        return text && !std::string_view(text).starts_with("cid_");
    });
    mailComposeDeleteAttachFile(list_.data());
    std::error_code error;
    fs::remove_all(links_, error);
}

/// The base name is the name in the mail.
void Entries::addFile(const FormFile& file, const std::string& pageSet) {
    if (std::string(mimeGetType(file.name.c_str())).starts_with("message/"))
        return addMessage(file);
    std::string folder = links_ + "/" + file.key;
    std::string path = folder + "/" + toSet(file.name, pageSet.c_str());
    if (mkdir(folder.c_str(), 0700) != 0 || link(file.path.c_str(), path.c_str()) != 0) noRoom();
    texts_.push_back(path);
}

/// A message is sent without its first line, which must therefore be a From_ line.
void Entries::addMessage(const FormFile& file) {
    File in = opened(file.path);
    std::string path = file.path;
    if (readHeader(in.get(), 0, 5) != "From ") {
        path = links_ + "/" + file.key;
        rewind(in.get());
        copyToNew(in.get(), std::string("From - ") + mailGetRFC822FromDate(0) + "\n", path);
    }
    texts_.push_back("forward@" + path);
}

/// Under a name that nobody else can have taken in the folder that all share.
void Entries::addImage(const Image& image, const std::string& pageSet) {
    File in = opened(image.path);
    std::string name = toSet(fileName(image.name, kUploadNameMax), pageSet.c_str());
    std::replace(name.begin(), name.end(), '@', '_');
    name = FormFolder::newId().substr(0, 16) + "-" + name;
    const char* address = getenv("REMOTE_ADDR");
    std::string upload = "/tmp/" + name + "@" + strSafeAssign(address);
    texts_.push_back("cid_" + name + "@" + image.contentId);
    copyToNew(in.get(), "", upload);
}

}  // namespace host
