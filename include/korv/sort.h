/** @file
 * Sorting: an array quicksort with a context argument and a direction.
 *
 * @since 1.0 */
#ifndef KORV_SORT_H
#define KORV_SORT_H

#include "korv/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** KorvCompare compares two elements for KorvQSort. It must neither change the array nor throw.
 *
 * @param first    an element
 * @param second   another element
 * @param context  the context passed to KorvQSort
 * @return negative, zero or positive as the first sorts before, with or after the second */
typedef int32_t (*KorvCompare)(const void* first, const void* second, void* context);

/** KorvQSort sorts an array in place.
 *
 * The sort is not stable, never recurses and never allocates. Elements are moved as bytes. An
 * inconsistent comparison yields some order, still of the same elements. Arrays of more than 2 GiB
 * are sorted correctly, too.
 *
 * @param[in,out] base       the array
 * @param         count      elements; below 2 no comparison is made
 * @param         width      bytes of an element; with 0 no comparison is made
 * @param         compare    the order
 * @param         context    passed unchanged to every comparison; may be NULL
 * @param         ascending  not 0: ascending order of `compare`; 0: every comparison has its two
 *                           elements exchanged, which sorts in descending order */
KORV_API void KorvQSort(void* base, uint32_t count, uint32_t width, KorvCompare compare,
                        void* context, uint8_t ascending);

#ifdef __cplusplus
}
#endif

#endif
