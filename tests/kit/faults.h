#ifndef ATTALVEN_TESTS_KIT_FAULTS_H
#define ATTALVEN_TESTS_KIT_FAULTS_H

/*
 * Faults at a chosen call: a program linked with the --wrap options of its CMake target sends its
 * calls of the C library's file functions through here. While `faults->armed`, each call is
 * counted, and at call `target` (from 1) the fault strikes.
 */

#ifdef __cplusplus
extern "C" {
#endif

enum FaultKind {
    FAULT_NONE,
    FAULT_KILL,       /* the process is killed before the call */
    FAULT_KILL_HALF,  /* the same, but a write is half done */
    FAULT_ERROR,      /* the call fails with `error` */
    FAULT_FULL,       /* this call and each later one that needs disk space fail with ENOSPC */
    FAULT_SHORT,      /* a read or write does half of its bytes */
    FAULT_ALLOCATION, /* this allocation fails (with kit/memory_faults.c) */
    FAULT_MEMORY      /* this allocation and each later one fail */
};

typedef struct Faults {
    int armed, count, target, error;
    enum FaultKind kind;
    int thread; /* where not 0, only this one's calls count */
} Faults;

/* Shared with child processes, so that their parent learns the count. */
extern Faults* faults;
void faultsInit(void);

enum Need { NEEDS_NOTHING, NEEDS_SPACE, NEEDS_MEMORY };
/* Whether this call, which takes what `need` says, must fail; errno is set then. */
int strikes(enum Need need);

/* With kit/memory_faults.c: blocks of the program's own calls of malloc and its like that are not
 * freed yet; where exit() goes while it is set, instead of ending the process. */
extern long liveBlocks;
extern void (*exitHook)(int status);

#ifdef __cplusplus
}
#endif

#endif
