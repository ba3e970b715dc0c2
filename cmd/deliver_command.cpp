// deliver: hands a finished message to an SMTP server.

#include <cstring>

#include "commands.h"
#include "deliver.h"
#include "mail/mail.h"
#include "open_folder.h"
#include "support/sock.h"

namespace cmd {

int deliver(FILE* message, const std::string& from, const std::string& to, const Outlet& outlet) {
    if (!outlet.helo.empty()) sockUseSmtpAdapter(outlet.helo.c_str());
    std::string server = outlet.server.empty() ? mailGetFastestSmtpServer() : outlet.server;
    MailSendResult* results =
        mailRFC822MsgSender(from.c_str(), to.c_str(), "", server.c_str(), message);
    if (!results) throw Failure("no memory");
    int code = results->address ? kDone : kFailed;
    for (MailSendResult* r = results; r->address; r++) {
        printf("%s %d\n", r->address, r->code);
        if (r->code / 100 != 2) code = kFailed;
    }
    mailComposeSendResultFree(results);
    return code;
}

namespace {

int deliverCommand(const Args& args) {
    std::string server, helo, from, to;
    for (size_t i = 0; i < args.size(); i++) {
        bool isOption = i + 1 < args.size() && args[i].starts_with("--");
        if (isOption && args[i] == "--server") {
            server = args[++i];
        } else if (isOption && args[i] == "--helo") {
            helo = args[++i];
        } else if (from.empty()) {
            from = args[i];
        } else if (to.empty()) {
            to = args[i];
        } else {
            throw UsageError("\"" + args[i] + "\" is one argument too many");
        }
    }
    if (to.empty()) throw UsageError("a sender and recipients, please");
    // Standard input may be a pipe; delivery rewinds its stream.
    Stream message(tmpfile());
    char block[65536];
    size_t n = 0, total = 0;
    while (message && (n = fread(block, 1, sizeof block, stdin)) > 0)
        total += fwrite(block, 1, n, message.get());
    if (!message || fflush(message.get()) != 0 || ferror(message.get()))
        throw Failure("no room for the message");
    if (total == 0) throw Failure("standard input holds no message");
    return deliver(message.get(), from, to, {server, helo});
}

constexpr Command kCommands[] = {
    {"deliver", "[--server HOST[:PORT]] [--helo NAME] FROM TO[,TO...]",
     "hands the message on standard input to an SMTP server; one line a recipient with the "
     "server's reply code; --helo switches the adapter for strict servers on",
     deliverCommand},
};

}  // namespace

std::span<const Command> deliverCommands() {
    return kCommands;
}

}  // namespace cmd
