/* Objects that are loaded before a program to stand in front of some functions: they count the
 * calls, of all threads together, and make the n-th go wrong.
 *
 * In the environment, NTH_CALL is n, or n+ for the n-th call and all after it; NTH_CALL_TOTAL
 * names a file that receives, when the program ends, the number of calls, and how many blocks of
 * memory are left where the heap counts them. */
#ifndef NTH_CALL_H
#define NTH_CALL_H

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static long nthCall, nthCallSoFar, nthCallBlocks;
static int nthCallAndAfter, nthCallCounts;
static const char* nthCallTotal;

/* The value of a variable. getenv() does not work yet when the first constructors run. */
static const char* nthCallVariable(char** environment, const char* name) {
    const size_t length = strlen(name);
    for (; *environment; ++environment) {
        if (!strncmp(*environment, name, length) && (*environment)[length] == '=') {
            return *environment + length + 1;
        }
    }
    return NULL;
}

__attribute__((constructor)) static void nthCallBegin(int count, char** arguments,
                                                      char** environment) {
    (void)count;
    (void)arguments;
    const char* nth = nthCallVariable(environment, "NTH_CALL");
    if (nth) {
        char* end;
        nthCall = strtol(nth, &end, 10);
        nthCallAndAfter = *end == '+';
    }
    nthCallTotal = nthCallVariable(environment, "NTH_CALL_TOTAL");
    __atomic_store_n(&nthCallCounts, 1, __ATOMIC_RELAXED);
}

__attribute__((destructor)) static void nthCallEnd(void) {
    __atomic_store_n(&nthCallCounts, 0, __ATOMIC_RELAXED);
    if (!nthCallTotal) return;
    const int file = open(nthCallTotal, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (file < 0) abort();
    dprintf(file, "%ld %ld\n", __atomic_load_n(&nthCallSoFar, __ATOMIC_RELAXED),
            __atomic_load_n(&nthCallBlocks, __ATOMIC_RELAXED));
    close(file);
}

/* Counts a call; whether it is one of those that go wrong. */
static int isNthCall(void) {
    if (!__atomic_load_n(&nthCallCounts, __ATOMIC_RELAXED)) return 0;
    const long now = __atomic_add_fetch(&nthCallSoFar, 1, __ATOMIC_RELAXED);
    return now == nthCall || (nthCallAndAfter && now > nthCall);
}

/* Counts blocks of memory that are taken, or given back. */
static inline void nthCallCountBlocks(long count) {
    __atomic_add_fetch(&nthCallBlocks, count, __ATOMIC_RELAXED);
}

#endif
