#ifndef ATTALVEN_MAIL_PARSE_H
#define ATTALVEN_MAIL_PARSE_H

#include <stdio.h>
#include <time.h>

#include "export.h"

/*
 * Messages: the records of a parsed message and the operations that build them. Texts in records
 * are NUL-terminated heap texts that the record owns, NULL when absent; offsets are byte positions
 * in the file, sizes are bytes.
 */

ATTALVEN_BEGIN

/* One name=value parameter of a MIME header field (RFC 2045 section 5.1). */
typedef struct MailParam {
    char* name;  /* as written */
    char* value; /* without quotes and backslashes */
    struct MailParam* next;
} MailParam;

/* One mailbox of an address list (RFC 5322 section 3.4). */
typedef struct MailAddress {
    char* name;    /* decoded display name or comment */
    char* mailbox; /* before the at sign */
    char* host;    /* after the at sign; conf.mailDomainName when the address had none */
    struct MailAddress* next;
} MailAddress;

/* One MIME entity (RFC 2045 section 2.4); leaves carry positions, a multipart carries its parts in
 * `child`. */
typedef struct MailBody {
    int offset, bodyOffset, bodySize; /* entity, its content, length of the content */
    MailParam* params;                /* of the Content-Type header */
    int type;                         /* index into mime_types */
    char *subType, *fileName;
    int isAttachment; /* 0 only for a Content-Disposition other than "attachment" */
    char* location;
    int encoding; /* index into encoding; 7 = uuencoded, which has no row */
    char *description, *contentId;
    char* content; /* text of a part that is being composed */
    char* charSet;
    struct MailBody *child, *next;
} MailBody;

/* One message. */
typedef struct MailInfo {
    int mimeVersion;
    unsigned int status; /* 0x10 read, 0x100 old */
    time_t date;         /* seconds since the epoch, UTC */
    char* dateStr;
    int offset, size, bodyOffset, bodySize;
    MailAddress *from, *to, *cc, *auxAddr, *replyTo, *faxNum;
    char *subject, *messageId, *auxStr;
    int priority; /* 1 (highest) to 5 */
    char *mailer, *auxStr2, *smime, *voiceId;
    MailBody* body;
} MailInfo;

/* One entry of the body index. */
typedef struct MailBodyList {
    MailBody* body; /* borrowed from the message */
    struct MailBodyList* next;
} MailBodyList;

/* Carried for callers; the library reads none of it. */
typedef struct MailState {
    int word[3];
} MailState;

ATTALVEN_END

#endif
