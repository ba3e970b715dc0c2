#ifndef ATTALVEN_MAIL_FOLDER_FLDR_INDEX_H
#define ATTALVEN_MAIL_FOLDER_FLDR_INDEX_H

#include "open_folder.h"

namespace attalven {

/// Fills the index of `folder` from its stream. Messages that get no entry (beyond FLDR_MAX_MSGS or
/// 2 GiB, or memory out) are bytes between the entries or behind `end`.
void buildIndex(OpenFolder& folder);

}  // namespace attalven

#endif
