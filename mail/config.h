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

/*
 * Loads the system configuration into `conf` and copies it to `*dest`; every calling program does
 * so first, with `&conf`. Reads the first of "/etc/attalven.conf" and "/etc/corvane.conf" that
 * opens (the folder is a build setting): lines of key, "=", value. Keys that are absent keep what
 * `conf` held; `serverName`, `serverUrl` and `loadFlag` are always set anew. With `dest == &conf`,
 * `adminId` and `adminKey` have the defaults "sysop" and "kQwZbn"; a site must set a key of its
 * own. Text that is too wide is cut to its field. `dest` may be NULL: only `conf` is loaded then.
 *
 * Limits the process: no core files, 100,000,000 bytes of data segment, soft and hard.
 *
 * When neither file opens: prints a "text/html" page "<path> file open error!!!" and ends the
 * process with exit status -1.
 */
ATTALVEN_API void mailGetConf(MailConf* dest);

/*
 * Settings of user `id` of mail domain `domain`, kept in "preference.ini" of the user's mailbox
 * directory. The first get, or set, creates the directory and the file.
 *
 * mailGetPreference fills `*pref` with the defaults, then with the file's lines. mailSetPreference
 * writes `*pref`; when there was no file yet, it first resets all fields of `*pref` but
 * newMailCheckTime, attachFileDefaultNum, registeredMailFlag, editor and viewType to their
 * defaults. A text is written up to its first line break. The file is replaced as a whole (mode
 * 0600 when new); a failed write keeps the old one. NULL arguments: the texts count as empty,
 * without a record nothing is done.
 *
 * Setting leaves the process's file-creation mask at 0177. When the file cannot be opened: prints a
 * "text/html" page "<path> file open error!!!" and ends the process with exit status -1. Reads
 * `conf`, `admOptions`; overwrites the result of smGetUserLogicalMBoxPath().
 */
ATTALVEN_API void mailGetPreference(const char* id, const char* domain, MailPreference* pref);
ATTALVEN_API void mailSetPreference(const char* id, const char* domain, MailPreference* pref);

/*
 * Site policy, kept in "admin_preference.ini", "adm_mail_subject.txt", "adm_mail.txt" and
 * "adm_sign.txt" in `conf.mboxRootDir`.
 *
 * mailGetAdminPreference fills `*rec` (a calling program passes `&admOptions`); without the first
 * file it writes the defaults first. Fields whose keys are absent keep what `*rec` held, so `*rec`
 * must be initialised. `admMail` and `admSign` become new heap texts; the old pointers are not
 * freed. Caller frees with mailFreeAdminPreference().
 *
 * mailSetAdminPreference writes `*rec` to the four files, replacing each as a whole;
 * mailInitAdminPreference does so with the defaults. NULL texts write empty files. The last three
 * files are skipped when they cannot be opened.
 *
 * Setting leaves the process's file-creation mask at 0177 and creates a missing
 * `conf.mboxRootDir`. When the first file cannot be opened: prints a "text/html" page "<path> file
 * open error!!!" and ends the process with exit status -1.
 */
ATTALVEN_API void mailGetAdminPreference(MailAdminPreference* rec);
ATTALVEN_API void mailSetAdminPreference(MailAdminPreference* rec);
ATTALVEN_API void mailInitAdminPreference(void);

/* Frees `admMail` and `admSign` and sets them to NULL. NULL is allowed. */
ATTALVEN_API void mailFreeAdminPreference(MailAdminPreference* rec);

/*
 * Vacation settings of a user, kept in "vacation.ini" and "vacation.txt" of the user's mailbox
 * directory, which is created when it is missing.
 *
 * mailGetVacationPref fills `*vac`: fields whose keys are absent keep what they held, `replyText`
 * becomes a new heap text ("" without a file; NULL when memory is out); the old pointer is not
 * freed. Caller frees with mailFreeVacationPref(). mailSetVacationPref writes `*vac`. Without a
 * "vacation.ini" both first reset `*vac` to the defaults: off, today from 00:00:00 to 23:59:59
 * local time, no subject, `replyText` NULL, style 1, signature on.
 *
 * Files are replaced as a whole (mode 0600 when new); those that cannot be opened are skipped.
 * Setting leaves the process's file-creation mask at 0177.
 */
ATTALVEN_API void mailGetVacationPref(const char* id, const char* domain, MailVacationPref* vac);
ATTALVEN_API void mailSetVacationPref(const char* id, const char* domain, MailVacationPref* vac);

/* Frees `replyText` and sets it to NULL. NULL is allowed. */
ATTALVEN_API void mailFreeVacationPref(MailVacationPref* vac);

/*
 * The auto-reply record: a file `name` in the user's mailbox directory that holds one pair of keys,
 * so that a program that answers mail can tell whom it has answered last.
 *
 * mailChkAutoSubmittedInfo gives 1 when the record holds this pair, else 0; a missing record is
 * created from the pair (result 0), a different one stays as it is. The first key is compared with
 * case when `admOptions.allowCaseUserIdFlag` is 1 and without otherwise, the second always with
 * case; trailing white space in the file does not count. mailSaveAutoSubmittedInfo writes the pair
 * over the record (mode 0600 when new; the file-creation mask stays); failure is silent.
 *
 * `name` is one path component of at most 255 bytes; any other name matches nothing and saves
 * nothing. NULL keys count as empty. A key is stored up to its first line break; one with a line
 * break, with trailing white space or of more than 4998 bytes never matches.
 */
ATTALVEN_API int mailChkAutoSubmittedInfo(const char* name, const char* id, const char* domain,
                                          const char* firstKey, const char* secondKey);
ATTALVEN_API void mailSaveAutoSubmittedInfo(const char* name, const char* id, const char* domain,
                                            const char* firstKey, const char* secondKey);

ATTALVEN_END

#endif
