// mark and delete: the commands that rewrite a folder.

#include "commands.h"
#include "mail/mail.h"
#include "open_folder.h"

namespace cmd {

namespace {

constexpr unsigned kRead = 0x10, kOld = 0x100;

struct CloseFolder {
    void operator()(Fldr* f) const { fldrClose(f); }
};
using EditedFolder = std::unique_ptr<Fldr, CloseFolder>;

/// Opens the folder with its busy marker and checks the message numbers.
EditedFolder edit(const std::string& path, const std::vector<int>& numbers) {
    ReadFolder seen(path);  // tells a missing file from an empty one
    EditedFolder folder(fldrOpen(path.c_str()));
    if (!folder) throw Failure(path + ": busy, another program has it open (" + path + ".tmp)");
    for (int n : numbers)
        if (!fldrChkMsgBoundary(n, folder.get()))
            throw Failure(path + ": no message " + std::to_string(n) + ", it holds " +
                          std::to_string(fldrMsgMax(folder.get())));
    return folder;
}

/// The numbers among `args`, which start after the folder; options are left to the caller.
std::vector<int> numbersOf(const Args& args) {
    std::vector<int> numbers;
    for (size_t i = 1; i < args.size(); i++)
        if (!args[i].starts_with("--")) numbers.push_back(numberOf(args[i], "the message number"));
    if (numbers.empty()) throw UsageError("a folder and message numbers, please");
    return numbers;
}

int markCommand(const Args& args) {
    std::string option;
    for (const std::string& a : args)
        if (a.starts_with("--")) option += a;
    if (option != "--read" && option != "--old" && option != "--unread")
        throw UsageError("one of --read, --old, --unread");
    std::vector<int> numbers = numbersOf(args);
    EditedFolder folder = edit(args[0], numbers);
    for (int n : numbers) {
        if (option == "--read") fldrMsgSetRead(n, folder.get());
        if (option == "--old") fldrMsgSetOld(n, folder.get());
        if (option == "--unread") folder->msgs[n - 1]->status &= ~(kRead | kOld);
    }
    std::vector<unsigned> wanted;
    wanted.reserve(numbers.size());
    for (int n : numbers) wanted.push_back(fldrMsgGetStatus(n, folder.get()));
    fldrStatusSet(1);
    folder.reset();
    ReadFolder after(args[0]);
    for (size_t i = 0; i < numbers.size(); i++)
        if (after.entry(numbers[i]).status != wanted[i])
            throw Failure(args[0] + ": could not be rewritten, unchanged");
    return kDone;
}

int deleteCommand(const Args& args) {
    std::vector<int> numbers = numbersOf(args);
    EditedFolder folder = edit(args[0], numbers);
    for (int n : numbers) fldrMsgDelete(n, folder.get());
    int count = fldrMsgMax(folder.get()), deleted = 0;
    for (int n = 1; n <= count; n++) deleted += fldrMsgIsDelete(n, folder.get()) != 0;
    folder.reset();
    // fldrClose() has no result; mail that arrived meanwhile may be in the count.
    Stream stream(fopen(args[0].c_str(), "r"));
    std::unique_ptr<Fldr, FreeFolder> after(stream ? fldrProcessing(stream.get()) : nullptr);
    if (!after || fldrMsgMax(after.get()) >= count)
        throw Failure(args[0] + ": could not be rewritten, unchanged");
    printf("%d of %d messages deleted\n", deleted, count);
    return kDone;
}

constexpr Command kCommands[] = {
    {"mark", "FOLDER N... --read | --old | --unread", "sets or clears the flags of messages",
     markCommand},
    {"delete", "FOLDER N...", "deletes messages and rewrites the folder", deleteCommand},
};

}  // namespace

std::span<const Command> folderCommands() {
    return kCommands;
}

}  // namespace cmd
