#ifndef ATTALVEN_MAIL_DISPLAY_H
#define ATTALVEN_MAIL_DISPLAY_H

#include <stdio.h>

#include "export.h"
#include "parse.h"

/* Display: bodies, attachments, downloads, address texts and the print callbacks of page templates.
 */

ATTALVEN_BEGIN

/* What a message page shows; filled by the calling program for the message-body callbacks. */
typedef struct MailView {
    long reserved; /* never read */
    MailBody* message;
    FILE** file;
    int select;
    char* msgId;
    char fldrName[256];
} MailView;

/* One row of an attachment list; the list ends with a row whose mimeType is NULL. */
typedef struct MailAttach {
    char* mimeType;
    char* name;
    int size; /* bytes as stored in the message, before decoding */
    char* msgId;
} MailAttach;

ATTALVEN_END

#endif
