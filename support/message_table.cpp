// The message table of a language. A page prints a handful of its texts, so the file is read once
// and kept: `table` holds it with its line ends turned into NULs, so that each text is a C text of
// its own. It is looked at again at every call, since an operator may be editing it.

#include <sys/stat.h>

#include <cstdio>
#include <cstring>

#include "language.h"
#include "mail/base/file.h"
#include "mail/base/text.h"
#include "support.h"

using namespace attalven;

namespace {

struct Table {
    char* content;  // lives as long as the process, or until another table is read
    size_t size;
    struct stat version;
    char path[512];
};
Table table;

bool isCurrent(const char* path, const struct stat& st) {
    const struct stat& v = table.version;
    return table.content && strcmp(path, table.path) == 0 && st.st_dev == v.st_dev &&
           st.st_ino == v.st_ino && st.st_size == v.st_size &&
           st.st_mtim.tv_sec == v.st_mtim.tv_sec && st.st_mtim.tv_nsec == v.st_mtim.tv_nsec;
}

bool load(const char* path) {
    OwnedFile f = openRegular(path);
    struct stat st;
    if (!f || fstat(fileno(f.get()), &st) != 0) return false;
    if (isCurrent(path, st)) return true;
    free(table.content);
    table.content = fileStrmGetStr(clampInt(st.st_size), f.get());
    if (!table.content) return false;
    table.size = strlen(table.content);
    table.version = st;
    snprintf(table.path, sizeof table.path, "%s", path);
    for (char* p = table.content; *p; p++)
        if (*p == '\n') {
            if (p > table.content && p[-1] == '\r') p[-1] = 0;
            *p = 0;
        }
    return true;
}

}  // namespace

char* msgGet(const char* directory, int number, int language) {
    char path[sizeof table.path], key[16];
    int n =
        snprintf(path, sizeof path, "%s/msg.%s", strSafeAssign(directory), languageCode(language));
    if (!directory || n >= static_cast<int>(sizeof path) || !load(path)) return nullptr;
    auto keyLength = static_cast<size_t>(snprintf(key, sizeof key, "%d\t", number));
    for (char* line = table.content; line < table.content + table.size; line += strlen(line) + 1)
        if (strncmp(line, key, keyLength) == 0) return line + keyLength;
    return nullptr;
}
