#include "row_reader.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>

#include "folder.h"
#include "host_texts.h"
#include "mail/mail.h"
#include "mail_text.h"
#include "support/support.h"
#include "text.h"

namespace host {

namespace {

constexpr size_t kSubjectMax = 300, kNameMax = 100;             // bytes
constexpr size_t kHeadersMax = 512, kHeaderBytesMax = 1 << 20;  // of one index
constexpr size_t kLineMax = 5000;                               // bytes of a line that is none

using MemoryFile = std::unique_ptr<FILE, int (*)(FILE*)>;

MemoryFile fileOf(std::string_view bytes) {
    MemoryFile file(fmemopen(const_cast<char*>(bytes.data()), bytes.size(), "r"), fclose);
    if (!file) throw PageError(503, kTextInternalError);
    return file;
}

/// The set of texts that name none: that of the message's body.
std::string charSetOf(std::string_view header) {
    MailInfo* mail = mailGetHeaderInfo(0, static_cast<int>(header.size()), fileOf(header).get());
    if (!mail) throw PageError(503, kTextInternalError);
    std::string set = strSafeAssign(mail->body ? mail->body->charSet : nullptr);
    mailFree(&mail);
    return set;
}

std::string cut(const std::string& utf8, size_t most) {
    std::string_view start = firstBytes(utf8, most);
    return start.size() < utf8.size() ? std::string(start) + "..." : utf8;
}

/// The first address, and how many more there are.
std::string shownAddress(const std::string& value, const CharSet& set) {
    Addresses list = headerAddresses(value, set);
    if (!list) return "";
    std::string name = list->name ? toUtf8(list->name, "UTF-8") : "";
    std::string shown =
        cut(name.empty() ? toUtf8(mailGetStrOneAddr(list.get()), "") : name, kNameMax);
    int more = 0;
    for (const MailAddress* a = list->next; a; a = a->next) more++;
    return more ? shown + " +" + std::to_string(more) : shown;
}

/// Adds the lines of a header that tell date, priority and Message-ID: the index takes a third of
/// the time for them. Gives false, and adds all lines, where the library may take something else
/// for a line or for the header's end: it reads long lines in pieces, one of blanks ends a header,
/// and behind one that begins with CR an empty line does not.
bool addIndexed(std::string& folder, std::string_view header) {
    size_t start = folder.size();
    bool isWanted = true;  // the From_ line
    for (std::string_view rest = header; !rest.empty();) {
        bool isFirst = rest.size() == header.size();
        std::string_view line = takeLine(rest);
        bool isNew = line.find_first_of(" \t\r\n") != 0;
        if (line.size() > kLineMax || !line.ends_with('\n') || (!isNew && !isFolded(line))) {
            folder.replace(start, folder.npos, header);
            return false;
        }
        if (!isFirst && isNew)
            isWanted =
                isField(line, "Date") || isField(line, "Message-ID") || isField(line, "X-Priority");
        if (isWanted) folder += line;
    }
    return true;
}

/// The library's index of headers that stand one behind the other like the messages of a folder.
class Index {
  public:
    explicit Index(const std::string& folder)
        : file_(fileOf(folder)), index_(fldrProcessing(file_.get()), fldrFree) {}
    const FldrMsg& entry(size_t i) const {
        if (i >= static_cast<size_t>(fldrMsgMax(index_.get())))
            throw PageError(503, kTextInternalError);
        return *index_->msgs[i];
    }

  private:
    MemoryFile file_;
    std::unique_ptr<Fldr, void (*)(Fldr*)> index_;
};

RowContent contentOf(std::string_view header, const FldrMsg& entry) {
    CharSet set([header] { return charSetOf(header); });
    std::vector<std::string> values = headerValues(header, {"From", "To", "Subject"});
    return {entry.priority,
            entry.date,
            messageKey(entry),
            shownAddress(values[0], set),
            shownAddress(values[1], set),
            cut(headerText(values[2], set), kSubjectMax)};
}

}  // namespace

/// Without an empty line the last field is no field.
void RowReader::add(std::string_view header) {
    headers_ += header;
    headers_ += '\n';
    ends_.push_back(headers_.size());
    isOdd_ = !addIndexed(indexed_, header);
    indexed_ += '\n';
}

bool RowReader::isFull() const {
    return isOdd_ || ends_.size() == kHeadersMax || headers_.size() > kHeaderBytesMax;
}

/// A key without Message-ID is made of more: such headers are indexed as a whole.
std::vector<RowContent> RowReader::read() {
    std::vector<RowContent> contents;
    if (ends_.empty()) return contents;
    std::vector<std::string_view> headers;
    for (size_t i = 0, begin = 0; i < ends_.size(); begin = ends_[i++])
        headers.push_back(std::string_view(headers_).substr(begin, ends_[i] - begin));
    Index index(indexed_);
    std::string nameless;
    for (size_t i = 0; i < headers.size(); i++)
        if (!*index.entry(i).msgId) nameless += headers[i];
    std::optional<Index> whole;
    if (!nameless.empty()) whole.emplace(nameless);
    for (size_t i = 0, n = 0; i < headers.size(); i++) {
        const FldrMsg& entry = index.entry(i);
        contents.push_back(contentOf(headers[i], *entry.msgId ? entry : whole->entry(n++)));
    }
    headers_.clear();
    ends_.clear();
    indexed_.clear();
    isOdd_ = false;
    return contents;
}

}  // namespace host
