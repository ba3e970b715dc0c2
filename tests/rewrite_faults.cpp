// Faults at every call of a rewrite and of its repair: a child process closes a folder and is
// killed, or a call fails; mail arrives before, meanwhile and afterwards; another child opens the
// folder and meets a second fault; then an undisturbed opening must leave, byte for byte, the old
// or the new content with all the mail. Argument: "full" for every combination.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>

#include "kit/faults.h"
#include "kit/folder_model.h"
#include "kit/site.h"

namespace {

using std::string;

struct Scenario {
    const char* marks;  // one character a message: d deleted, r read, . nothing
    bool sameFile;
    bool mailBefore;  // between opening and closing
    bool mailAfter;   // after the first fault, and after the second
};

struct Tally {
    long closing = 0, repairs = 0, struck = 0, bad = 0;
};

string dir, path, marker;
Tally tally;

string message(const string& name, const string& header, size_t lines) {
    string text =
        "From " + name + "@x Mon Jan  5 00:00:00 2004\nSubject: " + name + "\n" + header + "\n";
    for (size_t i = 0; i < lines; i++) text += name + " line " + std::to_string(i) + "\n";
    return text;
}

const string kMailBefore = message("before", "", 3),
             kMailAfter = message("after", "Status: R\n", 4), kMailLast = message("last", "", 2);

void append(const string& mail) {
    int fd = open(path.c_str(), O_WRONLY | O_APPEND);
    if (fd < 0 || write(fd, mail.data(), mail.size()) != static_cast<ssize_t>(mail.size())) abort();
    close(fd);
}

/// The marker of a process that has died is left until it is stale.
void ageMarker() {
    timespec times[2] = {{time(nullptr) - 200, 0}, {time(nullptr) - 200, 0}};
    utimensat(AT_FDCWD, marker.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

/// Runs `work` in a child; false when no call was left for the fault to strike.
template <typename Work>
bool struckIn(FaultKind kind, int target, int error, Work work) {
    *faults = {0, 0, target, error, kind, 0};
    pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    int status;
    if (child < 0 || waitpid(child, &status, 0) != child) abort();
    faults->armed = 0;
    if (WIFSIGNALED(status) && WTERMSIG(status) != SIGKILL) {
        printf("child ended by signal %d\n", WTERMSIG(status));
        tally.bad++;
    }
    return faults->count >= target;
}

void closeWithMarks(const Scenario& s) {
    Fldr* f = fldrOpen(path.c_str());
    if (!f) abort();
    for (int n = 1; s.marks[n - 1]; n++) {
        if (s.marks[n - 1] == 'd') fldrMsgDelete(n, f);
        if (s.marks[n - 1] == 'r') fldrMsgSetRead(n, f);
    }
    fldrStatusSet(1);
    if (s.mailBefore) append(kMailBefore);
    faults->armed = 1;
    fldrClose(f);
}

void openOnce() {
    faults->armed = 1;
    if (Fldr* f = fldrOpen(path.c_str())) {
        faults->armed = 0;
        fldrClose(f);
    }
}

string oldContent(const Scenario& s) {
    // With and without Status lines, so that the new content is longer or shorter than the old one.
    string content;
    for (size_t i = 0; s.marks[i]; i++)
        content +=
            message(string(1, static_cast<char>('a' + i)), i % 2 ? "Status: RO\n" : "", 5 * i);
    return content;
}

string newContent(const Scenario& s) {
    kit::ModelFolder model(oldContent(s));
    std::vector<unsigned> status;
    for (size_t i = 0; s.marks[i]; i++)
        status.push_back((i % 2 ? 0x110u : 0u) | (s.marks[i] == 'd' ? 0x1000u : 0u) |
                         (s.marks[i] == 'r' ? 0x10u : 0u));
    return model.rewritten(status);
}

/// After all faults: the folder opens, nothing is missing, doubled or torn, and nothing is left
/// beside it.
void check(const Scenario& s, const string& mail, const string& label, bool mayKeepLock) {
    ageMarker();
    Fldr* f = fldrOpen(path.c_str());
    fldrClose(f);
    string content = kit::readFile(path), left;
    for (const auto& e : std::filesystem::directory_iterator(dir))
        if (e.path() != path && !(mayKeepLock && e.path().extension() == ".lock"))
            left += e.path().filename().string() + " ";
    bool isWhole = content == oldContent(s) + mail || content == newContent(s) + mail;
    if (isWhole && (f || content.empty()) && left.empty()) return;
    if (tally.bad++ < 10)
        printf("%s: %s, %s, left: %s\n", label.c_str(), isWhole ? "whole" : "NOT WHOLE",
               f || content.empty() ? "opens" : "DOES NOT OPEN", left.c_str());
}

struct Fault {
    FaultKind kind;
    int error;
    const char* name;
};
const Fault kAll[] = {{FAULT_KILL, 0, "kill"},         {FAULT_KILL_HALF, 0, "kill half"},
                      {FAULT_ERROR, ENOSPC, "ENOSPC"}, {FAULT_ERROR, EIO, "EIO"},
                      {FAULT_FULL, 0, "disk full"},    {FAULT_SHORT, 0, "short"}};

using Files = std::map<string, string>;

Files filesOf(const string& directory) {
    Files files;
    for (const auto& e : std::filesystem::directory_iterator(directory))
        files[e.path()] = kit::readFile(e.path());
    return files;
}

void restore(const Files& files) {
    for (const auto& e : std::filesystem::directory_iterator(dir))
        if (!files.count(e.path())) std::filesystem::remove(e.path());
    for (const auto& [name, content] : files) kit::writeFile(name, content);
}

bool mayLeaveLock(const Fault* fault) {
    return fault && fault->kind == FAULT_ERROR;  // its removal may have failed, too
}

/// One fault in closing, at each call; then, if asked, for each of them a second one at each call
/// of the next opening.
void run(const Scenario& s, const Fault& first, const Fault* second) {
    admOptions.passwdFlag = s.sameFile;
    string scene = string(s.marks) + (s.sameFile ? " same file" : " new file") +
                   (s.mailBefore ? " mail before" : "") + (s.mailAfter ? " mail after" : "") + ", ";
    bool mayKeepLock = mayLeaveLock(&first) || mayLeaveLock(second);
    for (int n = 1;; n++) {
        restore({{path, oldContent(s)}});
        if (!struckIn(first.kind, n, first.error, [&s] { closeWithMarks(s); })) return;
        tally.closing += !second;
        string mail = s.mailBefore ? kMailBefore : "";
        if (s.mailAfter) append(kMailAfter);
        if (s.mailAfter) mail += kMailAfter;
        string label = scene + first.name + " at " + std::to_string(n);
        if (!second) {
            check(s, mail, label, mayKeepLock);
            continue;
        }
        const Files state = filesOf(dir);
        bool isStruck = true;
        for (int m = 1; isStruck; m++) {
            restore(state);
            ageMarker();
            isStruck = struckIn(second->kind, m, second->error, openOnce);
            tally.repairs += isStruck;
            if (s.mailAfter) append(kMailLast);
            check(s, s.mailAfter ? mail + kMailLast : mail,
                  label + ", " + second->name + " at " + std::to_string(m), mayKeepLock);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    bool isFull = argc > 1 && strcmp(argv[1], "full") == 0;
    dir = kit::memoryFolder();
    path = dir + "/folder";
    marker = path + ".tmp";
    faultsInit();
    // Longer and shorter new contents, contents of the old size, and none.
    for (bool sameFile : {true, false})
        for (const char* marks : {".d.r.", "d....", "....d", "dddd", "....."})
            for (int mail : {3, 0, 1, 2}) {
                bool isUsual = mail == 3 && marks[0] == '.' && marks[4] != 'd';
                if (!isFull && mail > 0 && !isUsual) continue;
                Scenario s = {marks, sameFile, (mail & 1) != 0, (mail & 2) != 0};
                for (const Fault& first : kAll) run(s, first, nullptr);
                if (isFull && mail % 3 == 0)
                    for (const Fault& first : {kAll[0], kAll[1], kAll[4]})
                        for (const Fault& second : kAll) run(s, first, &second);
                if (!isFull && isUsual && sameFile && marks[1] == 'd')
                    for (const Fault& second : {kAll[0], kAll[4]}) run(s, kAll[0], &second);
            }
    printf("faults while closing: %ld, second faults while opening: %ld, bad ends: %ld\n",
           tally.closing, tally.repairs, tally.bad);
    std::filesystem::remove_all(dir);
    return tally.bad != 0 || tally.closing == 0 || tally.repairs == 0;
}
