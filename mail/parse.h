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

/* One message. auxAddr, auxStr and auxStr2 are for callers: the library only releases them. */
typedef struct MailInfo {
    int mimeVersion;     /* major number, 0 when absent */
    unsigned int status; /* 0x10 read, 0x100 old */
    time_t date;         /* seconds since the epoch, UTC; 0 when absent */
    char* dateStr;       /* as written */
    int offset, size, bodyOffset, bodySize;
    /* faxNum: recipients of a composed fax, the number in `mailbox`. */
    MailAddress *from, *to, *cc, *auxAddr, *replyTo, *faxNum;
    char* subject; /* decoded, on one line */
    /* What stands in angle brackets, without quotes and slashes; "_msgid" is added when it holds
     * the name ending of a database file (.dbf, .fpt, .cdx). */
    char* messageId;
    char* auxStr;
    int priority; /* 1 (highest) to 5 */
    /* X-Mailer, X-SMIME and X-Voice-ID as written. */
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

/* Names of the major media types; a type code (MailBody.type) is the index of its name:
 * 0 x-unknown, 1 audio, 2 application, 3 image, 4 message, 5 multipart, 6 text, 7 video, then NULL.
 */
ATTALVEN_API extern const char* const mime_types[9];

/* Names of the transfer encodings (RFC 2045 section 6); an encoding code (MailBody.encoding) is the
 * index of its name: 0 7bit, 1 8bit, 2 quoted-printable, 3 base64, 4 binary, 5 x-unknown. No NULL
 * closes the table. Code 7, uuencoded, has no row: never index the table with it. */
ATTALVEN_API extern const char* const encoding[6];

/*
 * Constructors: a new record with every field 0 or NULL, but for priority 3 (mailNewHeader) and
 * isAttachment 1 (mailNewBody). Result: NULL when memory is out. Caller frees with the release
 * function beside it.
 *
 * The release functions take the address of the pointer, free all that the record owns and store
 * NULL: a MailInfo with its address lists, texts and body tree; a MailBody, MailAddress or
 * MailParam with the whole chain that follows through `next`, and a MailBody with its children. A
 * pointer to NULL, or NULL, does nothing. mailFreeState alone does not clear the pointer.
 */
ATTALVEN_API MailInfo* mailNewHeader(void);
ATTALVEN_API void mailFree(MailInfo** p);
ATTALVEN_API MailBody* mailNewBody(void);
ATTALVEN_API void mailFreeBody(MailBody** p);
ATTALVEN_API MailAddress* mailNewAddress(void);
ATTALVEN_API void mailFreeAddress(MailAddress** p);
ATTALVEN_API MailParam* mailNewParam(void);
ATTALVEN_API void mailFreeParam(MailParam** p);
ATTALVEN_API MailState* mailNewState(void);
ATTALVEN_API void mailFreeState(MailState** p);

/* The value of the first parameter of `list` called `name`, case ignored; NULL when there is none
 * or `name` is NULL. Borrowed: belongs to the list. */
ATTALVEN_API char* mailGetParam(const char* name, MailParam* list);

/*
 * The body index: the leaf parts of a message, depth first and left to right. A multipart stands
 * for the entries of its children (none without children); every other node is one entry, a
 * message/rfc822 part as well. Part number k everywhere means entry k, counted from 0.
 *
 * mailGenBodyList gives the entries reachable from `first` and its siblings as a chain, NULL for
 * NULL or without leaves; each entry is released with free. mailGetBody gives the same entries as
 * an array that NULL ends, so that a message without leaves gives an array of only NULL; NULL only
 * when memory is out. Caller frees with mailFreeBodyIdx, which takes the array itself and frees it
 * with its entries; NULL does nothing. The MailBody nodes are borrowed: they belong to the message.
 */
ATTALVEN_API MailBodyList* mailGenBodyList(MailBody* first);
ATTALVEN_API MailBodyList** mailGetBody(MailBody* root);
ATTALVEN_API void mailFreeBodyIdx(MailBodyList** index);

/*
 * Reads the header block (RFC 5322 section 2.2) of the message at byte `offset` of the seekable
 * stream `fp`. `size` is the message's length in bytes; it does not bound the header block, so
 * bodySize can be 0 or negative. A From_ line at the start is skipped. Result: a new record whose
 * root body describes the message's own Content-Type (text/plain without one). Caller frees with
 * mailFree. The stream is left at bodyOffset. An offset that cannot be reached gives a record with
 * defaults; a NULL stream, or memory out, gives NULL. Reads conf.mailDomainName.
 */
ATTALVEN_API MailInfo* mailGetHeaderInfo(int offset, int size, FILE* fp);

/*
 * Header and MIME structure of the message at byte `offset`, `size` bytes long, when `msgId` (NULL
 * counts as "") is its Message-ID; else of the part that mailGetRFC822MessageInfo finds; of the top
 * message when nothing matches. For the top message pass the `msgId` of its folder entry: "" names
 * the first part without a Message-ID, such as the delivery status of a report, when the message
 * itself has one. Caller frees with mailFree. NULL for a NULL stream or when memory is out. Reads
 * conf.mailDomainName and conf.rootDir.
 */
ATTALVEN_API MailInfo* mailProcessing(int offset, int size, const char* msgId, FILE* fp);

/*
 * `msg` itself when `msgId` (NULL counts as "") is its Message-ID, else the first part of type
 * message inside it, depth first, whose Message-ID is `msgId`, parsed anew from `fp`; a record
 * other than `msg` is new: Caller frees with mailFree. Case is ignored; a part without a Message-ID
 * has the empty one. NULL when there is none or `msg` is NULL. Only parts whose content is stored
 * unencoded can be found, at most 100 levels deep; in crafted mail the search ends when it has read
 * 128 MB and eight times the size of `msg`.
 */
ATTALVEN_API MailInfo* mailGetRFC822MessageInfo(MailInfo* msg, FILE* fp, const char* msgId);

/*
 * The addresses of an address header or form field (RFC 5322 section 3.4, without groups and
 * nested comments), separated by "," or ";", in the order written. Address and name of each are cut
 * at 300 bytes; names are decoded (RFC 2047) into the page character set; a missing host becomes
 * conf.mailDomainName. Result: NULL when there is no address or `text` is NULL. Caller frees with
 * mailFreeAddress.
 */
ATTALVEN_API MailAddress* mailGetAddrList(const char* text);

/*
 * The instant that a Date value (RFC 5322 section 3.3) names, in seconds since the epoch, UTC.
 * `value` is only read. Words count by position after the first comma: day, month, year, time,
 * zone. A year of two digits stands as written, a year of 0 is 2000. A missing zone is UTC; a zone
 * word other than +hhmm, -hhmm or the North American letters makes it the server's local time (TZ).
 * A date with a zone comes out an hour early where it is in the server's daylight saving time. 0
 * for NULL.
 */
ATTALVEN_API time_t mailParseDate(char* value);

/* The code of a Content-Transfer-Encoding value (RFC 2045 section 6.1), matched by its start, case
 * ignored: 0 to 4 as in the table `encoding`, 7 for x-uuencode, 5 for anything else, "" and NULL.
 */
ATTALVEN_API int mailGetEncType(const char* value);

/*
 * Takes a Content-Type value (RFC 2045 section 5.1) apart; `value` is not changed. Sets `type` of
 * `node`, by the table mime_types and ignoring case, and where the value has them `subType` and
 * `params`; what stood there is freed, what the value does not have stays. A node that still has no
 * subtype gets "plain" (text), "basic" (audio) or "rfc822" (message). An unknown type is x-unknown
 * with a subtype, and application/x-TYPE without one. NULL gives application/octet-stream, and so
 * does a folded value for which memory is out; a text for which it is out is NULL. A NULL `node` is
 * passed over.
 */
ATTALVEN_API void mailParseMimeType(char* value, MailBody* node);

/* The name=value pairs of `text`, separated by ";", in order; quotes and backslash escapes are
 * taken off the values. NULL when there is none. The text may be changed. Caller frees with
 * mailFreeParam. */
ATTALVEN_API MailParam* mailParseParams(char* text);

/*
 * Builds the tree of parts (RFC 2046 section 5.1) below the root body of `msg`, a record of
 * mailGetHeaderInfo, from `fp`, in place of one that it has. Nodes only record where their bytes
 * lie. A body that is not multipart is split at its first uuencoded block. At most 100 levels of
 * multipart and 10,000 parts are entered; what lies beyond is content. Result: 0 when `msg` or `fp`
 * is NULL, else 1. Reads conf.rootDir (mime.types).
 */
ATTALVEN_API int mailParseBody(MailInfo* msg, FILE* fp);

/*
 * The steps of mailParseBody; each reads from the stream's current position. `msg` only gives the
 * root body, whose subtype "digest" makes parts without header message/rfc822.
 *
 * mailParseMultipart gives the chain of parts found within the next `remaining` bytes, up to the
 * closing delimiter; NULL when there is none or `fp` or `boundary` is NULL. mailReadMimeHeader
 * reads one part header and leaves the stream at the part's content; NULL for a NULL `fp` or when
 * memory is out. mailParseSinglepart sets the root's offsets to the message's and gives the first
 * child when the body holds a uuencoded block, else NULL. Caller frees with mailFreeBody.
 */
ATTALVEN_API MailBody* mailParseMultipart(MailInfo* msg, FILE* fp, const char* boundary,
                                          int remaining);
ATTALVEN_API MailBody* mailReadMimeHeader(MailInfo* msg, FILE* fp);
ATTALVEN_API MailBody* mailParseSinglepart(MailInfo* msg, FILE* fp);

/*
 * Media types by file name. mimeGetType looks the extension (the text after the last ".", case
 * kept) up in "<conf.rootDir>/conf/mime.types": a type, a TAB, extensions separated by blanks.
 * Result: "major/minor", "application/octet-stream" when nothing matches. Static: valid until the
 * next call.
 *
 * mimeGetMajorType gives the code of the part before "/" in the table mime_types; 2 (application)
 * for an unknown one, without "/" and for NULL. mimeGetSubType gives the part after "/", at most
 * 100 bytes, "octet-stream" when there is none. Static: valid until the next call.
 */
ATTALVEN_API const char* mimeGetType(const char* fileName);
ATTALVEN_API int mimeGetMajorType(const char* type);
ATTALVEN_API char* mimeGetSubType(const char* type);

ATTALVEN_END

#endif
