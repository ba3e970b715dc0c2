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
#include "mbox_scan.h"
#include "row_reader.h"
#include "summary_file.h"

namespace host {

namespace {

constexpr size_t kFileMax = 64 << 20;    // of a summary file
constexpr size_t kTextBlock = 1 << 20;   // bytes of texts that lie together
constexpr long kClockTick = 20'000'000;  // ns: changes within one can have the same time

constexpr std::string_view Summary::Row::*kTexts[] = {&Summary::Row::key, &Summary::Row::from,
                                                      &Summary::Row::to, &Summary::Row::subject};

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

StoredRow storedOf(const Summary::Row& row) {
    StoredRow stored = {row.date, row.status, row.priority, row.size, {}, row.digest};
    for (size_t i = 0; i < std::size(kTexts); i++)
        stored.lengths[i] = static_cast<uint32_t>((row.*kTexts[i]).size());
    return stored;
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
    build(fileno(file.get()), old);
    struct stat after;
    bool unchanged = fstat(fileno(file.get()), &after) == 0 && SummaryHead::of(state_).isOf(after);
    if (unchanged && readAtAge >= kClockTick) save(path);
}

/// Rows of headers that `old` knows are taken over.
void Summary::build(int fd, const Summary& old) {
    std::unordered_map<Digest, const Row*, DigestHash> known;
    for (const Row& row : old.rows_) known.emplace(row.digest, &row);
    RowReader reader;
    std::vector<size_t> unread;  // rows that it will read
    auto readRows = [&] {
        std::vector<RowContent> contents = reader.read();
        for (size_t i = 0; i < contents.size(); i++) fill(rows_[unread[i]], contents[i]);
        unread.clear();
    };
    MboxScan scan(fd);
    std::string header;
    for (const EntrySpan& span : scan.messages()) {
        header = scan.header(span);
        Row row = {};
        row.number = static_cast<int>(rows_.size()) + 1;
        row.status = takeStatus(header);
        row.size = static_cast<int>(span.size);
        row.digest = digestOf(header);
        auto same = known.find(row.digest);
        if (same != known.end()) {
            fill(row, *same->second);
        } else {
            reader.add(header);
            unread.push_back(rows_.size());
        }
        rows_.push_back(row);
        if (reader.isFull()) readRows();
    }
    readRows();
}

/// `content`: a RowContent, or the row of another summary.
template <typename Content>
void Summary::fill(Row& row, const Content& content) {
    row.priority = content.priority;
    row.date = content.date;
    row.key = keep(content.key);
    row.from = keep(content.from);
    row.to = keep(content.to);
    row.subject = keep(content.subject);
}

/// A copy that never moves.
std::string_view Summary::keep(std::string_view text) {
    bool fits = !texts_.empty() && texts_.back().capacity() - texts_.back().size() >= text.size();
    if (!fits) texts_.emplace_back().reserve(std::max(kTextBlock, text.size()));
    texts_.back() += text;
    return std::string_view(texts_.back()).substr(texts_.back().size() - text.size());
}

std::string Summary::Row::name() const {
    return headMark(digest) + std::string(key);
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
    // Rows and texts go out one by one: a copy of all would take the memory of a program.
    auto eachPiece = [this](auto take) {
        for (const Row& row : rows_) {
            StoredRow stored = storedOf(row);
            take({reinterpret_cast<const char*>(&stored), sizeof stored});
        }
        for (const Row& row : rows_)
            for (auto text : kTexts) take(row.*text);
    };
    SummaryHead head = SummaryHead::of(state_);
    FolderCounts now = counts();
    head.all = now.all;
    head.unread = now.unread;
    DigestStream digest;
    eachPiece([&](std::string_view piece) {
        head.contentSize += static_cast<int64_t>(piece.size());
        digest.add(piece);
    });
    head.content = digest.end();
    head.seal();
    auto write = [&](FILE* out) {
        fwrite(&head, sizeof head, 1, out);
        eachPiece([out](std::string_view piece) { fwrite(piece.data(), 1, piece.size(), out); });
    };
    replaceFile(path, write, false);
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
    texts_.push_back(std::move(*file));
    std::string_view texts = rest.substr(count * sizeof(StoredRow));
    rows_.reserve(count);
    for (size_t n = 0; n < count; n++) {
        StoredRow stored;
        memcpy(&stored, rest.data() + n * sizeof stored, sizeof stored);
        Row row = {};
        row.number = static_cast<int>(n) + 1;
        row.status = stored.status;
        row.priority = stored.priority;
        row.size = stored.size;
        row.date = stored.date;
        row.digest = stored.digest;
        for (size_t i = 0; i < std::size(kTexts); i++) {
            row.*kTexts[i] = texts.substr(0, stored.lengths[i]);
            texts.remove_prefix((row.*kTexts[i]).size());
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
