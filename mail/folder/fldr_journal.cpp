// The journal file: one line of text, replaced as a whole. In a directory where others can write,
// a planted journal with a planted marker would put foreign text into a folder: only a file of
// someone who may write the folder anyway is believed.

#include "fldr_journal.h"

#include <cinttypes>
#include <cstdio>

#include "digest.h"
#include "side_files.h"

namespace attalven {

namespace {

using Line = BoundedText<200>;

constexpr string_view kFreshEnding = ".tmp.j.new";

Line lineOf(const Journal& j) {
    char fields[160];
    int n = snprintf(fields, sizeof fields, "folder-rewrite-1 %c %" PRId64 " %" PRId64, j.phase,
                     j.oldSize, j.newSize);
    snprintf(fields + n, sizeof fields - static_cast<size_t>(n),
             " %016" PRIx64 " %016" PRIx64 " %016" PRIx64, j.key, j.contentDigest, j.restDigest);
    Digest check;
    check.add(string_view(fields));
    char end[20];
    snprintf(end, sizeof end, " %016" PRIx64 "\n", check.value());
    Line line;
    line.append(string_view(fields));
    line.append(string_view(end));
    return line;
}

bool parse(const char* text, Journal& j) {
    char phase = 0;
    if (sscanf(text, "folder-rewrite-1 %c %" SCNd64 " %" SCNd64 " %" SCNx64 " %" SCNx64 " %" SCNx64,
               &phase, &j.oldSize, &j.newSize, &j.key, &j.contentDigest, &j.restDigest) != 6)
        return false;
    j.phase = phase == Journal::kExtending ? Journal::kExtending : Journal::kCopying;
    return j.oldSize >= 0 && j.newSize >= 0 && lineOf(j).view() == viewOf(text);
}

}  // namespace

bool Journal::save(string_view folder) const {
    SidePath path(folder, kJournalEnding), fresh(folder, kFreshEnding);
    removeFresh(folder);
    Descriptor file(open(fresh, O_WRONLY | O_CREAT | O_EXCL | kSideFileFlags, 0600));
    return file && writeAll(file.get(), lineOf(*this).view()) && fsync(file.get()) == 0 &&
           file.close() && rename(fresh, path) == 0 && syncDirectory(folder);
}

Journal::Read Journal::load(string_view folder) {
    SidePath path(folder, kJournalEnding);
    if (isAbsent(path)) return Read::kNone;
    FileState state = stateOf(path);
    struct stat st;
    if (!state.exists() || stat(SidePath(folder, ""), &st) != 0) return Read::kFailed;
    if (!state.isRegular ||
        (state.owner != geteuid() && state.owner != 0 && state.owner != st.st_uid))
        return Read::kForeign;
    Descriptor file(open(path, O_RDONLY | kSideFileFlags));
    char text[256] = {};
    ssize_t n = file ? read(file.get(), text, sizeof text - 1) : -1;
    if (n < 0 || !stateOf(file.get()).isSameFile(state)) return Read::kFailed;
    return parse(text, *this) ? Read::kDone : Read::kInvalid;
}

void Journal::removeFresh(string_view folder) {
    unlink(SidePath(folder, kFreshEnding));
}

bool Journal::remove(string_view folder) {
    SidePath path(folder, kJournalEnding);
    unlink(path);
    removeFresh(folder);
    return isAbsent(path) && syncDirectory(folder);
}

}  // namespace attalven
