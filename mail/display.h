#ifndef ATTALVEN_MAIL_DISPLAY_H
#define ATTALVEN_MAIL_DISPLAY_H

#include <stdio.h>

#include "export.h"
#include "parse.h"

/* Display: bodies, attachments, downloads, address texts and the print callbacks of page templates.
 */

ATTALVEN_BEGIN

/* What a message page shows; filled by the calling program for the message-body callbacks. The last
 * three fields are for links to the part-download page. Texts stand there as they are, but for `<`,
 * `>`, `"` and control bytes: the program URL-encodes them (cgiCharToHex(), cgiSpcToPlus()). */
typedef struct MailView {
    long reserved;      /* never read */
    MailBody* message;  /* root body of the parsed message */
    FILE** file;        /* address of the pointer to its open stream */
    int select;         /* the message's number in its folder */
    char* msgId;        /* its Message-ID; NULL counts as "" */
    char fldrName[256]; /* the folder's name */
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
 * character references, names prepared by strConvHTMLStr), mailGetStrAddr as text, names as they
 * stand in the records; both joined by "," without a space. NULL for an empty list or when memory
 * is out. Caller frees with free.
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

/* The text of one text part, from the open message: its body of bodySize bytes at bodyOffset,
 * decoded from base64 or quoted-printable and converted to the page character set: from its
 * charSet, and then every "<META" becomes "<!-META"; without a charSet only when it holds an
 * ISO-2022-KR or -JP designator. A text that cannot be converted stays in its own character set,
 * META tags included. `mode` 1 stops there. `mode` 2 prepares it for an HTML page: in a text with
 * "cid:" every "cid:" becomes `cidPrefix` and every "<BASE" becomes "<!-BASE" (no "cid:" does when
 * that would add more than 64 MiB); any other text, and any for a NULL `cidPrefix`, gets links, and
 * plain and enriched text is escaped as well. Subtypes other than plain, enriched and html get no
 * links. The result is NUL-terminated; a NUL byte in the body ends it. Caller frees with free. NULL
 * when nothing can be read or decoded. Moves `fp`. RFC 2045, 2392. */
ATTALVEN_API char* mailDecode(MailBody* part, int mode, const char* cidPrefix, FILE* fp);

/* Prints a text/enriched body (RFC 1896) as plain text on standard output: formatting commands and
 * parameters are dropped, "<<" is "<", a single line break is a space. `*fp` stands at the start of
 * the body and moves; reading ends with the line that reaches part->bodySize bytes. Undecoded,
 * unconverted, unescaped. NULL arguments and a size of 0 or less print nothing. */
ATTALVEN_API void mailTextEnrichedHandler(MailBody* part, FILE** fp);

/* Questions about the leaf parts of a message, given its root body (NULL: no parts). 1 or 0 each: a
 * part with a file name, a part of type message, a part with a Content-ID or Content-Location. */
ATTALVEN_API int mailChkAttachFile(MailBody* root);
ATTALVEN_API int mailChkFwdMail(MailBody* root);
ATTALVEN_API int mailChkCID(MailBody* root);
/* 2 when a text/html part without a file name stands among the leaf parts, else 1. */
ATTALVEN_API int mailChkBodyType(MailBody* root);
/* By the first S/MIME part: 1 encrypted, 2 signed; 0 without any. */
ATTALVEN_API int mailChkSMime(MailBody* root);
/* The charset of the first leaf part that has one, cut to 30 bytes; "" without any or for NULL.
 * Static: valid until the next call. */
ATTALVEN_API char* mailGetCharSet(MailBody* root);

/* The attachments of a message: each message/rfc822 part, with the forwarded message's subject as
 * its name, and each leaf part of another type than message that has a file name. `unused` is not
 * read. The array ends with a row whose fields are all NULL or 0. Sizes are bytes as stored, still
 * encoded. msgId is the containing message's Message-ID ("" without one); for a forwarded message
 * its own, URL-encoded, or "nomsgid". Caller frees with mailAttachListFree. NULL when no part has a
 * file name or is of type message, for NULL, and when memory is out. Forwarded messages are left
 * out without an `fp`, and in crafted mail behind those that took 128 MB and eight times the
 * message's size to read. Moves `fp`. */
ATTALVEN_API MailAttach* mailGetAttachList(MailInfo* msg, long unused, FILE* fp);
/* Frees an attachment list; NULL does nothing. */
ATTALVEN_API void mailAttachListFree(MailAttach* list);

/* Writes the decoded content of a part from the open message `in` to `out`, streamed in constant
 * memory. NULL arguments write nothing. Moves `in`; read and write errors end it silently. RFC
 * 2045. */
ATTALVEN_API void mailDecodeAttachFile(MailBody* part, FILE* in, FILE* out);

/* Downloads: each writes a complete CGI response to standard output, header lines, empty line and
 * content. Arguments named `unused` are not read. NULL arguments write nothing; all move `fp`.
 *
 * Every leaf part whose file name equals `fileName` exactly, each with headers of its own, as
 * application/octet-stream with a Content-disposition line, which browsers that call themselves
 * MSIE below 5.01 do not get; control bytes of the name are left out. No match writes nothing. */
ATTALVEN_API void mailSaveAttachFile(MailInfo* msg, long unused1, const char* fileName,
                                     long unused2, FILE* fp);
/* Every leaf part whose Content-ID equals `contentId` exactly, under its own media type (cut to 100
 * bytes). No match writes nothing. */
ATTALVEN_API void mailViewCIDFile(MailInfo* msg, long unused1, long unused2, const char* contentId,
                                  long unused3, FILE* fp);
/* The first text part, decoded and converted as by mailDecode() in mode 1, as
 * application/octet-stream; without a text part the header alone. */
ATTALVEN_API void mailSaveMailBody(MailInfo* msg, long unused, FILE* fp);
/* The message as it lies in the folder, without any CGI header: `mode` 1 writes its `size` bytes
 * from `offset`, any other mode the header block alone, without the empty line. */
ATTALVEN_API void mailViewRFC822(MailInfo* msg, int mode, long unused, FILE* fp);

/* Print callbacks of page templates. `slot` is the address of the data pointer that the template
 * engine has bound to the directive; `arg` is the directive's argument, NULL without one. They
 * print to standard output and return nothing; a NULL `slot` counts as a slot that holds NULL.
 * Texts of a mail that stand in markup or in links have `<`, `>` and `"` replaced and control bytes
 * removed.
 *
 * *slot: MailInfo. Message-table text 81 to 85 for a priority of 1 to 5, "&nbsp;" otherwise. */
ATTALVEN_API void pfnMailPriority(const char* arg, void** slot);
/* *slot: root MailBody. Message-table text 79 for a message with an HTML body, else 80; "&nbsp;"
 * for NULL. */
ATTALVEN_API void pfnMailBodyType(const char* arg, void** slot);
/* *slot: MailAddress list. The list as mailGetStrHTMLAddr() formats it; "&nbsp;" when that is
 * empty. */
ATTALVEN_API void pfnMailFromRcpt(const char* arg, void** slot);
/* *slot: MailAddress list, which the walk moves to its end (NULL). One OPTION tag per address,
 * without closing tag or line break; the argument "ENCODE" (any case) URL-encodes the name in its
 * value. */
ATTALVEN_API void pfnAddrComboBoxList(const char* arg, void** slot);
/* *slot: MailAddress list, which the walk moves to its end (NULL). "mailbox@host" of each, nothing
 * between them. */
ATTALVEN_API void pfnWAPAddrList(const char* arg, void** slot);
/* *slot: MailView. The body of the message as HTML: an HTML part bare, else the first text part
 * inside the page frame; delivery reports; and, unless a part has a Content-ID or Content-Location,
 * inline pictures, sounds and films by links to the part-download page of `conf.serverName` and
 * `conf.httpdPort`. An HTML part is printed as it was sent: the calling program isolates it from
 * its own pages by response headers. "&nbsp;" without a message. Moves *view->file. */
ATTALVEN_API void pfnMailBody(const char* arg, void** slot);
/* *slot: MailView. The same choice of parts as text for a WML browser; any other browser gets
 * nothing. Moves *view->file. */
ATTALVEN_API void pfnWAPMailBody(const char* arg, void** slot);
/* *slot: a text as mailGetUserName() takes it, which gives the name to print. */
ATTALVEN_API void pfnPrtName(const char* arg, void** slot);

ATTALVEN_END

#endif
