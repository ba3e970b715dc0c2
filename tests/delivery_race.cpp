// Mail is delivered, by agents that lock in different ways, while two processes open, mark and
// rewrite the same folder in a loop. At the end every message is there exactly once and whole, or
// was to be deleted. Then openers race for a folder with a stale marker: one wins.
// Argument: the number of messages.

#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <map>

#include "kit/folder_model.h"
#include "kit/site.h"

namespace {

using std::string;

string dir, path;

string messageOf(const string& name) {
    string text = "From " + name + " Mon Jan  5 00:00:00 2004\nMessage-ID: <" + name + ">\n\n";
    for (int i = 0; i < 5; i++) text += name + " line " + std::to_string(i) + "\n";
    return text;
}

/// Appends in two halves with time between them, so that a rewrite without a lock would do harm.
void appendTo(int fd, const string& text) {
    size_t half = text.size() / 2;
    bool isDone = write(fd, text.data(), half) > 0 && usleep(500) == 0 &&
                  write(fd, text.data() + half, text.size() - half) > 0;
    if (!isDone) abort();
}

/// A lock of the kernel, and the same file still under the name once it is ours.
void deliverUnderKernelLock(const string& text, bool isFlock) {
    for (;;) {
        int fd = open(path.c_str(), O_RDWR | O_APPEND);
        if (fd < 0) abort();
        struct flock all = {};
        all.l_type = F_WRLCK;
        if ((isFlock ? flock(fd, LOCK_EX) : fcntl(fd, F_SETLKW, &all)) != 0) abort();
        struct stat here, there;
        bool isCurrent =
            fstat(fd, &here) == 0 && stat(path.c_str(), &there) == 0 && here.st_ino == there.st_ino;
        if (isCurrent) appendTo(fd, text);
        close(fd);
        if (isCurrent) return;
    }
}

void deliverUnderDotlock(const string& text) {
    string lock = path + ".lock";
    int held;
    while ((held = open(lock.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0)) < 0) usleep(1000);
    close(held);
    int fd = open(path.c_str(), O_WRONLY | O_APPEND);
    appendTo(fd, text);
    close(fd);
    unlink(lock.c_str());
}

void deliverWithProcmail(const string& text) {
    FILE* agent = popen(("procmail " + dir + "/procmailrc").c_str(), "w");
    if (!agent || fwrite(text.data(), 1, text.size(), agent) != text.size() || pclose(agent) != 0)
        abort();
}

const struct {
    const char* name;
    void (*deliver)(const string&);
    int share;  // per cent of the messages
} kAgents[] = {
    {"dot", deliverUnderDotlock, 40},
    {"fcntl", [](const string& text) { deliverUnderKernelLock(text, false); }, 30},
    {"flock", [](const string& text) { deliverUnderKernelLock(text, true); }, 30},
    {"procmail", deliverWithProcmail, 2},
};

/// Whose deletion is asked for; the others must be there at the end.
bool isUnwanted(const string& name) {
    return name.back() < '4';
}

void rewriteUntilDone(bool sameFile) {
    while (std::filesystem::exists(dir + "/running")) {
        admOptions.passwdFlag = sameFile;
        if (Fldr* f = fldrOpen(path.c_str())) {
            for (int n = 1; n <= fldrMsgMax(f); n++)
                if (isUnwanted(fldrMsgSetRead(n, f)->msgId)) fldrMsgDelete(n, f);
            fldrClose(f);
        }
        sameFile = !sameFile;
        usleep(200);
    }
    exit(0);
}

std::map<string, int> sent;

int startAgents(int messages) {
    int agents = 0;
    for (const auto& agent : kAgents) {
        int count = messages * agent.share / 100;
        if (agent.name == string("procmail") && system("which procmail > /dev/null") != 0) continue;
        for (int i = 0; i < count; i++) sent[agent.name + std::to_string(i)] = 1;
        agents++;
        if (fork() != 0) continue;
        // One agent at a time: each is to be kept apart from the rewrites by its own way of
        // locking.
        int turn = open((dir + "/turn").c_str(), O_RDWR | O_CREAT, 0600);
        for (int i = 0; i < count; i++) {
            flock(turn, LOCK_EX);
            agent.deliver(messageOf(agent.name + std::to_string(i)));
            flock(turn, LOCK_UN);
            usleep(1500);
        }
        exit(0);
    }
    return agents;
}

/// Faults found in what is left after all deliveries.
int faultsIn(const string& content) {
    int faults = 0, deleted = 0;
    for (const kit::ModelMessage& m : kit::ModelFolder(content).messages) {
        string name = m.header[0].substr(5, m.header[0].find(' ', 5) - 5), body;
        for (size_t i = 0; i < m.body.size() && i < 5; i++) body += m.body[i];
        bool isWhole = messageOf(name).ends_with("\n\n" + body) && m.body.size() <= 6;
        if (!isWhole || sent[name]-- != 1)
            faults += printf("torn or doubled: %s\n", name.c_str()) > 0;
    }
    for (const auto& [name, missing] : sent) {
        deleted += missing;
        if (missing && !isUnwanted(name)) faults += printf("lost: %s\n", name.c_str()) > 0;
    }
    printf("%zu messages delivered, %d deleted\n", sent.size(), deleted);
    return faults + (deleted == 0);
}

int raceFaults() {
    constexpr int kOpeners = 4;
    int faults = 0;
    for (int round = 0; round < 50; round++) {
        kit::writeFile(path + ".tmp", "");
        timespec old[2] = {{1, 0}, {1, 0}};
        utimensat(AT_FDCWD, (path + ".tmp").c_str(), old, 0);
        int go[2], opened = 0;
        if (pipe(go) != 0) abort();
        for (int i = 0; i < kOpeners; i++)
            if (fork() == 0) {
                char c;
                close(go[1]);
                _exit(read(go[0], &c, 1) == 0 && fldrOpen(path.c_str()));
            }
        close(go[1]);
        close(go[0]);
        for (int i = 0, status; i < kOpeners; i++) opened += wait(&status) > 0 && status != 0;
        if (opened != 1) faults += printf("%d openers at once\n", opened) > 0;
    }
    return faults;
}

}  // namespace

int main(int argc, char** argv) {
    dir = kit::memoryFolder();
    path = dir + "/folder";
    kit::writeFile(path, messageOf("first"));
    sent["first"] = 1;
    kit::writeFile(dir + "/procmailrc", "LOCKSLEEP=1\n:0:\n" + path + "\n");
    kit::writeFile(dir + "/running", "");
    fflush(stdout);
    int agents = startAgents(argc > 1 ? atoi(argv[1]) : 2000), faults = 0;
    for (bool sameFile : {false, true})
        if (fork() == 0) rewriteUntilDone(sameFile);
    for (int status; agents > 0 && wait(&status) > 0; agents--) faults += status != 0;
    unlink((dir + "/running").c_str());
    for (int status; wait(&status) > 0;) faults += status != 0;
    faults += faultsIn(kit::readFile(path)) + raceFaults();
    printf("faults: %d\n", faults);
    std::filesystem::remove_all(dir);
    return faults != 0;
}
