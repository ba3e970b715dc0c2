// The first call of every process: resource limits, then the system configuration.

#include <sys/resource.h>

#include "mail/base/bounded_text.h"
#include "mail/config.h"
#include "settings_file.h"
#include "system_config.h"

using namespace attalven;

namespace {

constexpr rlim_t kDataSegmentBytes = 100'000'000;

}  // namespace

void mailGetConf(MailConf* dest) {
    // A process that may not set its limits goes on without them.
    const struct rlimit none = {0, 0}, data = {kDataSegmentBytes, kDataSegmentBytes};
    (void)setrlimit(RLIMIT_CORE, &none);
    (void)setrlimit(RLIMIT_DATA, &data);
    if (dest) {
        cutCopy(dest->adminId, "sysop");
        cutCopy(dest->adminKey, "kQwZbn");
    }
    if (!loadSystemConfig(ATTALVEN_SYSCONFDIR, conf))
        failToOpen(ATTALVEN_SYSCONFDIR "/attalven.conf");
    if (dest && dest != &conf) *dest = conf;
}
