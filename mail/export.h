#ifndef ATTALVEN_MAIL_EXPORT_H
#define ATTALVEN_MAIL_EXPORT_H

/* Marks the exported functions and tables; everything else in the library is hidden. */
#if defined(__GNUC__)
#define ATTALVEN_API __attribute__((visibility("default")))
#else
#define ATTALVEN_API
#endif

/* C linkage for callers in C++. */
#ifdef __cplusplus
#define ATTALVEN_BEGIN extern "C" {
#define ATTALVEN_END }
#else
#define ATTALVEN_BEGIN
#define ATTALVEN_END
#endif

#endif
