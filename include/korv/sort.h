/* Sorting: an array quicksort with a context argument and a direction. */
#ifndef KORV_SORT_H
#define KORV_SORT_H

#include "korv/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Compares two elements: negative, zero or positive as the first sorts before, with or after the
 * second. It must not change the array. */
typedef int32_t (*KorvCompare)(const void* first, const void* second, void* context);

/* KorvQSort sorts `count` elements of `width` bytes at `base` in place: in ascending order of
 * `compare` when `ascending` is not 0; otherwise every comparison has its two elements exchanged,
 * which sorts in descending order. `context` is handed to every comparison.
 *
 * The sort is not stable, never recurses and never allocates. A count below 2 or a width of 0 makes
 * no comparison. An inconsistent comparison yields some order, still of the same elements. */
KORV_API void KorvQSort(void* base, uint32_t count, uint32_t width, KorvCompare compare,
                        void* context, uint8_t ascending);

#ifdef __cplusplus
}
#endif

#endif
