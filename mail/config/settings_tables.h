#ifndef ATTALVEN_MAIL_CONFIG_SETTINGS_TABLES_H
#define ATTALVEN_MAIL_CONFIG_SETTINGS_TABLES_H

// All settings of the system, by file. Nowhere else does a key stand.

#include "settings_file.h"

namespace attalven {

/// "attalven.conf" and "corvane.conf": fields of MailConf.
Settings systemSettings();
/// "preference.ini": fields of MailPreference.
Settings userSettings();
/// "admin_preference.ini": fields of MailAdminPreference.
Settings adminSettings();
/// "vacation.ini": fields of MailVacationPref.
Settings vacationSettings();

/// Lines of the system configuration and of the vacation settings, and of the preferences, are cut
/// into pieces of less than so many bytes.
constexpr size_t kLongLines = 5120, kShortLines = 1000;

}  // namespace attalven

#endif
