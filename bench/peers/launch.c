/* launch PROGRAM ARGUMENT...: runs the program with its standard streams on /dev/null; prints its
   wall seconds and its highest resident size in KiB, and ends as it did. A process that a large one
   starts seems as large at least. */
#define _GNU_SOURCE
#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>

extern char** environ;

int main(int argc, char** argv) {
    posix_spawn_file_actions_t files;
    struct timespec start, end;
    struct rusage usage;
    pid_t pid;
    int status;
    if (argc < 2) return 2;
    posix_spawn_file_actions_init(&files);
    for (int fd = 0; fd < 3; fd++)
        posix_spawn_file_actions_addopen(&files, fd, "/dev/null", O_RDWR, 0);
    clock_gettime(CLOCK_MONOTONIC, &start);
    if (posix_spawnp(&pid, argv[1], &files, NULL, argv + 1, environ) != 0) return 127;
    if (wait4(pid, &status, 0, &usage) != pid) return 127;
    clock_gettime(CLOCK_MONOTONIC, &end);
    printf("%.9f %ld\n",
           (double)(end.tv_sec - start.tv_sec) + 1e-9 * (double)(end.tv_nsec - start.tv_nsec),
           usage.ru_maxrss);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}
