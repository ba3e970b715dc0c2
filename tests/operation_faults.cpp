// Faults at every call: each exported operation runs with the k-th allocation, or all from the k-th
// on, failing, and with file calls that fail, are interrupted, fall short or find the disk full,
// for every k until none is struck. It must not crash, hang, leak memory or descriptors, or leave
// anything but a documented result. Argument: a word of the rows to run.

#include <dirent.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <set>
#include <sstream>

#include "kit/faults.h"
#include "operation_rows.h"

extern "C" __attribute__((weak)) int __llvm_profile_write_file();  // in a build for coverage

namespace {

using std::string;

const struct Kind {
    const char* name;
    FaultKind kind;
    int error;
} kKinds[] = {{"one allocation fails", FAULT_ALLOCATION, 0},
              {"memory is out", FAULT_MEMORY, 0},
              {"an error", FAULT_ERROR, EIO},
              {"an interruption", FAULT_ERROR, EINTR},
              {"the disk is full", FAULT_FULL, 0},
              {"half a transfer", FAULT_SHORT, 0}};

bool isEmptyResult(const string& line) {
    for (const char* empty : {"", "(null)", "0", "-1", "ended", "ended\n"})
        if (line == empty) return true;
    return line.ends_with("=");
}

/// A part's default type, a name in the set in which it was sent.
bool isLeftAsItWas(const string& line) {
    return line == "subtype=plain" || line == "subtype=octet-stream" ||
           line.starts_with("file=\x1B$B");
}

/// What `result` holds beyond the rule; "" when it is documented.
string beyond(const string& result, const string& full, Rule rule) {
    if (rule == Rule::kOther || result == full || isEmptyResult(result)) return "";
    if (rule == Rule::kWhole) return result;
    std::istringstream lines(result), all(full);
    for (string line, next; std::getline(lines, line);) {
        if (isEmptyResult(line) || (rule == Rule::kParts && isLeftAsItWas(line))) continue;
        while (std::getline(all, next) && next != line) {
        }
        if (!all) return line;
    }
    return "";
}

int openDescriptors() {
    DIR* all = opendir("/proc/self/fd");
    int n = 0;
    while (readdir(all)) n++;
    closedir(all);
    return n;
}

int complaints;
void complain(const OperationRow& row, const Kind& kind, int k, const string& what) {
    if (++complaints < 4) printf("%s: %s, %d: %s\n", row.code, kind.name, k, what.c_str());
}

/// All k of one kind, twice: caches that the first pass filled hide no call from the second, in
/// which nothing new may stay allocated.
void strike(const OperationRow& row, const Kind& kind, World& world) {
    std::vector<string> results;
    long blocks = 0;
    int descriptors = 0;
    for (int pass = 0; pass < 2; pass++) {
        for (int k = 1;; k++) {
            *faults = {0, 0, k, kind.error, kind.kind, gettid()};
            long before = liveBlocks;
            string result = row.run(world);
            world.forget();
            if (result.ends_with("ended\n")) liveBlocks = before;  // the process would have ended
            if (pass && liveBlocks > blocks) complain(row, kind, k, "leaks memory");
            if (pass && openDescriptors() > descriptors)
                complain(row, kind, k, "leaks a descriptor");
            results.push_back(result);
            if (faults->count < k) break;
            if (pass == 0) printf("%c", 0);  // one byte a call that was struck, for the parent
        }
        if (pass == 0) blocks = liveBlocks, descriptors = openDescriptors();
        for (size_t k = 0; k < results.size(); k++)
            if (string more = beyond(results[k], results.back(), row.rule); !more.empty())
                complain(row, kind, static_cast<int>(k) + 1,
                         "gives \"" + more.substr(0, 300) + "\" of \"" +
                             results.back().substr(0, 300) + "\"");
        results.clear();
    }
}

struct Tally {
    long struck = 0, bad = 0;
};

/// In a process of its own, so that a crash names the row and no row inherits caches.
void runRow(const OperationRow& row, Tally& tally) {
    int ends[2];
    if (pipe(ends) != 0) abort();
    fflush(stdout);
    pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], 1);
        close(ends[0]);
        close(ends[1]);
        alarm(300);
        World world;
        // An error can leave the lock file of a rewrite; rewrite_faults has them all.
        for (const Kind& kind : kKinds)
            if (kind.kind != FAULT_ERROR || !strstr(row.code, "marked()")) strike(row, kind, world);
        faults->thread = -1;
        fflush(stdout);
        if (__llvm_profile_write_file) __llvm_profile_write_file();
        _exit(complaints != 0);
    }
    close(ends[1]);
    char block[4096];
    for (ssize_t n; (n = read(ends[0], block, sizeof block)) > 0;)
        for (ssize_t i = 0; i < n; i++) block[i] ? putchar(block[i]) : tally.struck++;
    close(ends[0]);
    int status;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status) || WEXITSTATUS(status) > 1)
        printf("%s: ended with status %x at fault %d of kind %d\n", row.code, status,
               faults->target, faults->kind);
    tally.bad += status != 0;
}

/// The exported names that stand in no row.
int missing() {
    string code;
    for (const OperationRow& row : operationRows()) code += row.code + string(" ");
    std::set<string> words;
    for (size_t i = 0; i < code.size();) {
        size_t n = 0;
        while (isalnum(code[i + n]) || code[i + n] == '_') n++;
        words.insert(code.substr(i, n));
        i += n + 1;
    }
    int bad = 0, names = 0;
    FILE* list = popen("cd " SOURCE_DIR " && tools/export-map --names mail/*.h", "r");
    for (char line[200]; fgets(line, sizeof line, list); names++)
        if (line[strcspn(line, "\n")] = 0; !words.count(line)) printf("no row: %s\n", line), bad++;
    return pclose(list) != 0 || names < 150 ? bad + 1 : bad;
}

}  // namespace

int main(int argc, char** argv) {
    faultsInit();
    Tally tally;
    for (const OperationRow& row : operationRows())
        if (argc < 2 || strstr(row.code, argv[1])) runRow(row, tally);
    int unnamed = missing();
    printf("%zu rows, %ld faults struck, %ld rows failed, %d operations without row\n",
           operationRows().size(), tally.struck, tally.bad, unnamed);
    return tally.bad || unnamed;
}
