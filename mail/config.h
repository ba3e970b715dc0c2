#ifndef ATTALVEN_MAIL_CONFIG_H
#define ATTALVEN_MAIL_CONFIG_H

#include "../support/host.h"
#include "export.h"

/* Configuration and preferences: the settings files of the site and of its users. */

ATTALVEN_BEGIN

/* Preferences of one user. */
typedef struct MailPreference {
    int fetchMail, spoolMail;
    char emailName[51], charSet[31], replyTo[101], forwarding[101];
    int copyForwardingFlag, mailDelOption, pageSize, newMailCheckTime, attachFileDefaultNum,
        registeredMailFlag, editor, viewType;
    char smtpServer[101];
    int headerEncoding, bodyEncoding;
} MailPreference;

/* Vacation settings of one user; startTs and endTs are seconds since the epoch. */
typedef struct MailVacationPref {
    int flag, startTs, endTs;
    char subject[301];
    char* replyText; /* heap text */
    int style, signFlag;
} MailVacationPref;

ATTALVEN_END

#endif
