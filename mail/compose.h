#ifndef ATTALVEN_MAIL_COMPOSE_H
#define ATTALVEN_MAIL_COMPOSE_H

#include <stdio.h>
#include <time.h>

#include "export.h"
#include "parse.h"

/* Composition and sending: header and body writers, composers, SMTP delivery, send drivers. */

ATTALVEN_BEGIN

/* Delivery result of one recipient; the list ends with a NULL address. */
typedef struct MailSendResult {
    char* address;
    int code; /* SMTP reply code; 590 when no server could be reached */
} MailSendResult;

ATTALVEN_END

#endif
