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

/*
 * Address texts. A named address is written "name" <mailbox@host>, one without a name mailbox@host;
 * missing parts are empty.
 *
 * mailGetStrHTMLAddr gives all addresses of the list for an HTML page (quotes and brackets as
 * character references, names prepared by strConvHTMLStr), mailGetStrAddr as mail text, joined by
 * "," without a space. NULL for an empty list or when memory is out. Caller frees with free.
 *
 * mailGetStrOneAddr gives mailbox@host of one address without its name, cut at 1000 bytes, "" for
 * NULL. Static: valid until the next call.
 */
ATTALVEN_API char* mailGetStrHTMLAddr(MailAddress* list);
ATTALVEN_API char* mailGetStrAddr(MailAddress* list);
ATTALVEN_API char* mailGetStrOneAddr(MailAddress* addr);

/* The user name in "id|name": the part after the first "|" unless only the part before it has text;
 * a text without "|" whole. Reads 100 bytes of `text`; NULL gives "". Static: valid until the next
 * call. */
ATTALVEN_API char* mailGetUserName(const char* text);

ATTALVEN_END

#endif
