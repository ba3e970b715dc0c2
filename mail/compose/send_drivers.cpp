// One-call sending of simple messages, and the short-message gateway. A message passes through an
// unnamed file in /tmp: nobody else can open it, and it is gone with its stream. What could not be
// written whole is not delivered.

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include "dialogue.h"
#include "mail/base/ignore_signal.h"
#include "mail/base/sink.h"
#include "mail/base/text.h"
#include "mail/compose.h"
#include "support/host.h"
#include "support/support.h"
#include "text_part.h"

namespace attalven {

namespace {

/// The arguments that both mail drivers share.
struct Note {
    const char *from, *to;
    int priority, bodyType;
    const char* subject;
    int sendMode;
    const char *charset, *mailDomain;
};

OwnedFile temporaryFile() {
    char name[] = "/tmp/directive_msgXXXXXX";
    int fd = mkostemp(name, O_CLOEXEC);
    if (fd < 0) return nullptr;
    unlink(name);
    FILE* file = fdopen(fd, "w+");
    if (!file) close(fd);
    return OwnedFile(file);
}

OwnedText signedBody(const char* text) {
    Text body;
    body.append(viewOf(text));
    body.append('\n');
    body.append(viewOf(admOptions.admSign));
    return OwnedText(body.take());
}

/// Composes into `file` and delivers; an absent body sends the file empty.
int send(const Note& note, const char* body, FILE* file) {
    IgnoreSignal sizeLimit(SIGXFSZ);
    if (body) {
        mailCompose(note.from, note.to, "", "", "", note.priority, note.bodyType, note.subject,
                    body, nullptr, kBase64, kBase64, note.sendMode, note.charset, mailGetMsgId(),
                    note.mailDomain, 0, file);
        if (ftello(file) <= 0) return 0;  // memory was out: an empty mail is not what was asked for
    }
    fputs("\n\n", file);
    if (fflush(file) != 0 || ferror(file)) return 0;
    rewind(file);
    MailSendResult* results =
        mailRFC822MsgSender(note.from, note.to, note.mailDomain, mailGetFastestSmtpServer(), file);
    if (!results) return 0;
    mailComposeSendResultFree(results);
    return 1;
}

}  // namespace

}  // namespace attalven

using namespace attalven;

int mailSendMsg(const char* from, const char* to, int priority, int bodyType, const char* subject,
                const char* body, int sendMode, const char* charset, const char* mailDomain) {
    OwnedFile file = temporaryFile();
    OwnedText text = signedBody(body);
    if (!file || !text) return 0;
    const Note note = {from,     to,      priority,  bodyType, subject ? subject : "",
                       sendMode, charset, mailDomain};
    return send(note, text.get(), file.get());
}

int mailSendDirectiveMsg(const char* from, const char* to, int priority, int bodyType,
                         const char* subject, const char* templateName, int sendMode,
                         const char* charset, const char* mailDomain, const char* templateLang) {
    OwnedFile file = temporaryFile();
    if (!file) return 0;
    OwnedText text(getTemplateStr(templateName, templateLang));
    if (!text) return 0;
    OwnedText body = signedBody(text.get());
    const Note note = {from, to, priority, bodyType, subject, sendMode, charset, mailDomain};
    return send(note, body.get(), file.get());
}

namespace {

constexpr int kGatewaySeconds = 30;
constexpr size_t kShortTextMax = 50;
constexpr size_t kWordMax = 100 - string_view("callnum \n").size();  // lines of 100 characters

/// A word of a gateway line.
Text gatewayWord(const char* text, size_t max) {
    string_view all = viewOf(text);
    Text word;
    appendOneLine(word, head(all, cutLength(all, max)));
    return word;
}

}  // namespace

int mailSendShortMessage(const char* callNum, const char* reqName, const char* text,
                         const char* host, unsigned short port) {
    int fd = sockConnect(host ? host : "", port);
    if (fd < 0) return 0;
    Dialogue gateway(fd);
    if (!gateway.isOpen()) return 0;
    Text message = gatewayWord(text, kShortTextMax);
    if (char* words = message.c_str()) cgiSpcToPlus(words);
    gateway.reply(kGatewaySeconds);
    gateway.reply(kGatewaySeconds);
    gateway.command({"callnum ", gatewayWord(callNum, kWordMax).view(), "\n"}, kGatewaySeconds);
    gateway.command({"reqnum NIL\n"}, kGatewaySeconds);
    gateway.command({"reqname ", gatewayWord(reqName, kWordMax).view(), "\n"}, kGatewaySeconds);
    gateway.write("msg ");
    gateway.write(message.view());
    gateway.write("\n");
    return 1;
}
