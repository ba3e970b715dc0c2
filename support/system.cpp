// Random numbers and the name of the system. Numbers come from the kernel's generator, so that
// nobody who sees some of them can tell the next.

#include <sodium.h>
#include <sys/utsname.h>

#include "mail/base/bounded_text.h"
#include "support.h"

void initRandom(void) {
    randombytes_stir();
}

int getRandom(int n) {
    return n > 1 ? static_cast<int>(randombytes_uniform(static_cast<uint32_t>(n))) : 0;
}

char* getUnixName(void) {
    static attalven::BoundedText<64> name;
    struct utsname system;
    name.assign(uname(&system) == 0 ? system.sysname : "Unix");
    return name.data();
}
