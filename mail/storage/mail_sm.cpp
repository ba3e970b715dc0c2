// The storage manager: partitions, mail domains, user ids. Its files belong to the site; a
// partition or a name that is too long for its area is passed over, never cut.

#include "mail_sm.h"

#include "mail/base/file.h"
#include "mail/base/line_reader.h"
#include "mail/storage.h"
#include "support/host.h"
#include "support/support.h"
#include "user_paths.h"

namespace attalven {

namespace {

constexpr size_t kLineLimit = 1000;
using Line = BoundedText<kLineLimit - 1>;

/// All white space leaves the line, also that inside it.
void assignStripped(Line& line, string_view text) {
    line.clear();
    for (char c : text)
        if (!isSpace(c)) line.append(c);
}

/// Gives each line of the file, stripped, to `take` until it gives false.
template <typename Take>
void eachLine(const char* path, Take take) {
    OwnedFile file = openRegular(path);
    LineReader lines(file.get(), kLineLimit);
    Line line;
    for (LinePiece piece; lines.next(piece);) {
        assignStripped(line, piece.text);
        if (!take(line)) return;
    }
}

/// The state is the one section that counts: lines are looked at only while it is the current one.
struct PartitionChoice {
    string_view prefix, wantedSection;
    bool inSection = false;
    unsigned int bestFree = 0;
    BoundedText<255>& best;

    /// False when no further line can count.
    bool take(const Line& line) {
        string_view text = line.view();
        if (text.starts_with('[')) return openSection(tail(text, 1));
        if (inSection && startsWithNoCase(text, prefix)) consider(text);
        return true;
    }

  private:
    bool openSection(string_view rest) {
        if (inSection) return false;
        string_view name = head(rest, std::min(rest.find(']'), rest.size()));
        inSection = wantedSection.empty() || equalNoCase(name, wantedSection);
        return true;
    }
    void consider(string_view line) {
        auto directory = valueAfter(line, '=');
        BoundedText<255> candidate;
        if (!directory || !candidate.fits(*directory)) return;
        candidate.append(*directory);
        unsigned int free = getDiskFreeSize(candidate.c_str());
        if (free <= bestFree) return;
        bestFree = free;
        best = candidate;
    }
};

bool forbidden(char c) {
    return string_view("\"+<>#%{}|\\^~[]';/?:@=&$ ").find(c) != string_view::npos;
}

}  // namespace

bool listsDomain(const char* path, const char* domain) {
    bool isListed = false;
    eachLine(path, [&](const Line& line) {
        isListed = !line.view().starts_with('#') && equalNoCase(line.view(), domain);
        return !isListed;
    });
    return isListed;
}

}  // namespace attalven

using namespace attalven;

char* smGetAvailablePartition(int type, const char* section) {
    static BoundedText<255> availablePartition;
    if (type != 1 && type != 2) return nullptr;
    PartitionChoice choice{type == 1 ? string_view("SPOOL") : string_view("MAILBOX"),
                           viewOf(section), false, 0, availablePartition};
    availablePartition.clear();
    eachLine(siteFilePath("storage.ini").c_str(),
             [&](const Line& line) { return choice.take(line); });
    return availablePartition.empty() ? nullptr : availablePartition.data();
}

int smChkValidMailDomainName(const char* domain) {
    return domain && listsDomain("/etc/sendmail.cw", domain);
}

int mailChkValidUserId(const char* id) {
    if (!id) return 0;
    string_view name(id);
    if (admOptions.passwdFlag == 1 && !name.empty() && isDigit(name.front())) return 0;
    if (name.size() > 15) return 0;
    for (char c : name) {
        if (byteOf(c) >= 128 || forbidden(c)) return 0;
        if (isUpper(c) && !admOptions.allowCaseUserIdFlag) return 0;
    }
    return 1;
}
