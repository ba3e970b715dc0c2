#ifndef ATTALVEN_MAIL_CODEC_H
#define ATTALVEN_MAIL_CODEC_H

#include <stdio.h>

#include "export.h"

/* Transfer encodings, character sets and encoded words. All texts are NUL-terminated byte strings.
 */

ATTALVEN_BEGIN

ATTALVEN_END

#endif
