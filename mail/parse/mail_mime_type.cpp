// Media types by file name, from the installation's mime.types. Survives extensions and words of
// any length: what does not fit its buffer cannot match.

#include "mail/base/bounded_text.h"
#include "mail/base/file.h"
#include "mail/base/line_reader.h"
#include "mail/base/sink.h"
#include "mail_mime_field.h"
#include "support/host.h"

namespace attalven {
namespace {

constexpr char kDefaultType[] = "application/octet-stream";
constexpr string_view kDefaultSubType = "octet-stream";
constexpr size_t kTypesLineLimit = 1024;
using Extension = BoundedText<kTypesLineLimit>;

OwnedFile openTypes() {
    char path[sizeof conf.rootDir + sizeof "/conf/mime.types"];
    snprintf(path, sizeof path, "%s/conf/mime.types", conf.rootDir);
    return openRegular(path);
}

/// The text behind the last dot of `fileName`, without white space.
Extension extensionOf(string_view fileName, size_t dot) {
    Extension extension;
    for (char c : tail(fileName, dot + 1))
        if (!isSpace(c)) extension.append(c);
    return extension;
}

/// Takes the text up to the first `end` off `text`.
string_view takeWord(string_view& text, char end) {
    string_view word = head(text, text.find(end));
    text = tail(text, word.size() + 1);
    return word;
}

/// Whether a blank-separated list of extensions holds `wanted`. Two blanks make an empty word,
/// which is no extension.
bool lists(string_view extensions, string_view wanted) {
    while (!extensions.empty()) {
        extensions = trimHead(extensions);
        string_view word = takeWord(extensions, ' ');
        if (!word.empty() && word == wanted) return true;
    }
    return false;
}

}  // namespace
}  // namespace attalven

using namespace attalven;

const char* mimeGetType(const char* fileName) {
    static BoundedText<100> mimeType;
    string_view name = viewOf(fileName);
    size_t dot = name.rfind('.');
    if (dot == string_view::npos) return kDefaultType;
    Extension extension = extensionOf(name, dot);
    mimeType.clear();
    OwnedFile types = openTypes();
    if (!types) return kDefaultType;
    LineReader lines(types.get(), kTypesLineLimit);
    for (LinePiece piece; lines.next(piece);) {
        BoundedText<kTypesLineLimit> text;
        appendOneLine(text, piece.text);
        string_view line = trimHead(text.view());
        mimeType.assign(takeWord(line, '\t'));
        if (lists(line, extension.view())) return mimeType.c_str();
    }
    return kDefaultType;
}

int mimeGetMajorType(const char* type) {
    string_view text = viewOf(type);
    size_t slash = text.find('/');
    MediaType major = slash == string_view::npos ? kUnknown : majorTypeOf(head(text, slash));
    return major == kUnknown ? kApplication : major;
}

char* mimeGetSubType(const char* type) {
    static BoundedText<100> resultMinorMimeType;
    string_view text = head(viewOf(type), 100);
    size_t slash = text.find('/');
    string_view minor = slash == string_view::npos ? string_view() : tail(text, slash + 1);
    resultMinorMimeType.assign(minor.empty() ? kDefaultSubType : minor);
    return resultMinorMimeType.data();
}
