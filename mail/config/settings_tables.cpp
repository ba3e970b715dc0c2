// The settings tables, in the order in which the lines are written. Where one key begins another
// (POP3, SPOOL_SIZE), the reader takes the longer one that matches.

#include "settings_tables.h"

#include "mail/config.h"

namespace attalven {

Settings systemSettings() {
    using C = MailConf;
    static constexpr Setting table[] = {
        {"HOST_NAME", field<&C::hostName>},
        {"DOMAIN_NAME", field<&C::domainName>},
        {"HTTPD_PORT", field<&C::httpdPort>},
        {"HTTPD_ADM_PORT", field<&C::httpdAdmPort>},
        {"MAIL_DOMAIN_NAME", field<&C::mailDomainName>},
        {"ROOT_DIR", field<&C::rootDir>},
        {"DOC_ROOT_DIR", field<&C::docRootDir>},
        {"SPOOL_ROOT_DIR", field<&C::spoolRootDir>},
        {"MBOX_ROOT_DIR", field<&C::mboxRootDir>},
        {"ADMIN_ID", field<&C::adminId>},
        {"ADMIN_KEY", field<&C::adminKey>},
        {"DEFAULT_TEMPLATE_LANG", field<&C::defaultTemplateLang>},
        {"DEFAULT_TEMPLATE_NUM", field<&C::defaultTemplateNum>},
    };
    return table;
}

Settings userSettings() {
    using P = MailPreference;
    static constexpr Setting table[] = {
        {"FETCH_MAIL", field<&P::fetchMail>},
        {"SPOOL_MAIL", field<&P::spoolMail>},
        {"EMAIL_NAME", field<&P::emailName>},
        {"CHAR_SET", field<&P::charSet>},
        {"REPLY_TO", field<&P::replyTo>},
        {"FORWARDING", field<&P::forwarding>},
        {"COPY_FORWARDING_FLAG", field<&P::copyForwardingFlag>},
        {"MAIL_DEL_OPTION", field<&P::mailDelOption>},
        {"PAGE_SIZE", field<&P::pageSize>},
        {"NEW_MAIL_CHECK_TIME", field<&P::newMailCheckTime>},
        {"ATTACH_FILE_DEFAULT_NUM", field<&P::attachFileDefaultNum>},
        {"REGISTERED_MAIL_FLAG", field<&P::registeredMailFlag>},
        {"EDITOR", field<&P::editor>},
        {"VIEW_TYPE", field<&P::viewType>},
        {"SMTP_SERVER", field<&P::smtpServer>},
        {"HEADER_ENCODING", field<&P::headerEncoding>},
        {"BODY_ENCODING", field<&P::bodyEncoding>},
    };
    return table;
}

Settings adminSettings() {
    using A = MailAdminPreference;
    static constexpr Setting table[] = {
        {"QUOTA", field<&A::quota>},
        {"POP3", field<&A::pop3>},
        {"USR_REG_METHOD", field<&A::usrRegMethod>},
        {"ONE_TIME_MAIL_SEND_NUM", field<&A::oneTimeMailSendNum>},
        {"ATTACH_FILE_LIMIT_SIZE", field<&A::attachFileLimitSize>},
        {"ATTACH_FILE_LIMIT_NUM", field<&A::attachFileLimitNum>},
        {"INBOX_EXPIRE_DAY", field<&A::inboxExpireDay>},
        {"OUTBOX_EXPIRE_DAY", field<&A::outboxExpireDay>},
        {"TRASH_EXPIRE_DAY", field<&A::trashExpireDay>},
        {"DRAFTS_EXPIRE_DAY", field<&A::draftsExpireDay>},
        {"SPOOL_SIZE", field<&A::spoolSize>},
        {"SPOOL_SIZE_MAIL_WARN_FLAG", field<&A::spoolSizeMailWarnFlag>},
        {"FWD_FLAG", field<&A::fwdFlag>},
        {"POP3_FLAG", field<&A::pop3Flag>},
        {"RES_REG_FLAG", field<&A::resRegFlag>},
        {"AUTH_DB_FILE_PATH", field<&A::authDbFilePath>},
        {"AUTH_FLD1_FLAG", field<&A::authFld1Flag>},
        {"AUTH_FLD2_FLAG", field<&A::authFld2Flag>},
        {"PASSWD_FLAG", field<&A::passwdFlag>},
        {"SHELL", field<&A::shell>},
        {"ALLOW_CASE_USERID_FLAG", field<&A::allowCaseUserIdFlag>},
        {"DEFAULT_HEADER_ENCODING", field<&A::defaultHeaderEncoding>},
        {"DEFAULT_BODY_ENCODING", field<&A::defaultBodyEncoding>},
        {"LOGIN_AUTH_COOKIE_TYPE", field<&A::loginAuthCookieType>},
        {"NOTICE_BOARD_DEFAULT_PAGE_SIZE", field<&A::noticeBoardDefaultPageSize>},
        {"LOGIN_USER_DISPLAY_TIME", field<&A::loginUserDisplayTime>},
        {"MAIL_SEND_INFO_FLAG", field<&A::mailSendInfoFlag>},
        {"MAIL_RCPT_INFO_FLAG", field<&A::mailRcptInfoFlag>},
        {"ADM_MAIL_FLAG", field<&A::admMailFlag>},
        {"ADM_MAIL_AND_SIGN_INDIVIDUAL_FLAG", field<&A::admMailAndSignIndividualFlag>},
        // The subject lives in a file of its own; older sites have it here.
        {"ADM_MAIL_SUBJECT", field<&A::admMailSubject>, Use::kReadOnly},
    };
    return table;
}

Settings vacationSettings() {
    using V = MailVacationPref;
    static constexpr Setting table[] = {
        {"FLAG", field<&V::flag>},          {"START_TS", field<&V::startTs>},
        {"END_TS", field<&V::endTs>},       {"STYLE", field<&V::style>},
        {"SIGN_FLAG", field<&V::signFlag>}, {"SUBJECT", field<&V::subject>},
    };
    return table;
}

}  // namespace attalven
