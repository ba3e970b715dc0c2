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

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
