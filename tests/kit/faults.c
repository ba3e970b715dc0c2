#include "faults.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

Faults* faults;

void faultsInit(void) {
    faults = mmap(0, sizeof *faults, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
}

/* Kinds that strike allocations count nothing else, the others no allocations. */
int strikes(enum Need need) {
    if (!faults || !faults->armed || (faults->thread && faults->thread != gettid())) return 0;
    int isMemory = faults->kind == FAULT_ALLOCATION || faults->kind == FAULT_MEMORY;
    if (isMemory != (need == NEEDS_MEMORY)) return 0;
    int n = ++faults->count;
    if (faults->kind == FAULT_KILL && n == faults->target) kill(getpid(), SIGKILL);
    if (faults->kind == FAULT_ERROR && n == faults->target) {
        errno = faults->error;
        return 1;
    }
    if (isMemory && (n == faults->target || (n > faults->target && faults->kind == FAULT_MEMORY))) {
        errno = ENOMEM;
        return 1;
    }
    if (faults->kind == FAULT_FULL && n >= faults->target && need == NEEDS_SPACE) {
        errno = ENOSPC;
        return 1;
    }
    return 0;
}

/* How many of `n` bytes this call transfers. */
static size_t share(size_t n) {
    int now = faults && faults->armed && faults->count == faults->target;
    int halves = now && (faults->kind == FAULT_SHORT || faults->kind == FAULT_KILL_HALF);
    return halves && n > 1 ? n / 2 : n;
}

static void afterWrite(void) {
    if (faults && faults->armed && faults->kind == FAULT_KILL_HALF &&
        faults->count == faults->target)
        kill(getpid(), SIGKILL);
}

#define WRAP(result, name, parameters, arguments, need)      \
    result __real_##name parameters;                         \
    result __wrap_##name parameters;                         \
    result __wrap_##name parameters {                        \
        return strikes(need) ? -1 : __real_##name arguments; \
    }

WRAP(int, mkdir, (const char* path, mode_t mode), (path, mode), NEEDS_SPACE)
WRAP(int, mkostemp64, (char* path, int flags), (path, flags), NEEDS_SPACE)
WRAP(int, __openat64_2, (int d, const char* path, int flags), (d, path, flags), NEEDS_NOTHING)
WRAP(int, socket, (int family, int type, int protocol), (family, type, protocol), NEEDS_NOTHING)
WRAP(int, unlink, (const char* path), (path), NEEDS_NOTHING)
WRAP(int, rename, (const char* from, const char* to), (from, to), NEEDS_NOTHING)
WRAP(int, linkat, (int d, const char* from, int e, const char* to, int flags),
     (d, from, e, to, flags), NEEDS_SPACE)
WRAP(int, ftruncate64, (int fd, off_t size), (fd, size), NEEDS_NOTHING)
WRAP(int, fallocate64, (int fd, int mode, off_t at, off_t size), (fd, mode, at, size), NEEDS_SPACE)
WRAP(int, fchmod, (int fd, mode_t mode), (fd, mode), NEEDS_NOTHING)
WRAP(int, fchown, (int fd, uid_t user, gid_t group), (fd, user, group), NEEDS_NOTHING)
WRAP(int, futimens, (int fd, const struct timespec* times), (fd, times), NEEDS_NOTHING)
WRAP(int, flock, (int fd, int operation), (fd, operation), NEEDS_NOTHING)
WRAP(int, fstat64, (int fd, struct stat* st), (fd, st), NEEDS_NOTHING)
WRAP(int, lstat64, (const char* path, struct stat* st), (path, st), NEEDS_NOTHING)
WRAP(int, stat64, (const char* path, struct stat* st), (path, st), NEEDS_NOTHING)

/* Nobody else holds a lock: a pause between two tries changes nothing. */
int __wrap_nanosleep(const struct timespec* pause, struct timespec* left);
int __wrap_nanosleep(const struct timespec* pause, struct timespec* left) {
    (void)pause, (void)left;
    return 0;
}

/* Nothing is lost when a process is killed and the machine goes on: the disk need not be waited
 * for. */
int __wrap_fsync(int fd);
int __wrap_fsync(int fd) {
    (void)fd;
    return strikes(NEEDS_SPACE) ? -1 : 0;
}

int __real_open64(const char* path, int flags, ...);
int __wrap_open64(const char* path, int flags, ...);
int __wrap_open64(const char* path, int flags, ...) {
    va_list args;
    va_start(args, flags);
    mode_t mode = va_arg(args, mode_t);
    va_end(args);
    return strikes(flags & O_CREAT ? NEEDS_SPACE : NEEDS_NOTHING)
               ? -1
               : __real_open64(path, flags, mode);
}

int __real_openat64(int d, const char* path, int flags, ...);
int __wrap_openat64(int d, const char* path, int flags, ...);
int __wrap_openat64(int d, const char* path, int flags, ...) {
    return strikes(NEEDS_NOTHING) ? -1 : __real_openat64(d, path, flags);
}

int __real_fcntl64(int fd, int command, ...);
int __wrap_fcntl64(int fd, int command, ...);
int __wrap_fcntl64(int fd, int command, ...) {
    va_list args;
    va_start(args, command);
    void* argument = va_arg(args, void*);
    va_end(args);
    return strikes(NEEDS_NOTHING) ? -1 : __real_fcntl64(fd, command, argument);
}

#define WRAP_TRANSFER(name, parameters, arguments, size, need, after) \
    ssize_t __real_##name parameters;                                 \
    ssize_t __wrap_##name parameters;                                 \
    ssize_t __wrap_##name parameters {                                \
        if (strikes(need)) return -1;                                 \
        size = share(size);                                           \
        ssize_t done = __real_##name arguments;                       \
        after;                                                        \
        return done;                                                  \
    }

WRAP_TRANSFER(read, (int fd, void* to, size_t n), (fd, to, n), n, NEEDS_NOTHING, (void)0)
WRAP_TRANSFER(pread64, (int fd, void* to, size_t n, off_t at), (fd, to, n, at), n, NEEDS_NOTHING,
              (void)0)
WRAP_TRANSFER(write, (int fd, const void* from, size_t n), (fd, from, n), n, NEEDS_SPACE,
              afterWrite())
WRAP_TRANSFER(pwrite64, (int fd, const void* from, size_t n, off_t at), (fd, from, n, at), n,
              NEEDS_SPACE, afterWrite())
