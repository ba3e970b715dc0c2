// rewrite_bench FILE N [in-place]: opens the folder, deletes message N and closes it, by the
// replacing form or the one that keeps the file.

#include <cstdlib>

#include "mail/mail.h"

MailConf conf;
MailAdminPreference admOptions;

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    admOptions.passwdFlag = argc > 3;
    Fldr* folder = fldrOpen(argv[1]);
    if (!folder || !fldrMsgDelete(atoi(argv[2]), folder)) return 1;
    fldrClose(folder);
    return 0;
}
