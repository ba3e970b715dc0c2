#ifndef ATTALVEN_MAIL_MAIL_H
#define ATTALVEN_MAIL_MAIL_H

/* Everything that the library offers a calling program. */

#include "../support/host.h"
#include "codec.h"
#include "compose.h"
#include "config.h"
#include "display.h"
#include "folder.h"
#include "parse.h"
#include "storage.h"

#endif
