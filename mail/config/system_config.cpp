// The system configuration. Its files belong to the administrator; text that is too wide for its
// field is cut, so that the derived texts always fit.

#include "system_config.h"

#include "mail/base/bounded_text.h"
#include "mail/base/file.h"
#include "settings_tables.h"

namespace attalven {

namespace {

void derive(MailConf& record) {
    BoundedText<sizeof record.serverName - 1> server;
    server.append(record.hostName);
    server.append('.');
    server.append(record.domainName);
    cutCopy(record.serverName, server.view());
    record.loadFlag = 0;
    BoundedText<sizeof record.serverUrl - 1> url;
    url.append("http://");
    url.append(server.view());
    cutCopy(record.serverUrl, url.view());
}

}  // namespace

bool loadSystemConfig(const char* folder, MailConf& record) {
    for (const char* name : kSystemConfigFiles) {
        BoundedText<1023> path;
        path.append(viewOf(folder));
        path.append('/');
        path.append(name);
        OwnedFile file = openRegular(path.c_str());
        if (!file) continue;
        readSettings(systemSettings(), file.get(), kLongLines, &record);
        derive(record);
        return true;
    }
    return false;
}

}  // namespace attalven
