#ifndef ATTALVEN_SUPPORT_SMTP_ADAPTER_H
#define ATTALVEN_SUPPORT_SMTP_ADAPTER_H

/// Puts the adapter between the caller and the connected SMTP server `server`, which it takes over:
/// the result is the caller's end, or -1 when the adapter could not be started.
int adaptSmtp(int server, const char* heloName);

#endif
