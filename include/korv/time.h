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

/** KORVGetLocalTime writes the local time as "%d/%b/%Y %H:%M:%S": 05/Mar/2024 14:07:09. The month
 * follows the host's locale.
 *
 * @param[out] buffer    the text, terminated; when text and terminator do not fit, what strftime
 *                       leaves: unspecified, within the capacity
 * @param      capacity  bytes of the buffer
 * @return `buffer` */
KORV_API char* KORVGetLocalTime(char* buffer, uint32_t capacity);

/** KORVGetCurLocalTimeTS stores the current local time with a fraction of 0.
 *
 * @param[out] timestamp  the time
 * @param      dateOnly   other than 0: hour, minute and second are 0 too */
KORV_API void KORVGetCurLocalTimeTS(OdbcTimestamp* timestamp, uint8_t dateOnly);

/** KORVGetDiffDays counts the whole days from one time to another.
 *
 * The records are read as local standard time, their fractions are ignored. A record that mktime
 * cannot represent is not detected.
 *
 * @param first   start time; NULL means the current time
 * @param second  end time; NULL means the current time
 * @return days, truncated toward zero; positive if `second` is later than `first`; 0 if both are
 *         NULL */
KORV_API int32_t KORVGetDiffDays(const OdbcTimestamp* first, const OdbcTimestamp* second);

/** FixLeapYearDay sets the day of a February date to 28 when it is above 28 and the year is a
 * common one.
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
