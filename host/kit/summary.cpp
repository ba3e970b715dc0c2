#include "summary.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <unordered_map>

#include "file.h"
#include "folder.h"
#include "host_texts.h"
#include "mail_text.h"
#include "mbox_scan.h"
#include "summary_file.h"
#include "support/support.h"
#include "text.h"

namespace host {

namespace {

constexpr size_t kFileMax = 64 << 20;                // of a summary file
constexpr size_t kSubjectMax = 300, kNameMax = 100;  // characters
constexpr int kFewMessages = 100;                    // that are parsed one by one
constexpr long kClockTick = 20'000'000;  // ns: changes within one can have the same time

struct FileCloser {
    void operator()(FILE* f) const { fclose(f); }
};
using OpenFile = std::unique_ptr<FILE, FileCloser>;

long ageOf(const struct stat& st) {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return (now.tv_sec - st.st_ctim.tv_sec) * 1'000'000'000L + now.tv_nsec - st.st_ctim.tv_nsec;
}

/// The folder for reading; empty when it is missing.
OpenFile openFolder(const std::string& path, struct stat& st) {
    int fd = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0 && errno == ENOENT) return nullptr;
    OpenFile file(fd < 0 ? nullptr : fdopen(fd, "r"));
    if (!file || fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) throw PageError(503, kTextFolderBusy);
    return file;
}

std::string summaryPath(const User& user, const std::string& folder) {
    return user.home() + "/" + folder + ".list";
}

/// The first address, and how many more there are.
std::string shownAddress(const std::string& header, const char* field, const std::string& set) {
    Addresses list = headerAddresses(headerValue(header, field), set);
    if (!list) return "";
    std::string name = list->name ? toUtf8(list->name, "UTF-8") : "";
    std::string shown =
        shortened(name.empty() ? toUtf8(mailGetStrOneAddr(list.get()), "") : name, kNameMax);
    int more = 0;
    for (const MailAddress* a = list->next; a; a = a->next) more++;
    return more ? shown + " +" + std::to_string(more) : shown;
}

/// What the folder's index says of a message with that header.
FldrMsg entryOf(FILE* header) {
    FldrMsg entry = {};
    Fldr* index = fldrProcessing(header);
    if (index && fldrMsgMax(index) > 0) entry = *index->msgs[0];
    fldrFree(index);
    return entry;
}

/// What is parsed for a row.
struct Parsed {
    Summary::Row row;
    std::string key, from, to, subject;
};

/// The index of a whole folder, made when it is first asked: one for all messages is a hundredth of
/// the work of one for each.
class WholeIndex {
  public:
    explicit WholeIndex(int fd) : fd_(fd) {}
    ~WholeIndex() { fldrFree(index_); }
    WholeIndex(const WholeIndex&) = delete;
    WholeIndex& operator=(const WholeIndex&) = delete;
    /// The entry of message `n`, NULL when memory is out.
    const FldrMsg* entry(int n) {
        if (!file_) {
            int copy = dup(fd_);
            file_.reset(copy < 0 ? nullptr : fdopen(copy, "r"));
            index_ = fldrProcessing(file_.get());
        }
        return fldrChkMsgBoundary(n, index_) ? index_->msgs[n - 1] : nullptr;
    }

  private:
    int fd_;
    OpenFile file_;
    Fldr* index_ = nullptr;
};

Parsed parse(const std::string& block, const FldrMsg* known) {
    Parsed p = {};
    std::string header = block + "\n";  // without an empty line the last field is no field
    OpenFile file(fmemopen(header.data(), header.size(), "r"));
    MailInfo* mail = mailGetHeaderInfo(0, static_cast<int>(header.size()), file.get());
    if (!mail) throw PageError(503, kTextInternalError);
    std::string set = strSafeAssign(mail->body ? mail->body->charSet : nullptr);
    mailFree(&mail);
    FldrMsg entry = known ? *known : entryOf(file.get());
    p.row.priority = entry.priority;
    p.row.date = entry.date;
    p.key = messageKey(entry);
    p.subject = shortened(headerText(headerValue(header, "Subject"), set), kSubjectMax);
    p.from = shownAddress(header, "From", set);
    p.to = shownAddress(header, "To", set);
    return p;
}

/// Takes the Status lines off a header, so that what else is in it can be compared, and gives the
/// marks that they hold.
unsigned takeStatus(std::string& header) {
    unsigned status = 0;
    std::string rest;
    for (size_t at = 0, end; at < header.size(); at = end) {
        end = std::min(header.find('\n', at), header.size() - 1) + 1;
        std::string_view line = std::string_view(header).substr(at, end - at);
        bool isStatus = at > 0 && line.size() > 7 && strNCaseCmp(line.data(), "Status:", 7) == 0;
        if (!isStatus) rest += line;
        for (char c : line.substr(isStatus ? 7 : line.size()))
            status |= c == 'R' ? FLDR_READ : c == 'O' ? FLDR_OLD : 0;
    }
    header = std::move(rest);
    return status;
}

struct DigestHash {
    size_t operator()(const Digest& digest) const {
        size_t hash;
        memcpy(&hash, digest.data(), sizeof hash);
        return hash;
    }
};

}  // namespace

Summary::Summary(const User& user, const std::string& folder) {
    OpenFile file = openFolder(folderPath(user, folder), state_);
    if (!file) return;
    std::string path = summaryPath(user, folder);
    std::optional<SummaryHead> head = readSummaryHead(path);
    if (head && head->isOf(state_) && load(path)) return;
    long age = ageOf(state_);
    if (age >= 0 && age < kClockTick) {
        timespec rest = {0, kClockTick - age};
        nanosleep(&rest, nullptr);
    }
    Summary old;
    old.load(path);
    fstat(fileno(file.get()), &state_);
    long readAtAge = ageOf(state_);
    build(fileno(file.get()), &old);
    struct stat after;
    bool unchanged = fstat(fileno(file.get()), &after) == 0 && SummaryHead::of(state_).isOf(after);
    if (unchanged && readAtAge >= kClockTick) save(path);
}

void Summary::build(int fd, const Summary* old) {
    std::unordered_map<Digest, const Row*, DigestHash> known;
    for (const Row& row : old->rows_) known.emplace(row.digest, &row);
    std::vector<std::array<size_t, 4>> lengths;
    auto add = [&](const Row& row, const std::array<std::string_view, 4>& texts) {
        rows_.push_back(row);
        lengths.emplace_back();
        for (size_t i = 0; i < texts.size(); i++) {
            texts_ += texts[i];
            lengths.back()[i] = texts[i].size();
        }
    };
    MboxScan scan(fd);
    WholeIndex whole(fd);
    int parsed = 0;
    std::string header;
    for (const EntrySpan& span : scan.messages()) {
        header = scan.header(span);
        unsigned status = takeStatus(header);
        Digest digest = digestOf(header);
        auto same = known.find(digest);
        if (same != known.end()) {
            const Row& row = *same->second;
            add(row, {row.key, row.from, row.to, row.subject});
        } else {
            bool many = ++parsed > kFewMessages;
            Parsed p =
                parse(header, many ? whole.entry(static_cast<int>(rows_.size()) + 1) : nullptr);
            p.row.digest = digest;
            add(p.row, {p.key, p.from, p.to, p.subject});
        }
        rows_.back().number = static_cast<int>(rows_.size());
        rows_.back().size = static_cast<int>(span.size);
        rows_.back().status = status;
    }
    std::string_view rest = texts_;
    for (size_t i = 0; i < rows_.size(); i++) {
        std::string_view* targets[] = {&rows_[i].key, &rows_[i].from, &rows_[i].to,
                                       &rows_[i].subject};
        for (size_t k = 0; k < 4; k++) {
            *targets[k] = rest.substr(0, lengths[i][k]);
            rest.remove_prefix(lengths[i][k]);
        }
    }
}

FolderCounts Summary::counts() const {
    FolderCounts counts;
    for (const Row& row : rows_) {
        counts.all++;
        if (!(row.status & FLDR_READ)) counts.unread++;
    }
    return counts;
}

void Summary::save(const std::string& path) const {
    std::string content;
    content.reserve(texts_.size() + rows_.size() * sizeof(StoredRow));
    for (const Row& row : rows_) {
        StoredRow stored = {row.date, row.status, row.priority, row.size, {}, row.digest};
        const std::string_view texts[] = {row.key, row.from, row.to, row.subject};
        for (size_t i = 0; i < 4; i++) stored.lengths[i] = static_cast<uint32_t>(texts[i].size());
        content.append(reinterpret_cast<const char*>(&stored), sizeof stored);
    }
    content += texts_;
    SummaryHead head = SummaryHead::of(state_);
    FolderCounts now = counts();
    head.all = now.all;
    head.unread = now.unread;
    head.contentSize = static_cast<int64_t>(content.size());
    head.content = digestOf(content);
    head.seal();
    content.insert(0, reinterpret_cast<const char*>(&head), sizeof head);
    replaceFile(path, content, false);
}

bool Summary::load(const std::string& path) {
    std::optional<std::string> file = readFile(path, kFileMax);
    SummaryHead head;
    if (!file || file->size() < sizeof head) return false;
    memcpy(&head, file->data(), sizeof head);
    std::string_view rest = std::string_view(*file).substr(sizeof head);
    auto count = static_cast<size_t>(head.all);
    if (!head.isSound() || rest.size() != static_cast<size_t>(head.contentSize) ||
        digestOf(rest) != head.content || count > rest.size() / sizeof(StoredRow))
        return false;
    texts_ = std::move(*file);
    rest = std::string_view(texts_).substr(sizeof head);
    std::string_view texts = rest.substr(count * sizeof(StoredRow));
    rows_.reserve(count);
    for (size_t n = 1; n <= count; n++) {
        StoredRow stored;
        memcpy(&stored, rest.data() + (n - 1) * sizeof stored, sizeof stored);
        Row row = {static_cast<int>(n),
                   stored.status,
                   stored.priority,
                   stored.size,
                   stored.date,
                   stored.digest,
                   {},
                   {},
                   {},
                   {}};
        std::string_view* targets[] = {&row.key, &row.from, &row.to, &row.subject};
        for (size_t i = 0; i < 4; i++) {
            *targets[i] = texts.substr(0, stored.lengths[i]);
            texts.remove_prefix(std::min<size_t>(texts.size(), stored.lengths[i]));
        }
        rows_.push_back(row);
    }
    return true;
}

FolderCounts folderCounts(const User& user, const std::string& folder) {
    struct stat st;
    OpenFile file = openFolder(folderPath(user, folder), st);
    if (!file) return {};
    std::optional<SummaryHead> head = readSummaryHead(summaryPath(user, folder));
    if (head && head->isOf(st))
        return {static_cast<int>(head->all), static_cast<int>(head->unread)};
    return Summary(user, folder).counts();
}

}  // namespace host
