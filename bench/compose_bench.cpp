// compose_bench FILE OUT: composes a message with FILE attached to the file OUT.

#include <cstdio>

#include "mail/mail.h"

MailConf conf;
MailAdminPreference admOptions;

int main(int argc, char** argv) {
    FILE* out = argc == 3 ? fopen(argv[2], "wb") : nullptr;
    if (!out) return fprintf(stderr, "compose_bench FILE OUT\n"), 2;
    char empty[] = "", *attachments[] = {argv[1], nullptr};
    mailCompose("a@example.org", "b@example.org", "", "", "", 3, 1, "subject", empty, attachments,
                3, 3, 0, "euc-kr", mailGetMsgId(), "", 0, out);
    return fclose(out) != 0;
}
