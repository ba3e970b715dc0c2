// start_bench: a process that loads the library and the support library and does nothing.

#include "mail/mail.h"

MailConf conf;
MailAdminPreference admOptions;

int main() {
    // The library must be needed, or the linker drops it.
    return mailGetEncType("7bit");
}
