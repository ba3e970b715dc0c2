// The commands that show a message as the pages of a web mail would: html, wml, attachments,
// download. What they print are the bytes that a page or a browser gets, in the page character set.

#include <cstdlib>
#include <cstring>

#include "commands.h"
#include "open_folder.h"
#include "terminal_text.h"

namespace cmd {

namespace {

/// Message `args[1]` of folder `args[0]`.
struct Shown {
    explicit Shown(const Args& args)
        : folder((requireMessage(args), args[0])),
          number(numberOf(args[1], "the message number")),
          message(folder.message(number)) {}

    static void requireMessage(const Args& args) {
        if (args.size() < 2) throw UsageError("a folder and a message number, please");
    }

    ReadFolder folder;
    int number;
    Message message;
};

void printView(const Args& args, void (*callback)(const char*, void**)) {
    if (args.size() != 2) throw UsageError("a folder and a message number, please");
    Shown shown(args);
    std::string name = args[0].substr(args[0].rfind('/') + 1);
    char noId[] = "";
    FILE* stream = shown.folder.stream();
    MailView view = {};
    view.message = shown.message->body;
    view.file = &stream;
    view.select = shown.number;
    view.msgId = shown.message->messageId ? shown.message->messageId : noId;
    snprintf(view.fldrName, sizeof view.fldrName, "%s", name.c_str());
    if (conf.httpdPort == 0) conf.httpdPort = 80;  // no configuration was read
    void* slot = &view;
    callback(nullptr, &slot);
}

int htmlCommand(const Args& args) {
    printView(args, pfnMailBody);
    return kDone;
}

int wmlCommand(const Args& args) {
    setenv("HTTP_ACCEPT", "text/vnd.wap.wml", 1);  // pages for other browsers have no WML
    printView(args, pfnWAPMailBody);
    return kDone;
}

/// A name that the library decoded into the page character set of its mail, as UTF-8. The set is
/// that of the mail's text, or else the first that holds the name, as for names written in UTF-8.
std::string nameInUtf8(const char* name, const std::string& bodySet) {
    std::vector<std::string> sets = {getDefaultCharSet(bodySet.c_str())};
    sets.insert(sets.end(), {"EUC-KR", "SHIFT-JIS", "GB2312", "BIG5"});
    for (const std::string& set : sets) {
        std::unique_ptr<char, void (*)(void*)> text(strConvCharSet("UTF-8", set.c_str(), name),
                                                    free);
        if (text) return text.get();
    }
    return name;
}

int attachmentsCommand(const Args& args) {
    if (args.size() != 2) throw UsageError("a folder and a message number, please");
    Shown shown(args);
    std::string bodySet = bodyCharset(shown.message->body);
    std::unique_ptr<MailAttach, void (*)(MailAttach*)> list(
        mailGetAttachList(shown.message.get(), 0, shown.folder.stream()), mailAttachListFree);
    for (const MailAttach* row = list.get(); row && row->mimeType; row++)
        printf("%10d %-24s %s\n", row->size, printable(row->mimeType).c_str(),
               printable(nameInUtf8(row->name ? row->name : "", bodySet)).c_str());
    return kDone;
}

/// The file name or Content-ID that the message's part bears, for one typed in UTF-8.
const char* storedName(const Shown& shown, const std::string& typed, char* MailBody::*field) {
    std::string bodySet = bodyCharset(shown.message->body);
    BodyIndex index(mailGetBody(shown.message->body));
    for (MailBodyList** e = index.get(); e && *e; e++) {
        const char* name = (*e)->body->*field;
        if (name && (typed == name || typed == nameInUtf8(name, bodySet))) return name;
    }
    throw Failure("no part of the message is called " + typed);
}

int downloadCommand(const Args& args) {
    std::string what = args.size() > 2 ? args[2] : "";
    size_t wanted = what == "--body" ? 3 : what == "--name" || what == "--cid" ? 4 : 0;
    if (args.size() != wanted) throw UsageError("a folder, a message, and what to download");
    Shown shown(args);
    FILE* stream = shown.folder.stream();
    MailInfo* message = shown.message.get();
    if (what == "--body")
        mailSaveMailBody(message, 0, stream);
    else if (what == "--name")
        mailSaveAttachFile(message, 0, storedName(shown, args[3], &MailBody::fileName), 0, stream);
    else
        mailViewCIDFile(message, 0, 0, storedName(shown, args[3], &MailBody::contentId), 0, stream);
    return kDone;
}

constexpr Command kCommands[] = {
    {"html", "FOLDER N", "the body as a page shows it, in the page character set", htmlCommand},
    {"wml", "FOLDER N", "the body as a WML page shows it", wmlCommand},
    {"attachments", "FOLDER N", "stored size, type and name of each attachment",
     attachmentsCommand},
    {"download", "FOLDER N --name F | --cid C | --body", "the complete response of a download",
     downloadCommand},
};

}  // namespace

std::span<const Command> displayCommands() {
    return kCommands;
}

}  // namespace cmd
