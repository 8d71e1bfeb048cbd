/* What the module COUNTED counts, exported as KorvTestCounters for the tests. */
#ifndef KORV_TESTS_COUNTERS_H
#define KORV_TESTS_COUNTERS_H

typedef struct Counters {
    int open;
    int close;
    int mask;        /* calls */
    int maskBatch;   /* calls */
    int batchValues; /* values of these calls */
} Counters;

#endif
