// The two records that a calling program of the library defines.

#include "support/host.h"

MailConf conf;
MailAdminPreference admOptions;
