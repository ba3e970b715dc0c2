// SMTP delivery (RFC 821): the choice of a server, and one dialogue for one message. Commands are
// lower case with LF line ends and bare addresses, as the mail host beside the service takes them.
// Survives a server that hangs up, stalls or refuses at any step: every recipient gets a result.

#include "dialogue.h"
#include "mail/base/bounded_text.h"
#include "mail/base/line_reader.h"
#include "mail/base/text.h"
#include "mail/compose.h"
#include "mail/parse/record.h"
#include "mail/storage/user_paths.h"
#include "support/host.h"
#include "support/support.h"

namespace attalven {

namespace {

constexpr int kSmtpPort = 25;
constexpr size_t kServerMax = 100, kAddressMax = 300;

constexpr int kReady = 354, kDone = 250, kHeloNeedsName = 501;
constexpr int kNoServer = 590;  // no server reached, or gone before it answered for this recipient
/// The address was not sent: empty, or longer than one may be (RFC 5321 section 4.2.3).
constexpr int kBadMailbox = 553;

// Seconds to wait for a reply (RFC 5321 section 4.5.3.2). A shorter wait after the end of data
// doubles mail: the server may have taken the message.
constexpr int kCommandSeconds = 300, kDataSeconds = 120, kEndSeconds = 600;

/// The address as a command carries it: without blanks and control bytes, which would end it.
Text commandAddress(const MailAddress& a) {
    Text text;
    for (string_view part : {viewOf(a.mailbox), string_view("@"), viewOf(a.host)})
        for (char c : part)
            if (byteOf(c) > 0x20 && byteOf(c) != 0x7F) text.append(c);
    return text;
}

bool isSendable(const Text& address) {
    return address.size() > 1 && address.size() <= kAddressMax;
}

/// One result an address of `to`, each without a code, and the end mark. NULL when memory is out.
OwnedMemory<MailSendResult> resultsFor(const MailAddress* to) {
    size_t count = 0;
    for (const MailAddress* a = to; a; a = a->next) count++;
    auto results = allocate<MailSendResult>(count + 1);
    if (!results) return allocate<MailSendResult>(1);
    MailSendResult* row = results.get();
    for (const MailAddress* a = to; a; a = a->next, row++) {
        Text text;
        for (string_view part : {viewOf(a->mailbox), string_view("@"), viewOf(a->host)})
            text.append(part);
        row->address = text.take();
        row->code = kNoServer;
        if (!row->address) break;
    }
    row->code = 0;
    return results;
}

void greet(Dialogue& server) {
    server.reply(kCommandSeconds);
    if (server.command({"helo\n"}, kCommandSeconds) == kHeloNeedsName)
        server.command({"helo ", viewOf(conf.serverName), "\n"}, kCommandSeconds);
}

void nameSender(Dialogue& server, const char* from) {
    OwnedAddress list(mailGetAddrList(from));
    if (!list) return;
    Text address = commandAddress(*list);
    if (isSendable(address)) server.command({"mail from: ", address.view(), "\n"}, kCommandSeconds);
}

void nameRecipients(Dialogue& server, const MailAddress* to, MailSendResult* results) {
    for (const MailAddress* a = to; a && results->address; a = a->next, results++) {
        Text address = commandAddress(*a);
        if (!isSendable(address)) {
            results->code = kBadMailbox;
            continue;
        }
        int code = server.command({"rcpt to: ", address.view(), "\n"}, kCommandSeconds);
        results->code = server.isLost() ? kNoServer : code;
    }
}

/// Sends the message from its start with the leading dot of every line doubled (RFC 821
/// section 4.5.2) and ends it with a line end where its last line has none, so that the final dot
/// stands alone. False when the message cannot be read: the server must then not get the final dot,
/// which would deliver the part that it has.
bool sendMessage(Dialogue& server, FILE* message) {
    bool wasRead = true;
    rewind(message);
    {
        LineReader reader(message, LineReader::kBlock);
        bool atLineStart = true;
        for (string_view block;
             !server.isLost() && !(block = reader.peek(LineReader::kBlock)).empty();) {
            size_t length = block.size();
            if (atLineStart && block.front() == '.') server.write(".");
            for (size_t at; (at = block.find("\n.")) != string_view::npos;
                 block = tail(block, at + 1)) {
                server.write(head(block, at + 1));
                server.write(".");
            }
            server.write(block);
            atLineStart = block.back() == '\n';
            reader.skip(length);
        }
        if (!atLineStart) server.write("\n");
        // Only a read that met the end has seen all: memory may be out, the stream may not seek.
        if (!server.isLost()) wasRead = feof(message) && !ferror(message);
    }
    rewind(message);
    return wasRead;
}

}  // namespace

}  // namespace attalven

using namespace attalven;

char* mailGetFastestSmtpServer(void) {
    static BoundedText<kServerMax> smtpServer;
    FilePath path = siteFilePath("smtp_server_list.ini");
    int lines = chkExistFile(path.c_str()) ? fileTotalLine(path.c_str()) : 0;
    if (lines <= 0) return conf.serverName;
    initRandom();
    OwnedText line(fileGetLine(path.c_str(), getRandom(lines) + 1));
    string_view name = viewOf(line.get());
    if (name.empty() || name.size() > kServerMax)
        return conf.serverName;  // a cut name is another host
    smtpServer.assign(name);
    int fd = sockConnect(smtpServer.c_str(), kSmtpPort);
    if (fd < 0) return conf.serverName;
    sockClose(fd);
    return smtpServer.data();
}

MailSendResult* mailRFC822MsgSender(const char* from, const char* to, const char*,
                                    const char* server, FILE* message) {
    OwnedAddress recipients(mailGetAddrList(to));
    int fd = server && message ? sockConnect(server, kSmtpPort) : -1;
    if (fd < 0) return resultsFor(recipients.get()).release();
    Dialogue dialogue(fd);
    if (!dialogue.isOpen()) return resultsFor(nullptr).release();
    OwnedMemory<MailSendResult> results = resultsFor(recipients.get());
    greet(dialogue);
    nameSender(dialogue, from);
    if (results) nameRecipients(dialogue, recipients.get(), results.get());
    if (dialogue.command({"data\n"}, kDataSeconds) == kReady && !sendMessage(dialogue, message)) {
        for (MailSendResult* r = results.get(); r && r->address; r++) r->code = kNoServer;
        return results.release();
    }
    if (dialogue.command({".\n"}, kEndSeconds) == kDone)
        dialogue.command({"quit\n"}, kCommandSeconds);
    return results.release();
}

void mailComposeSendResultFree(MailSendResult* results) {
    if (!results) return;
    for (MailSendResult* r = results; r->address; r++) free(r->address);
    free(results);
}
