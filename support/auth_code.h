#ifndef ATTALVEN_SUPPORT_AUTH_CODE_H
#define ATTALVEN_SUPPORT_AUTH_CODE_H

/*
 * For hosts of this support library, beyond the declarations that every support library has: the
 * making of the authentication codes that strGetAuthCodeVal() reads.
 *
 * A code is "<user id>.<expiry>.<signature>": the id and the signature in URL-safe base64 without
 * padding, the expiry in decimal seconds since the epoch, the signature HMAC-SHA-256 (RFC 2104) of
 * all that stands before its dot. It fits into a cookie or a URL as it is.
 */

#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* The code that carries `id` (1 to 64 bytes) until the time `expires` for whoever has `key` (not
 * empty); NULL for anything else. Caller frees with free(). */
char* authCodeMake(const char* id, const char* key, time_t expires);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

#endif
