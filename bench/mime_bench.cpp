// mime_bench FILE PART OUT: parses the one message of FILE whole and decodes a part to OUT.

#include <cstdio>
#include <cstdlib>

#include "mail/mail.h"

MailConf conf;
MailAdminPreference admOptions;

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    FILE *in = fopen(argv[1], "rb"), *out = fopen(argv[3], "wb");
    if (!in || !out || fseek(in, 0, SEEK_END) != 0) return 2;
    MailInfo* message = mailGetHeaderInfo(0, static_cast<int>(ftell(in)), in);
    if (!mailParseBody(message, in)) return 1;
    MailBodyList** index = mailGetBody(message->body);
    int part = atoi(argv[2]);
    for (int k = 0; index && index[k]; k++)
        if (k == part) mailDecodeAttachFile(index[k]->body, in, out);
    mailFreeBodyIdx(index);
    mailFree(&message);
    return fclose(out) == 0 ? 0 : 1;
}
