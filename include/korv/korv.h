/** @file
 * The whole support library: every module's header. The companion conversion library has a header
 * of its own, korv/datacnv.h. The conventions are in korv/base.h.
 *
 * @since 1.0 */
#ifndef KORV_KORV_H
#define KORV_KORV_H

#include "korv/base.h"
#include "korv/ctrlblk.h"
#include "korv/datatypes.h"
#include "korv/errors.h"
#include "korv/numeric.h"
#include "korv/sort.h"
#include "korv/text.h"
#include "korv/time.h"
#include "korv/tokens.h"

#endif
