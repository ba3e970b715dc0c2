#ifndef ATTALVEN_HOST_MAILADM_H
#define ATTALVEN_HOST_MAILADM_H

// mailadm.cgi: the administrator's page: users, settings of the site, room on its partitions. Each
// action takes its fields, complains, or does its work (PageError 507 when that cannot be written).

#include "kit/settings_form.h"

namespace host {

struct AdminAction {
    const char* name;  // value of the field "form"
    void (*run)(SettingsForm& form, const Request& request);
};

extern const AdminAction kAddUser, kSetPassword, kLockUser, kSiteSettings, kSiteTexts;

void loadSiteSettings(SettingsForm& form);
/// Rows of the tables, as markup.
std::string userRows(const std::string& token);
std::string partitionRows();

}  // namespace host

#endif
