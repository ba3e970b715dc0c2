#include "mailview_zip.h"

#include <map>

#include "host_texts.h"
#include "kit/part.h"
#include "mailview.h"
#include "support/support.h"

namespace host {

namespace {

constexpr size_t kFileHeader = 30, kDirectoryHeader = 46, kEnd = 22;
constexpr uint16_t kVersion = 20, kMadeOnUnix = 3 << 8, kNamesAreUtf8 = 1 << 11;
constexpr uint32_t kFileMode = 0100644U << 16;
constexpr uint64_t kArchiveMax = uint64_t{2} << 30;

/// Little-endian numbers one behind the other.
class Bytes {
  public:
    Bytes& u16(size_t n) { return number(n, 2); }
    Bytes& u32(size_t n) { return number(n, 4); }
    Bytes& text(const std::string& s) {
        bytes_ += s;
        return *this;
    }
    std::string take() { return std::move(bytes_); }

  private:
    Bytes& number(size_t n, int size) {
        for (; size > 0; size--, n >>= 8) bytes_ += static_cast<char>(n & 0xFF);
        return *this;
    }
    std::string bytes_;
};

std::string folded(std::string name) {
    return strToLwr(name.data());
}

}  // namespace

void makeNamesUnique(std::vector<ZipEntry>& entries) {
    std::map<std::string, int> taken;  // how often a name was asked for
    for (ZipEntry& entry : entries) {
        int& n = taken[folded(entry.name)];
        if (n++ == 0) continue;
        size_t dot = std::min(entry.name.rfind('.'), entry.name.size());
        std::string stem = entry.name.substr(0, dot), ending = entry.name.substr(dot);
        do {
            entry.name = stem + " (" + std::to_string(n++) + ")" + ending;
        } while (taken.contains(folded(entry.name)));
        n--;
        taken[folded(entry.name)] = 1;
    }
}

ZipLayout::ZipLayout(std::vector<ZipEntry> entries, time_t time) : entries_(std::move(entries)) {
    struct tm t {};
    if (!localtime_r(&time, &t) || t.tm_year < 80 || t.tm_year > 207) {
        t = {};
        t.tm_year = 80;
        t.tm_mday = 1;
    }
    date_ = static_cast<uint16_t>((t.tm_year - 80) << 9 | (t.tm_mon + 1) << 5 | t.tm_mday);
    time_ = static_cast<uint16_t>(t.tm_hour << 11 | t.tm_min << 5 | t.tm_sec / 2);
}

/// The fields that a file's own header and its directory entry share.
std::string ZipLayout::common(const ZipEntry& entry) const {
    constexpr uint16_t kStored = 0;
    return Bytes()
        .u16(kVersion)
        .u16(kNamesAreUtf8)
        .u16(kStored)
        .u16(time_)
        .u16(date_)
        .u32(entry.crc)
        .u32(entry.size)
        .u32(entry.size)
        .u16(entry.name.size())
        .u16(0)
        .take();
}

std::string ZipLayout::fileHeader(size_t i) const {
    return Bytes().u32(0x04034B50).text(common(entries_[i])).text(entries_[i].name).take();
}

std::string ZipLayout::directory() const {
    Bytes out;
    uint64_t offset = 0, size = 0;
    for (const ZipEntry& entry : entries_) {
        out.u32(0x02014B50).u16(kMadeOnUnix | kVersion).text(common(entry));
        out.u16(0).u16(0).u16(0).u32(kFileMode).u32(offset).text(entry.name);
        offset += kFileHeader + entry.name.size() + entry.size;
        size += kDirectoryHeader + entry.name.size();
    }
    out.u32(0x06054B50).u16(0).u16(0).u16(count()).u16(count()).u32(size).u32(offset).u16(0);
    return out.take();
}

uint64_t ZipLayout::size() const {
    uint64_t size = kEnd;
    for (const ZipEntry& entry : entries_)
        size += kFileHeader + kDirectoryHeader + 2 * entry.name.size() + entry.size;
    return size;
}

void downloadAll(const View& view) {
    Message message = view.open();
    std::vector<int> numbers = message.attachments();
    std::vector<ZipEntry> entries;
    for (int n : numbers) {
        Measure m = message.measure(message.part(n));
        entries.push_back({message.saveName(n), m.size(), m.crc()});
    }
    if (entries.empty()) throw PageError(404, kTextNoSuchPart);
    makeNamesUnique(entries);
    ZipLayout zip(std::move(entries), message.info()->date);
    if (zip.size() > kArchiveMax) throw PageError(413, kTextTooLargeToPack);
    std::string name = cleanName(message.subject());
    printFileHeader("application/zip", (name.empty() ? "attachments" : name) + ".zip", zip.size());
    for (size_t i = 0; i < zip.count(); i++) {
        std::string header = zip.fileHeader(i);
        fwrite(header.data(), 1, header.size(), stdout);
        message.write(message.part(numbers[i]), stdout);
    }
    std::string directory = zip.directory();
    fwrite(directory.data(), 1, directory.size(), stdout);
}

}  // namespace host
