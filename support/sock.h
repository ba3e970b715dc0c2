#ifndef ATTALVEN_SUPPORT_SOCK_H
#define ATTALVEN_SUPPORT_SOCK_H

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/*
 * Switches the SMTP adapter of sockConnect() on, or off with NULL (as at the start of the process).
 * While it is on, a connection to an SMTP port (25, 587 or one that the host text names in place of
 * 25) passes the plain dialogue on in the form that strict servers want (RFC 5321): "helo
 * <heloName>", CR LF line ends, addresses in angle brackets, the From_ line at the head of the
 * message left out. `heloName` is copied, at most 255 bytes.
 */
void sockUseSmtpAdapter(const char* heloName);

/*
 * The server's last word on the message that the adapter passed on: its reply code to the end of
 * the data, or to the command that announces them when it refused that; 0 without one, when the
 * connection broke. A recipient that the server took has the mail only when this is 2xx.
 */
int sockSmtpDataReply(void);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
