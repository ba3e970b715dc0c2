// The two records that a calling program defines.

#include "support/host.h"

MailConf conf;
MailAdminPreference admOptions;
