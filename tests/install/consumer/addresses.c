/* addresses FOLDER: the sender's address of each message, one a line. */
#include <mail/mail.h>
#include <stdio.h>
#include <string.h>
#include <support/auth_code.h>
#include <support/page.h>
#include <support/sock.h>

MailConf conf;
MailAdminPreference admOptions;

int main(int argc, char** argv) {
    Fldr* folder = argc == 2 ? fldrOpen(argv[1]) : NULL;
    if (!folder) return 1;
    for (int n = 1; n <= fldrMsgMax(folder); n++) {
        MailInfo* mail =
            mailGetHeaderInfo(fldrMsgEntryPos(n, folder), fldrMsgSize(n, folder), folder->fp);
        if (!mail || !mail->from) return 1;
        printf("%s@%s\n", mail->from->mailbox, mail->from->host);
        mailFree(&mail);
    }
    fldrClose(folder);
    /* What hosts of this support library use beside that. */
    sockUseSmtpAdapter(NULL);
    pageSetCharSet("EUC-KR");
    return strcmp(pageCharSet(), "EUC-KR") != 0 || authCodeMake("", "key", 0) != NULL;
}
