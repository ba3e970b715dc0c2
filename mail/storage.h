#ifndef ATTALVEN_MAIL_STORAGE_H
#define ATTALVEN_MAIL_STORAGE_H

#include <time.h>

#include "export.h"

/* Storage and login: paths and directories of users, partitions, message texts, page notices. */

ATTALVEN_BEGIN

ATTALVEN_END

#endif
