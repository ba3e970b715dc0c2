/* Allocations at which faults strike, and the count of blocks; for programs linked with the --wrap
 * options of these functions. */
#include <errno.h>
#include <iconv.h>
#include <netdb.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include "faults.h"

long liveBlocks;
void (*exitHook)(int status);

static void count(int blocks) {
    if (faults && gettid() == faults->thread) liveBlocks += blocks;
}

#define WRAP_MEMORY(result, name, parameters, arguments, failed, after) \
    result __real_##name parameters;                                    \
    result __wrap_##name parameters;                                    \
    result __wrap_##name parameters {                                   \
        if (strikes(NEEDS_MEMORY)) return failed;                       \
        result made = __real_##name arguments;                          \
        after;                                                          \
        return made;                                                    \
    }

WRAP_MEMORY(void*, malloc, (size_t n), (n), NULL, if (made) count(1))
WRAP_MEMORY(void*, calloc, (size_t n, size_t size), (n, size), NULL, if (made) count(1))
WRAP_MEMORY(void*, realloc, (void* p, size_t n), (p, n), NULL, if (made && !p) count(1))
WRAP_MEMORY(void*, mmap64, (void* at, size_t n, int access, int flags, int fd, off_t from),
            (at, n, access, flags, fd, from), MAP_FAILED, if (made != MAP_FAILED) count(1))
WRAP_MEMORY(FILE*, fdopen, (int fd, const char* mode), (fd, mode), NULL, (void)0)
WRAP_MEMORY(iconv_t, iconv_open, (const char* to, const char* from), (to, from), (iconv_t)-1,
            (void)0)
WRAP_MEMORY(int, getaddrinfo,
            (const char* host, const char* port, const struct addrinfo* hints,
             struct addrinfo** found),
            (host, port, hints, found), EAI_MEMORY, (void)0)

ssize_t __real___getdelim(char** line, size_t* capacity, int end, FILE* stream);
ssize_t __wrap___getdelim(char** line, size_t* capacity, int end, FILE* stream);
ssize_t __wrap___getdelim(char** line, size_t* capacity, int end, FILE* stream) {
    if (strikes(NEEDS_MEMORY)) return -1;
    int isNew = !*line;
    ssize_t length = __real___getdelim(line, capacity, end, stream);
    if (isNew && *line) count(1);
    return length;
}

void __real_free(void* p);
void __wrap_free(void* p);
void __wrap_free(void* p) {
    if (p) count(-1);
    __real_free(p);
}

int __real_munmap(void* at, size_t n);
int __wrap_munmap(void* at, size_t n);
int __wrap_munmap(void* at, size_t n) {
    count(-1);
    return __real_munmap(at, n);
}

void __real_exit(int status) __attribute__((noreturn));
void __wrap_exit(int status);
void __wrap_exit(int status) {
    if (exitHook) exitHook(status);
    __real_exit(status);
}
