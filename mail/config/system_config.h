#ifndef ATTALVEN_MAIL_CONFIG_SYSTEM_CONFIG_H
#define ATTALVEN_MAIL_CONFIG_SYSTEM_CONFIG_H

#include "support/host.h"

namespace attalven {

/// The names of the two configuration files, in the order in which they are tried.
constexpr const char* kSystemConfigFiles[] = {"attalven.conf", "corvane.conf"};

/// Loads the first file of `folder` that opens into `record`, and derives the fields that have no
/// key. False when neither opens; the record is then unchanged.
bool loadSystemConfig(const char* folder, MailConf& record);

}  // namespace attalven

#endif
