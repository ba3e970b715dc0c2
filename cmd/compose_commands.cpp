// The commands that write mail: compose, send, sms. Texts and file names arrive in UTF-8; the
// library takes them in the page character set of the set chosen for sending, so they are converted
// here.

#include <strings.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "commands.h"
#include "deliver.h"
#include "mail/mail.h"
#include "open_folder.h"
#include "site.h"

namespace cmd {

namespace {

namespace fs = std::filesystem;

constexpr char kForward[] = "forward@";

#define ATTALVEN_FORM                                                                      \
    "--from A --to A[,A...] [--cc A] [--reply-to A] [--subject TEXT] [--type plain|html] " \
    "[--charset SET] [--encoding raw|qp|base64] [--priority 1-5] [--message-id ID] "       \
    "[FILE|forward@FILE...]"

/// The command line of compose and send with the body from standard input.
struct Form {
    explicit Form(const Args& args)
        : options(args, {"from", "to", "cc", "reply-to", "subject", "type", "charset", "encoding",
                         "priority", "message-id", "server", "helo"}) {
        if (text("from").empty() || text("to").empty())
            throw UsageError("a sender and recipients, please");
        char block[65536];
        for (size_t n; (n = fread(block, 1, sizeof block, stdin)) > 0;) body.append(block, n);
    }
    std::string text(const char* option) const { return options.value(option, ""); }

    Options options;
    std::string body;
};

int codeOf(const std::string& word, std::initializer_list<const char*> words) {
    int code = 1;
    for (const char* w : words) {
        if (word == w) return code;
        code++;
    }
    throw UsageError("\"" + word + "\" is none of the words possible there");
}

/// The character set in which the library takes the texts of a message sent in `charset`.
std::string pageSetOf(const std::string& charset) {
    const std::pair<const char*, const char*> prefixes[] = {{"jpn-utf-", "SHIFT-JIS"},
                                                            {"kor-utf-", "EUC-KR"},
                                                            {"cnt-utf-", "GB2312"},
                                                            {"cns-utf-", "BIG5"}};
    for (auto [prefix, set] : prefixes)
        if (strncasecmp(charset.c_str(), prefix, strlen(prefix)) == 0) return set;
    return getDefaultCharSet(charset.c_str());
}

bool isAscii(const std::string& text) {
    for (char c : text)
        if (static_cast<unsigned char>(c) >= 0x80) return false;
    return true;
}

/// UTF-8 to `set`; false when the set lacks a character.
bool convert(std::string& text, const std::string& set) {
    if (text.empty() || (isAscii(text) && strcasecmp(set.c_str(), "HZ") != 0)) return true;
    char* converted = strConvCharSet(set.c_str(), "utf-8", text.c_str());
    if (!converted) return false;
    text = converted;
    free(converted);
    return true;
}

/// The bytes of HZ characters are ASCII letters: those that mean something in a quoted name are
/// protected.
std::string protectedNames(const std::string& addresses) {
    std::string text;
    bool isShifted = false;
    for (size_t i = 0; i < addresses.size(); i++) {
        if (addresses[i] == '~' && strchr("{}", addresses[i + 1]))
            isShifted = addresses[i + 1] == '{';
        if (isShifted && strchr("\"\\", addresses[i])) text += '\\';
        text += addresses[i];
    }
    return text;
}

/// Chooses the set for sending when none was given, and converts the texts and file names.
std::string convertTexts(Form& form, std::vector<std::string>& names) {
    std::vector<std::string> candidates = {"us-ascii", "kor-utf-8", "jpn-utf-8", "cnt-utf-8",
                                           "cns-utf-8"};
    if (form.options.has("charset")) candidates = {form.text("charset")};
    for (const std::string& charset : candidates) {
        Form converted = form;
        std::vector<std::string> convertedNames = names;
        std::string set = pageSetOf(charset);
        bool fits = convert(converted.body, set);
        for (auto& [option, text] : converted.options.given) {
            fits = fits && convert(text, set);
            if (set == "HZ" && option != "subject") text = protectedNames(text);
        }
        for (std::string& name : convertedNames) fits = fits && convert(name, set);
        if (!fits) continue;
        form = converted;
        names = convertedNames;
        return charset;
    }
    throw Failure("no character set holds the texts");
}

/// The attachment list. A file whose name was converted is attached as a copy of that name.
class AttachmentList {
  public:
    explicit AttachmentList(const Args& files) {
        for (const std::string& file : files) {
            bool isForward = file.compare(0, strlen(kForward), kForward) == 0;
            fs::path path = isForward ? file.substr(strlen(kForward)) : file;
            if (!fs::is_regular_file(path)) throw Failure("\"" + file + "\" is no file");
            paths_.push_back(fs::canonical(path));
            forwards_.push_back(isForward);
            names.push_back(path.filename());
        }
    }
    ~AttachmentList() {
        std::error_code ignored;
        if (!folder_.empty()) fs::remove_all(folder_, ignored);
    }
    AttachmentList(const AttachmentList&) = delete;
    AttachmentList& operator=(const AttachmentList&) = delete;

    /// As the library takes it; valid as long as this.
    char** entries() {
        for (size_t i = 0; i < names.size(); i++)
            texts_.push_back(forwards_[i] ? kForward + paths_[i].string() : named(i).string());
        for (std::string& text : texts_) list_.push_back(text.data());
        list_.push_back(nullptr);
        return list_.data();
    }

    std::vector<std::string> names;  // file names, to be converted

  private:
    fs::path named(size_t i) {
        if (names[i] == paths_[i].filename()) return paths_[i];
        if (folder_.empty()) {
            char made[] = "/tmp/attalven-XXXXXX";
            if (!mkdtemp(made)) throw Failure("no room in /tmp");
            folder_ = made;
        }
        fs::path copy = fs::path(folder_) / std::to_string(i) / names[i];
        fs::create_directory(copy.parent_path());
        fs::copy_file(paths_[i], copy);
        return copy;
    }

    std::vector<fs::path> paths_;
    std::vector<bool> forwards_;
    std::string folder_;
    std::vector<std::string> texts_;
    std::vector<char*> list_;
};

/// A site is used where one is named; a message can be made without.
void useSite() {
    if (getenv("ATTALVEN_SITE")) return loadSite();
    snprintf(conf.domainName, sizeof conf.domainName, "localhost");
    snprintf(conf.adminId, sizeof conf.adminId, "postmaster");
}

void writeMessage(Form& form, FILE* out) {
    AttachmentList attachments(form.options.rest);
    std::string charset = convertTexts(form, attachments.names);
    // Only the parts of a multipart message are converted to the set for sending.
    int sendMode = strcasecmp(pageSetOf(charset).c_str(), charset.c_str()) == 0 ? 0 : 2;
    int bodyType = codeOf(form.options.value("type", "plain"), {"plain", "html"});
    int code = codeOf(form.options.value("encoding", "base64"), {"raw", "qp", "base64"});
    int priority = numberOf(form.options.value("priority", "3"), "a priority");
    std::string messageId = form.options.value("message-id", mailGetMsgId());
    mailCompose(form.text("from").c_str(), form.text("to").c_str(), form.text("reply-to").c_str(),
                form.text("cc").c_str(), "", priority, bodyType, form.text("subject").c_str(),
                form.body.c_str(), attachments.entries(), code, code, sendMode, charset.c_str(),
                messageId.c_str(), conf.mailDomainName, 0, out);
    if (fflush(out) != 0 || ferror(out)) throw Failure("no room for the message");
}

int composeCommand(const Args& args) {
    Form form(args);
    useSite();
    writeMessage(form, stdout);
    return kDone;
}

int sendCommand(const Args& args) {
    Form form(args);
    useSite();
    if (!getenv("ATTALVEN_SITE") && form.text("server").empty())
        throw UsageError("a server, or a site in ATTALVEN_SITE, please");
    Stream message(tmpfile());
    if (!message) throw Failure("no room for the message");
    writeMessage(form, message.get());
    std::string recipients = form.text("to") + "," + form.text("cc");
    return deliver(message.get(), form.text("from"), recipients,
                   {form.text("server"), form.text("helo")});
}

int smsCommand(const Args& args) {
    if (args.size() != 5) throw UsageError("five arguments, please");
    int port = numberOf(args[1], "a port");
    if (port > UINT16_MAX) throw UsageError("a port is at most 65535");
    if (!mailSendShortMessage(args[2].c_str(), args[3].c_str(), args[4].c_str(), args[0].c_str(),
                              static_cast<unsigned short>(port)))
        throw Failure("the gateway cannot be reached");
    return kDone;
}

constexpr Command kCommands[] = {
    {"compose", ATTALVEN_FORM,
     "write a message with the body on standard input; texts are UTF-8, SET is for example euc-kr "
     "or jpn-utf-8",
     composeCommand},
    {"send", "[--server HOST[:PORT]] [--helo NAME] " ATTALVEN_FORM,
     "compose and deliver; one line a recipient with the server's reply code", sendCommand},
    {"sms", "HOST PORT NUMBER NAME TEXT", "send a short message through a gateway", smsCommand},
};

}  // namespace

std::span<const Command> composeCommands() {
    return kCommands;
}

}  // namespace cmd
