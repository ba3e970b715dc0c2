#ifndef ATTALVEN_MAIL_STORAGE_H
#define ATTALVEN_MAIL_STORAGE_H

#include <time.h>

#include "export.h"

/* Storage and login: paths and directories of users, partitions, message texts, page notices. */

ATTALVEN_BEGIN

/*
 * Whether a mail domain is an additional one, with a tree of its own below the roots: 1 when it
 * contains "." and differs, ignoring case, from `conf.mailDomainName`, else 0 (also for NULL).
 */
ATTALVEN_API int smChkMultiMailDomainName(const char* domain);

/*
 * Paths of a user's places, relative to `conf.spoolRootDir` and `conf.mboxRootDir`. With the first
 * two characters a, b of `id`, taken as they are, and, for an additional domain, the domain and "/"
 * in front:
 *
 *   spool directory (physical, logical)      a/b       symbolic-link level   a
 *   mailbox directory (physical, logical)    a/b/id    symbolic-link level   a/b
 *
 * No id or domain leads out of the tree: "/", a missing character and the dots of "." and ".." turn
 * into "=", which no valid id contains; a result of more than 255 bytes is "=". NULL counts as
 * empty. Static: valid until the next call of the same function.
 */
ATTALVEN_API char* smGetUserPhysicalSpoolPath(const char* id, const char* domain);
ATTALVEN_API char* smGetUserLogicalSpoolPath(const char* id, const char* domain);
ATTALVEN_API char* smGetUserLogicalSymLinkSpoolPath(const char* id, const char* domain);
ATTALVEN_API char* smGetUserPhysicalMBoxPath(const char* id, const char* domain);
ATTALVEN_API char* smGetUserLogicalMBoxPath(const char* id, const char* domain);
ATTALVEN_API char* smGetUserLogicalSymLinkMBoxPath(const char* id, const char* domain);

/*
 * Creates each missing directory along an absolute path, with mode 0700, owner `owner` (a user
 * name) and group "mail". Existing directories are not touched. A path of more than 255 bytes is
 * refused. Gives the result of the last support operation, 1 when there was nothing to do; callers
 * ignore it. Sets the process's file-creation mask to 022 when it creates something.
 */
ATTALVEN_API int smInitPathName(const char* path, const char* owner);

/*
 * Make sure that the user's spool directory (`rootDir`/a/b) or mailbox directory (`rootDir`/a/b/id)
 * exists, like smInitPathName(). `domain` does not change the path. Always 1; paths of more than
 * 255 bytes are not made.
 */
ATTALVEN_API int smUserSpoolMakeAndLink(const char* id, const char* rootDir, const char* owner,
                                        const char* domain);
ATTALVEN_API int smUserMBoxMakeAndLink(const char* id, const char* rootDir, const char* owner,
                                       const char* domain);

/*
 * The storage partition with the most free space: of `type` 1 (spool) or 2 (mailbox), from section
 * `section` of "storage.ini" in `conf.mboxRootDir`, ignoring case, or from its first section when
 * `section` is NULL or empty. Of equals the first listed wins; one without free space is never
 * chosen. NULL without the file, the section or a usable partition; a directory of more than 255
 * bytes is passed over. Static: valid until the next call.
 */
ATTALVEN_API char* smGetAvailablePartition(int type, const char* section);

/*
 * Whether the mail transfer agent takes mail for `domain`: 1 when a line of "/etc/sendmail.cw"
 * equals it, ignoring case and white space, else 0 (also for NULL).
 */
ATTALVEN_API int smChkValidMailDomainName(const char* domain);

/*
 * smGetUserLogicalSpoolPath() and smGetUserLogicalMBoxPath() of the main mail domain. Static: valid
 * until the next call of those.
 */
ATTALVEN_API char* mailGetUserSpoolPath(const char* id);
ATTALVEN_API char* mailGetUserMBoxPath(const char* id);

/*
 * The directory makers above with `conf.adminId` as owner, and for the last two with
 * `conf.spoolRootDir` or `conf.mboxRootDir` as root. The last two always give 1.
 */
ATTALVEN_API int mailInitPathName(const char* path);
ATTALVEN_API int mailInitSpoolPathName(const char* id);
ATTALVEN_API int mailInitMBoxPathName(const char* id);

/*
 * Creates one directory, not its parents, with mode 0700, owner `conf.adminId` and group "mail",
 * and gives these to a directory that exists. Gives the result of fileChgStat(). Sets the process's
 * file-creation mask to 022.
 */
ATTALVEN_API int mailMakeDir(const char* path);

/*
 * Whether a user id is allowed: 1 or 0. At most 15 bytes, all below 128; no space and none of the
 * characters " + < > # % { } | \ ^ ~ [ ] ' ; / ? : @ = & $; capital letters only when
 * `admOptions.allowCaseUserIdFlag` is set; no digit in front when `admOptions.passwdFlag` is 1. The
 * empty id is valid, NULL is not.
 */
ATTALVEN_API int mailChkValidUserId(const char* id);

/*
 * Message `number` of the table in `conf.rootDir`/conf, in the language of the page
 * (getTemplateLang()), with its conversions filled like printf; empty when there is none, cut to
 * 300 bytes. Only plain conversions are followed (flags, width and precision up to 300, h l z j t,
 * and one of d i u x X o c s p e E f F g G %); the caller passes the arguments that the message
 * takes. Any other conversion stands as it is. Static: valid for the next four calls (five slots in
 * turn).
 */
ATTALVEN_API char* mailGetMsg(int number, ...);

/*
 * Text of a login error, of either sign: message |code|; 110 is filled with 15, 111 with 255.
 * Static: valid until the next call. Uses one slot of mailGetMsg().
 */
ATTALVEN_API char* mailGetLoginErrMsg(int code);

/*
 * Prints the page of a failed login to standard output, without HTTP header: a script that shows
 * `message`, unescaped, so pass texts of the installation only, then the template
 * "t_login_fail.html", if it opens. Language and template number come from the cookies "lang" (its
 * first 3 characters, which must be letters, digits, "_" or "-") and "tnum", else from `conf`.
 */
ATTALVEN_API void mailLoginFail(const char* message);

/*
 * Whether the authentication code, decoded with `conf.adminKey`, carries exactly this user id: 1 or
 * 0. A code that carries nothing belongs to nobody; of a longer id the first 15 bytes count, as no
 * valid id has more.
 */
ATTALVEN_API int mailAuthUserId(const char* id, const char* authCode);

/*
 * 0 for the administrator (`conf.adminId`, with case), 2 for everybody else and for NULL. Without a
 * configured administrator the empty id equals his: ask for ids of users only.
 */
ATTALVEN_API int mailUserLevel(const char* id);

/*
 * Prints to standard output the script call that shows the user's memo, when the file "memo" of the
 * user's main-domain mailbox directory has a first record; else nothing.
 */
ATTALVEN_API void mailChkMemo(const char* id);

/*
 * With `mode` 1 the number of messages in the user's spool file that are neither deleted, read nor
 * old; 0 with any other mode and when the file is missing, busy or empty. Opens and closes the
 * folder in every mode. The file is "/var/spool/mail/<id>" when `admOptions.passwdFlag` is 1.
 */
ATTALVEN_API int mailNewMailChk(const char* id, const char* domain, int mode);

/*
 * The local date and time as a text: "2001/03/02(<Korean weekday>)09:05" on Korean pages
 * (getTemplateLang() 4), "03/02/2001(<English weekday>)09:05" on others. Empty for a time that has
 * no date. Static: valid until the next call.
 */
ATTALVEN_API char* mailGetDate(time_t t);

ATTALVEN_END

#endif
