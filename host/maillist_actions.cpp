#include "host_texts.h"
#include "mail/mail.h"
#include "maillist.h"

namespace host {

namespace {

struct Action {
    const Request& request;
    const User& user;
    const std::string& folder;
    std::vector<MessageRef> messages;
};

std::string notice(int text, size_t count) {
    return "notice=" + std::to_string(text) + "&n=" + std::to_string(count);
}

/// Sets the marks of entries to what `mark` makes of them; the folder is rewritten only if that
/// changes any.
size_t markEntries(const Action& action, bool all, unsigned (*mark)(unsigned status)) {
    size_t count = 0;
    auto change = [&](Fldr* index, const std::vector<int>& selected) {
        std::vector<int> numbers = selected;
        for (int n = 1; all && n <= fldrMsgMax(index); n++) numbers.push_back(n);
        for (int n : numbers) {
            unsigned old = fldrMsgGetStatus(n, index), wanted = mark(old);
            index->msgs[n - 1]->status = wanted;
            if (wanted != old) fldrStatusSet(1);
        }
        count = numbers.size();
    };
    changeFolder(action.user, action.folder, action.messages, change);
    return count;
}

unsigned read(unsigned status) {
    return status | FLDR_READ;
}
unsigned unread(unsigned status) {
    return status & ~(FLDR_READ | FLDR_OLD);
}

std::string markRead(const Action& action) {
    return notice(kTextListMarkedRead, markEntries(action, false, read));
}
std::string markUnread(const Action& action) {
    return notice(kTextListMarkedUnread, markEntries(action, false, unread));
}
std::string markAllRead(const Action& action) {
    return notice(kTextListAllRead, markEntries(action, true, read));
}

/// Deletes for good: the messages, or all.
size_t purge(const Action& action, bool all) {
    size_t count = 0;
    auto change = [&](Fldr* index, const std::vector<int>& selected) {
        std::vector<int> numbers = selected;
        for (int n = 1; all && n <= fldrMsgMax(index); n++) numbers.push_back(n);
        for (int n : numbers) fldrMsgDelete(n, index);
        count = numbers.size();
    };
    changeFolder(action.user, action.folder, action.messages, change);
    return count;
}

std::string moveTo(const Action& action, const std::string& target) {
    return notice(kTextListMoved,
                  moveMessages(action.user, action.folder, target, action.messages));
}

std::string remove(const Action& action) {
    if (action.folder == "trash") return notice(kTextListPurged, purge(action, false));
    return moveTo(action, "trash");
}
std::string undelete(const Action& action) {
    return moveTo(action, "inbox");
}
std::string move(const Action& action) {
    return moveTo(action, action.request.value("target"));
}

/// Nothing brings these back, so it is asked first.
std::string emptyTrash(const Action& action) {
    if (action.request.value("sure") != "1") return "";
    if (action.folder != "trash") throw PageError(400, kTextBadRequest);
    return notice(kTextListPurged, purge(action, true));
}

struct Command {
    const char* name;
    bool needsMessages;
    std::string (*run)(const Action&);
};
constexpr Command kCommands[] = {
    {"read", true, markRead},     {"unread", true, markUnread}, {"readall", false, markAllRead},
    {"delete", true, remove},     {"undelete", true, undelete}, {"move", true, move},
    {"empty", false, emptyTrash},
};

/// "number:name", as the list and the message page write it.
std::vector<MessageRef> messagesOf(const Request& request) {
    std::vector<MessageRef> messages;
    for (const std::string& ref : request.values("msg")) {
        size_t colon = ref.find(':');
        if (colon >= ref.size() - 1) throw PageError(400, kTextBadRequest);
        messages.push_back({atoi(ref.c_str()), ref.substr(colon + 1)});
    }
    return messages;
}

}  // namespace

std::string runAction(const Request& request, const User& user, const ListView& view) {
    std::vector<MessageRef> messages = messagesOf(request);
    for (const Command& command : kCommands) {
        if (request.value("cmd") != command.name) continue;
        if (command.needsMessages && messages.empty()) return notice(kTextListNoneSelected, 0);
        if (!command.needsMessages) messages.clear();
        return command.run({request, user, view.folder, messages});
    }
    throw PageError(400, kTextBadRequest);
}

}  // namespace host
