#ifndef ATTALVEN_MAIL_FOLDER_H
#define ATTALVEN_MAIL_FOLDER_H

#include <stdio.h>
#include <time.h>

#include "export.h"

/* Folders: the index of an open mbox file and the rewrite of the file when it is closed. */

ATTALVEN_BEGIN

#define FLDR_MAX_MSGS 30000 /* entries that an index can hold */

/* One message of an open folder. */
typedef struct FldrMsg {
    int num;             /* from 1, in file order */
    unsigned int status; /* 0x10 read, 0x100 old, 0x1000 deleted */
    int priority;        /* 1 (highest) to 5 */
    char msgId[101], from[101], auxText[101];
    time_t date;        /* seconds since the epoch, UTC */
    char subject[5001]; /* decoded */
    int offset, hdrSize,
        size; /* bytes; the header up to its empty line, the message with its From_ line */
} FldrMsg;

/* An open folder. */
typedef struct Fldr {
    char path[512];
    int msgCount;
    unsigned int status; /* 0x10, 0x100, 0x1000: a message was marked so during this opening */
    FILE* fp;
    FldrMsg* msgs[FLDR_MAX_MSGS];
} Fldr;

ATTALVEN_END

#endif
