/** @file
 * Dates and time: local time stamps, the current time as an ODBC timestamp, whole-day differences,
 * and the February clamp.
 *
 * Local time follows the process's time zone, which is read again by every call.
 *
 * @since 1.0 */
#ifndef KORV_TIME_H
#define KORV_TIME_H

#include "korv/base.h"
#include "korv/datatypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/** KORVGetLocalTime writes the local time as "%d/%b/%Y %H:%M:%S": 05/Mar/2024 14:07:09. The name of
 * the month follows the LC_TIME locale of the host.
 *
 * @param[out] buffer    the text, zero-terminated. If text and terminator do not fit, the contents
 *                       are unspecified and may lack a terminator; this is not reported
 * @param      capacity  bytes of the buffer; 21 are enough in the C locale
 * @return `buffer` */
KORV_API char* KORVGetLocalTime(char* buffer, uint32_t capacity);

/** KORVGetCurLocalTimeTS stores the current local time with a fraction of 0.
 *
 * @param[out] timestamp  the time
 * @param      dateOnly   other than 0: hour, minute and second are 0 too */
KORV_API void KORVGetCurLocalTimeTS(OdbcTimestamp* timestamp, uint8_t dateOnly);

/** KORVGetDiffDays counts the whole days from one time to another.
 *
 * The records are read as local standard time, and their fractions are ignored. Members out of
 * range are carried over as by mktime(): 30 February is a day in March. A record that mktime()
 * cannot represent is not detected; the result is then meaningless.
 *
 * @param first   start time; NULL means the current time
 * @param second  end time; NULL means the current time
 * @return days, truncated toward zero: positive if `second` is later than `first`, negative if it
 *         is earlier, 0 if the times are less than 24 hours apart or both are NULL */
KORV_API int32_t KORVGetDiffDays(const OdbcTimestamp* first, const OdbcTimestamp* second);

/** FixLeapYearDay sets the day to 28 if the month is February, the day is above 28, and the year is
 * not a leap year.
 *
 * In a leap year a day of 30 or 31 stays: only a day that a change of year made invalid is
 * corrected.
 *
 * @param[in,out] timestamp  the date */
KORV_API void FixLeapYearDay(OdbcTimestamp* timestamp);

#ifdef __cplusplus
}
#endif

#endif
