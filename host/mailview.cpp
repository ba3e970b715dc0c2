// mailview.cgi: shows a message and gives out what is in it.

#include "mailview.h"

#include <unistd.h>

#include <optional>

#include "host_texts.h"
#include "kit/page.h"
#include "kit/part.h"
#include "kit/text.h"

namespace host {

std::string View::query(const PartPath& part) const {
    std::string text = "fldrname=" + folder.name() + "&select=" + std::to_string(number) +
                       "&msgid=" + urlEncoded(id());
    return part.empty() ? text : text + "&part=" + pathText(part);
}

void printPassiveHeader() {
    headerLine("Content-Security-Policy", "sandbox; default-src 'none'");
    headerLine("X-Content-Type-Options", "nosniff");
    headerLine("Referrer-Policy", "no-referrer");
    headerLine("Cross-Origin-Resource-Policy", "same-origin");
    headerLine("Cache-Control", "private, no-store");
}

void printFileHeader(const std::string& type, const std::string& name, uint64_t size) {
    printPassiveHeader();
    headerLine("Content-Disposition", attachmentDisposition(name));
    headerLine("Content-Length", std::to_string(size));
    startContent(type.c_str());
}

namespace {

struct Command {
    const char* name;
    void (*run)(const View&);
};
constexpr Command kCommands[] = {
    {"view", showPage}, {"body", showBody},     {"down", downloadPart}, {"zip", downloadAll},
    {"raw", showRaw},   {"header", showHeader}, {"savebody", saveBody},
};

/// The page is complete for the browser before the folder is rewritten.
void markRead(const User& user, const std::string& folder, const MessageRef& message) {
    fflush(stdout);
    close(STDOUT_FILENO);
    try {
        changeFolder(user, folder, {message}, [](Fldr* index, const std::vector<int>& numbers) {
            for (int n : numbers) fldrMsgSetRead(n, index);
            if (!numbers.empty()) fldrStatusSet(1);
        });
    } catch (const std::exception&) {
        // It stays unread, which harms nobody.
    }
}

const Command& commandOf(const Request& request) {
    std::string name = request.has("cmd") ? request.value("cmd") : kCommands[0].name;
    for (const Command& command : kCommands)
        if (name == command.name) return command;
    throw PageError(400, kTextBadRequest);
}

/// Answers the request; gives the message if it was unread and is now on the screen.
std::optional<MessageRef> answer(const Request& request, const User& user) {
    const Command& command = commandOf(request);
    Folder folder(user, request.value("fldrname"));
    int n = linkedMessage(folder, request);
    command.run({request, user, folder, n, partPath(request.value("part"))});
    if (command.run != showPage || folder.entry(n).status & FLDR_READ) return {};
    return MessageRef{n, folder.nameOf(n)};
}

void run() {
    User user = currentUser();
    Request request;
    std::optional<MessageRef> opened = answer(request, user);
    if (opened) markRead(user, request.value("fldrname"), *opened);
}

}  // namespace

}  // namespace host

int main() {
    return host::runProgram(host::run);
}
