#ifndef ATTALVEN_MAIL_FOLDER_H
#define ATTALVEN_MAIL_FOLDER_H

#include <stdio.h>
#include <time.h>

#include "export.h"

/* Folders: the index of an open mbox file and the rewrite of the file when it is closed. */

ATTALVEN_BEGIN

#define FLDR_MAX_MSGS 30000 /* entries that an index can hold */

/* Bits of a status word. */
#define FLDR_READ 0x10u
#define FLDR_OLD 0x100u
#define FLDR_DELETED 0x1000u

/* One message of an open folder. */
typedef struct FldrMsg {
    int num;             /* from 1, in file order */
    unsigned int status; /* 0x10 read, 0x100 old, 0x1000 deleted */
    int priority;        /* 1 (highest) to 5 */
    /* The Message-ID as in MailInfo; the first sender's mailbox@host; for callers, "" at first. */
    char msgId[101], from[101], auxText[101];
    time_t date;        /* seconds since the epoch, UTC */
    char subject[5001]; /* decoded */
    /* Bytes: where its From_ line begins, from there to the empty line, and to its end. */
    int offset, hdrSize, size;
} FldrMsg;

/* An open folder. */
typedef struct Fldr {
    char path[512];
    int msgCount;
    unsigned int status; /* 0x10, 0x100, 0x1000: a message was marked so during this opening */
    FILE* fp;
    FldrMsg* msgs[FLDR_MAX_MSGS];
} Fldr;

/*
 * Opens the mbox folder `path` and indexes it: one entry per message, in file order, at most
 * FLDR_MAX_MSGS; messages beyond get no entry and stay in the file. Creates the marker `path`.tmp
 * (empty, mode 0600), which keeps other openers out for 180 seconds after its last change. First
 * finishes a rewrite that was interrupted while it replaced the folder's content.
 * NULL when `path` is NULL, empty or longer than 507 bytes, when the folder is busy (a marker
 * younger than 181 seconds), missing, empty, unreadable or no regular file, or when memory is out;
 * without memory for the index, the marker stays until it is 181 seconds old.
 * Caller frees with fldrClose(). (mbox: RFC 4155)
 */
ATTALVEN_API Fldr* fldrOpen(const char* path);

/*
 * Indexes the open, seekable stream `fp` from its start, as fldrOpen() does; no marker, and `path`
 * stays empty. The stream stays the caller's, must outlive the record, and stands at the end of the
 * last indexed message afterwards. NULL when `fp` is NULL or memory is out. Caller frees with
 * fldrFree().
 */
ATTALVEN_API Fldr* fldrProcessing(FILE* fp);

/*
 * Finds the next message of `fp` from its current position: stores the byte position of its From_
 * line, the size of its header (up to its first empty line; all of it when it has none) and its
 * size. Leaves the stream at the next message's From_ line; when none follows, at the start of the
 * last line, or behind it if it is the From_ line that was found. A value that a 32-bit field
 * cannot hold is stored as INT_MAX. 1 when a message was found; 0, with nothing stored, when there
 * is none or for a NULL argument.
 */
ATTALVEN_API int fldrGetMsgSizeInfo(int* offset, int* hdrSize, int* size, FILE* fp);

/*
 * 1 when `line` is a From_ line, which separates messages: "From", a sender, a weekday of week_eng,
 * a month of month_eng (both ignoring case) and a day from 1 to 31, split at single spaces. A line
 * whose words end before a check fails passes (two spaces make an empty word, which ends them), and
 * so does the sender "Corvane". 0 for anything else and for NULL. (RFC 4155 appendix A)
 */
ATTALVEN_API int mailChkRFC822From(const char* line);

/*
 * The number of entries; whether entry `n` (from 1) exists; whether `f` is an open folder. 0 for a
 * NULL folder.
 */
ATTALVEN_API int fldrMsgMax(Fldr* f);
ATTALVEN_API int fldrChkMsgBoundary(int n, Fldr* f);
ATTALVEN_API int fldrIsOpen(Fldr* f);

/*
 * Entry `n`'s number, position of its From_ line, size and header size in bytes. 0 when there is no
 * entry `n`.
 */
ATTALVEN_API int fldrMsgNum(int n, Fldr* f);
ATTALVEN_API int fldrMsgEntryPos(int n, Fldr* f);
ATTALVEN_API int fldrMsgSize(int n, Fldr* f);
ATTALVEN_API int fldrMsgHdrSize(int n, Fldr* f);

/*
 * Entry `n`'s status word, and one bit of it: the bit's value (FLDR_READ, FLDR_OLD, FLDR_DELETED),
 * not 1. 0 when there is no entry `n`.
 */
ATTALVEN_API unsigned int fldrMsgGetStatus(int n, Fldr* f);
ATTALVEN_API unsigned int fldrMsgIsRead(int n, Fldr* f);
ATTALVEN_API unsigned int fldrMsgIsOld(int n, Fldr* f);
ATTALVEN_API unsigned int fldrMsgIsDelete(int n, Fldr* f);

/*
 * Mark entry `n` read, old or deleted, in the entry and in the folder's status word; the file
 * changes when fldrClose() rewrites it. Give the entry, NULL when there is none. Borrowed: belongs
 * to the folder.
 */
ATTALVEN_API FldrMsg* fldrMsgSetRead(int n, Fldr* f);
ATTALVEN_API FldrMsg* fldrMsgSetOld(int n, Fldr* f);
ATTALVEN_API FldrMsg* fldrMsgDelete(int n, Fldr* f);

/*
 * Takes the deletion mark off every entry. The folder's own status word keeps its bit, so closing
 * still rewrites the folder. NULL does nothing.
 */
ATTALVEN_API void fldrMsgAllReset(Fldr* f);

/*
 * The number of entries not deleted: new (neither read nor old), and read or old. 0 for NULL.
 */
ATTALVEN_API int fldrMsgNewNum(Fldr* f);
ATTALVEN_API int fldrMsgReadNum(Fldr* f);

/*
 * Bytes of all entries, deleted ones included, at most INT_MAX. 0 for NULL.
 */
ATTALVEN_API int fldrSize(Fldr* f);

/*
 * The process-wide status word `msgStatus`, 0 at first: with the value 1 the next fldrClose(), of
 * whichever folder, rewrites it even when nothing was deleted, and sets the word to 0.
 */
ATTALVEN_API int fldrStatus(void);
ATTALVEN_API void fldrStatusSet(int v);
ATTALVEN_API void fldrStatusReset(void);

/*
 * Ends the use of `f`: rewrites the folder when a message was marked deleted or fldrStatus() is 1,
 * then removes the marker and frees the index. The new file holds every message that is not
 * deleted, in order, with a header line "Status: " that records the read and old marks, then all
 * that has no entry, such as mail that arrived meanwhile. With admOptions.passwdFlag 1 the folder
 * stays the same file, else a new file takes its name. A rewrite that cannot be completed (disk
 * full, folder changed or locked by another program for 10 seconds) leaves the folder as it was;
 * one that is killed is finished by the next fldrOpen(). Reads and resets the status word; reads
 * admOptions. NULL does nothing.
 */
ATTALVEN_API void fldrClose(Fldr* f);

/*
 * Frees the index and its entries without touching the folder or its marker. Closes `fp` when
 * fldrOpen() opened it. NULL does nothing.
 */
ATTALVEN_API void fldrFree(Fldr* f);

ATTALVEN_END

#endif
