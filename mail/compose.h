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

/*
 * Conventions of this header.
 *
 * sendMode, the kind of message: 2 = ordinary, always multipart (mailCompose() only); 5 = S/MIME
 * encrypted; 6 = S/MIME signed and encrypted; 7 = voice mail; 8 = fax; 9 = bulk; any other value is
 * an ordinary message.
 * headerEncoding and bodyEncoding: 1 = raw, 2 = quoted-printable, 3 = base64.
 * charset: the character set chosen for sending, such as "euc-kr", "ISO-2022-JP" or "kor-utf-8" (a
 * language prefix before the UTF name); texts are in the page character set of its family. With a
 * NULL or empty one nothing is converted, and subjects and names are not encoded.
 * All output ends its lines with LF alone; headers continue on lines that begin with a TAB. Texts
 * that reach a header line can neither end it nor start another one: of their line breaks only a
 * legal fold stays (RFC 5322 section 2.2.3).
 */

/*
 * Writes the header block of a message, from Message-Id to the empty line (RFC 5322 section 3.6,
 * RFC 2045). For a multipart root it also writes the preamble, so that mailMimeBodyWrite()
 * continues; otherwise mailBodyWrite() continues. `mail` and its root body are read and not
 * changed; `boundary` (without dashes) matters for a multipart root only; `headerEncoding` is not
 * read, the record's subject stands as stored. `replyTo` may be NULL or empty: no Reply-To line.
 * `messageId` has no angle brackets. Nothing is written when `mail` or `out` is NULL. The Date line
 * reads the clock.
 */
ATTALVEN_API void mailHdrWrite(MailInfo* mail, const char* boundary, int headerEncoding,
                               int bodyEncoding, const char* replyTo, const char* messageId,
                               int sendMode, const char* charset, FILE* out);

/*
 * Header value of an address list, one address per line: "name" <mailbox@host>, or mailbox@host
 * without a name (RFC 5322 section 3.4). A name with 8-bit bytes becomes encoded words in base64,
 * labelled with `charset`; `"` and `\` in a name are escaped. An address whose entry would be
 * longer than 3,000 bytes loses its name, then is left out: never cut. mailGetFaxNumStr() does the
 * same for fax numbers, which stand in the records' `mailbox`. NULL for a NULL list or when memory
 * is out. Caller frees with free().
 */
ATTALVEN_API char* mailGetAddrStr(MailAddress* list, const char* charset);
ATTALVEN_API char* mailGetFaxNumStr(MailAddress* list, const char* charset);

/*
 * `t` in local time as a header date, "Mon, 6 Nov 2000 14:03:09 +0900" (RFC 5322 section 3.3). The
 * hours of the zone are cut toward zero. At most 500 characters. Static: valid until the next call.
 */
ATTALVEN_API char* mailMakeDate(time_t t);

/*
 * `t` in local time as the date of an mbox From_ line, "Mon Nov 06 14:03:09 2000" (RFC 4155). At
 * most 200 characters. Static: valid until the next call.
 */
ATTALVEN_API char* mailGetRFC822FromDate(time_t t);

/*
 * A new Message-ID without angle brackets (RFC 5322 section 3.6.4): date, seconds since the epoch
 * plus the number of earlier calls, conf.domainName. At most 200 characters. Static: valid until
 * the next call.
 */
ATTALVEN_API char* mailGetMsgId(void);

/*
 * The text of the X-Mailer line: product and operating system. At most 200 characters. Static:
 * valid until the next call.
 */
ATTALVEN_API char* mailerInfo(void);

/*
 * 24 random capitals and digits, to be written behind "----=_NextPart_" as a boundary (RFC 2046
 * section 5.1.1). Seeds rand() with the current time at every call; never gives the result of the
 * call before. Static: valid until the next call.
 */
ATTALVEN_API char* mailGenBoundary(void);

/*
 * Writes the parts of a multipart body, each behind its delimiter line, and the closing delimiter
 * (RFC 2046 section 5.1): texts held in the nodes, alternatives with a boundary of their own, and
 * files streamed from disk (base64 for attachments, unchanged but for their first line for
 * forwarded messages). `boundary` has no dashes. A file is named by the node's fileName: "forward@"
 * and a path, a path beginning with "/", or a bare upload name that stands for "/tmp/NAME@ADDRESS"
 * with the environment's REMOTE_ADDR. What is no regular file, a bare name with "/" in it or a path
 * over 511 bytes gives a part without content; a name over 255 bytes or an encoded name over 767 is
 * left empty. The `content` of text nodes is replaced by its conversion to `charset`; with sendMode
 * 5 or 6 texts are not written. Nothing is written when `out` is NULL.
 */
ATTALVEN_API void mailMimeBodyWrite(MailBody* first, const char* boundary, int headerEncoding,
                                    int bodyEncoding, int sendMode, const char* charset, FILE* out);

/*
 * Writes the content of a single-part text message and two line ends; nothing for a node of another
 * kind. The text is not converted; with sendMode 5 or 6 it is left out. `headerEncoding` and
 * `charset` are not read.
 */
ATTALVEN_API void mailBodyWrite(MailBody* body, int headerEncoding, int bodyEncoding, int sendMode,
                                const char* charset, FILE* out);

/*
 * Composes a message from the fields of a compose form and writes it to `out` as one mbox entry:
 * From_ line, header block, body (RFC 5322, RFC 2045 to 2047).
 *
 * `from`, `to`, `cc`, `faxTo` are address texts (`faxTo` is read for sendMode 8 only); the first
 * From address names the From_ line, conf.adminId at conf.mailDomainName stands in when there is
 * none. `replyTo` stands as given. `bodyType` 2: `body` is HTML source, sent beside its text;
 * otherwise plain text. `attachList`, NULL or up to 99 entries with a NULL at the end, is read and
 * not changed: a bare upload name, a path, "forward@" and the path of a stored message, or
 * "cid_NAME@ID" for an uploaded inline image. `messageId` has no angle brackets. `mailDomain` is
 * named in the read receipt, which `readReceipt` 1 puts into the HTML part. NULL texts are empty; a
 * NULL `subject` gives an empty Subject line. Reads conf, the clock and REMOTE_ADDR. Failures to
 * write show in ferror(out); nothing is written when memory is out.
 */
ATTALVEN_API void mailCompose(const char* from, const char* to, const char* replyTo, const char* cc,
                              const char* faxTo, int priority, int bodyType, const char* subject,
                              const char* body, char** attachList, int headerEncoding,
                              int bodyEncoding, int sendMode, const char* charset,
                              const char* messageId, const char* mailDomain, int readReceipt,
                              FILE* out);

/*
 * Removes the temporary files of an attachment list after sending: uploads, and entries
 * "forward@/tmp/..." or "/tmp/...". Only regular files below /tmp/ go, without "..", and no link is
 * followed. "cid_NAME@ID" entries are cut at their "@" in the caller's list, so that a second call
 * passes over them. `attachList` is NULL or ends with NULL. Reads REMOTE_ADDR.
 */
ATTALVEN_API void mailComposeDeleteAttachFile(char** attachList);

/*
 * Writes the inner structure of a message that is encrypted outside the library: header, a
 * multipart/mixed body whose text part has no content with sendMode 5 or 6, and the attachments, as
 * mailCompose() does ("cid_" entries are ordinary attachments here). Arguments named unused are
 * never read; `mailDomain` has no effect. A NULL `messageId` has one made. Result: the Message-ID
 * used, cut at 100 characters. Static: valid until the next call.
 */
ATTALVEN_API char* smimeMailCompose(const char* from, const char* unused2, const char* to,
                                    const char* replyTo, const char* cc, int priority, int unused7,
                                    const char* subject, const char* unused9, char** attachList,
                                    int headerEncoding, int bodyEncoding, int sendMode,
                                    const char* charset, const char* messageId,
                                    const char* mailDomain, int unused17, FILE* out);

/*
 * Writes the outer header of a finished S/MIME message, an application/x-pkcs7-mime entity named
 * smime.p7m (RFC 8551 section 3.2), from the From_ line to the empty line; the caller appends the
 * envelope in base64. Texts are neither parsed nor encoded. `from`, `to`, `cc` may be NULL: no such
 * line; an empty or NULL `replyTo` gives no line. `smimeMode`: 3 = encrypted, 4 = signed and
 * encrypted.
 */
ATTALVEN_API void mailSMimeHdrWrite(const char* envelopeFrom, const char* from, const char* to,
                                    const char* replyTo, const char* cc, int priority,
                                    const char* subject, const char* messageId, int smimeMode,
                                    FILE* out);

/*
 * The SMTP server to use: a random line of smtp_server_list.ini in conf.mboxRootDir, as
 * sockConnect() takes it for port 25, when it answers, otherwise conf.serverName. At most 100
 * characters. Static: valid until the next call.
 */
ATTALVEN_API char* mailGetFastestSmtpServer(void);

/*
 * Delivers the message in `message`, from its first byte to its end, to `server` (RFC 5321), a host
 * whose port 25 counts or "host:port", and leaves the stream at its start. The sender is the first
 * address of `from`, the recipients are the addresses of `to`; `mailDomain` has no effect. Result:
 * one entry per recipient in their order with the server's reply code, and a last entry with a NULL
 * address. The code is 590 where no server answered or the message could not be read to its end,
 * and 553 for an address over 300 bytes, which is not sent. A connection that takes no stream gives
 * the last entry alone; NULL when memory is out. Caller frees with mailComposeSendResultFree(),
 * which passes over NULL.
 */
ATTALVEN_API MailSendResult* mailRFC822MsgSender(const char* from, const char* to,
                                                 const char* mailDomain, const char* server,
                                                 FILE* message);
ATTALVEN_API void mailComposeSendResultFree(MailSendResult* results);

/*
 * Composes a simple message and delivers it: `body` (for mailSendDirectiveMsg() the template
 * `templateName` of the language `templateLang`), a line end and the administrator's signature
 * admOptions.admSign, in base64. Other arguments as for mailCompose(). The message passes through
 * an unnamed temporary file in /tmp. Result: 1 when the message was handed to delivery, whatever
 * the server said of its recipients; 0 when it could not be made or the template is missing.
 */
ATTALVEN_API int mailSendMsg(const char* from, const char* to, int priority, int bodyType,
                             const char* subject, const char* body, int sendMode,
                             const char* charset, const char* mailDomain);
ATTALVEN_API int mailSendDirectiveMsg(const char* from, const char* to, int priority, int bodyType,
                                      const char* subject, const char* templateName, int sendMode,
                                      const char* charset, const char* mailDomain,
                                      const char* templateLang);

/*
 * Sends a short message over the line protocol of a gateway at `host` and `port`: the first 50
 * characters of `text` with "+" for spaces. `callNum` and `reqName` are cut at 91 characters.
 * Result: 1 when the gateway was reached and the commands were written, 0 otherwise.
 */
ATTALVEN_API int mailSendShortMessage(const char* callNum, const char* reqName, const char* text,
                                      const char* host, unsigned short port);

ATTALVEN_END

#endif
