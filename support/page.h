#ifndef ATTALVEN_SUPPORT_PAGE_H
#define ATTALVEN_SUPPORT_PAGE_H

/*
 * For hosts of this support library, beyond the declarations that every support library has: the
 * character set of the page that is being printed.
 */

#ifdef __cplusplus
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* Sets the page character set, with which cgiMimeHeader() labels text types and htmlHeadStart() the
 * page: 1 to 64 letters, digits and "._:+-"; NULL, "" or anything else: none, as at the start. For
 * pages only: a part of a mail that is passed on keeps its own character set. */
void pageSetCharSet(const char* name);

/* The name set, "" for none. Borrowed: belongs to the support library, until the next setting. */
const char* pageCharSet(void);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

#endif
