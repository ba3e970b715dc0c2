#ifndef ATTALVEN_SUPPORT_HOST_H
#define ATTALVEN_SUPPORT_HOST_H

/*
 * The two records that the calling program defines and the library reads: `conf`, filled by
 * mailGetConf(), and `admOptions`, filled by mailGetAdminPreference(). Widths of texts count the
 * terminating NUL.
 */

#ifdef __cplusplus
extern "C" {
#endif

/* System configuration. Read-only after mailGetConf(). */
typedef struct MailConf {
    char hostName[51], domainName[151], serverName[202];
    int httpdPort, httpdAdmPort, loadFlag;
    char mailDomainName[201], rootDir[256], docRootDir[256], serverUrl[256], spoolRootDir[256],
        mboxRootDir[256];
    char adminId[16], adminKey[14], defaultTemplateLang[5];
    int defaultTemplateNum;
} MailConf;

/* Administrator preferences. admMail and admSign are heap texts; mailFreeAdminPreference() releases
 * them. */
typedef struct MailAdminPreference {
    int quota, pop3, usrRegMethod, oneTimeMailSendNum, attachFileLimitSize, attachFileLimitNum,
        inboxExpireDay, outboxExpireDay, trashExpireDay, draftsExpireDay, spoolSize,
        spoolSizeMailWarnFlag, fwdFlag, pop3Flag, resRegFlag;
    char authDbFilePath[512];
    int authFld1Flag, authFld2Flag, passwdFlag, allowCaseUserIdFlag;
    char shell[512];
    int defaultHeaderEncoding, defaultBodyEncoding, loginAuthCookieType, noticeBoardDefaultPageSize,
        loginUserDisplayTime, mailSendInfoFlag, mailRcptInfoFlag, admMailFlag;
    char admMailSubject[301];
    char *admMail, *admSign;
    int admMailAndSignIndividualFlag;
} MailAdminPreference;

/* The records of the process, defined by the calling program. */
extern MailConf conf;
extern MailAdminPreference admOptions;

#ifdef __cplusplus
}
#endif

#endif
