// rewrite_bench FILE N: opens the folder, deletes message N and closes it (the replacing form).

#include <cstdlib>

#include "mail/mail.h"

MailConf conf;
MailAdminPreference admOptions;

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    Fldr* folder = fldrOpen(argv[1]);
    if (!folder || !fldrMsgDelete(atoi(argv[2]), folder)) return 1;
    fldrClose(folder);
    return 0;
}
