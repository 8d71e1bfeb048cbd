/** @file
 * Interface of the companion conversion library, libKORVDataCnvLib.
 *
 * The framework has its own library of this name. The one built here is a stand-in with the same
 * interface, which the support library links against. If you have the framework's own library, load
 * that one instead.
 *
 * Common to the text and integer conversions are
 * - source: the value;
 * - sourceLen: points to its length if the form needs one, and otherwise to 0; never written;
 * - target: wide (or narrow) buffer; zero-terminated on success;
 * - targetCapacity: its size in bytes, terminator included; nothing is written past it, and a
 *   partial unit at its end is not used;
 * - outLen: receives the characters written, terminator not counted;
 * - options: code page and flag of the narrow text, or NULL: then each narrow byte is one ISO
 *   8859-1 character.
 *
 * Every function returns a CnvStatus. On failure the target holds an empty string if it has room
 * for a terminator, and *outLen is left alone. The targets of Convert16To32 and Convert32To16 may
 * hold the part converted so far instead. Source and target must not overlap. Faults are reported
 * in this order: a target without room for a terminator, a bad length, a code page that is unknown
 * or cannot be opened (even for an empty text), then the first fault from the start of the text.
 *
 * In text whose length is given, zero units are ordinary characters, except in
 * KORVCnvWVarcharSzToVarcharSz. Conversions from wide to wide text copy the units without checking
 * them. Variable text and integers need not be aligned, because they may follow a length prefix or
 * be part of a row. All functions may run in any number of threads at once.
 *
 * Numbers of code pages are the usual ones: 37, 437, 850, 943, 1047, 1252, ... Every code page that
 * the system's iconv() knows as CPn or IBMn is available, and so are
 * - 819, 28591: ISO 8859-1;
 * - 367, 20127: ASCII;
 * - 28592 to 28601 and 28603 to 28605: ISO 8859-2 to 8859-11 and 8859-13 to 8859-15;
 * - 1208, 65001: UTF-8, strict: no overlong forms;
 * - 1200, 1201: UTF-16, little-endian and big-endian;
 * - 12000, 12001: UTF-32, little-endian and big-endian;
 * - 1392, 54936: GB 18030;
 * - 51932: EUC-JP.
 *
 * A byte order mark is neither expected nor written: it is a character like any other. Narrow text
 * always ends with one zero byte, also where the units of the code page are wider.
 *
 * @since 1.0 */
#ifndef KORV_DATACNV_H
#define KORV_DATACNV_H

#include "korv/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Conversion options: the members that the support library sets, after space that belongs to the
 * companion library. The stand-in ignores the flag and that space. */
typedef struct CnvOptions {
    uint32_t reserved1[7]; /**< for the companion library; the support library passes zeros */
    uint32_t codePage;     /**< a number of the list above */
    uint8_t flag;          /**< conversion flag, passed unchanged to the companion library */
} CnvOptions;

/** Results of the stand-in. */
typedef enum CnvStatus {
    CNV_SUCCESS = 0,             /**< The value was converted. */
    CNV_TARGET_TOO_SMALL = 201,  /**< The text and its terminator do not fit. */
    CNV_MALFORMED_SOURCE = 202,  /**< The source is not valid text, or ends within a character. */
    CNV_UNCONVERTIBLE = 203,     /**< A character does not exist in the target code page. */
    CNV_UNKNOWN_CODE_PAGE = 204, /**< The code page is unknown. */
    CNV_BAD_LENGTH = 205,        /**< A length is negative as a signed number. */
    CNV_NO_MEMORY = 206 /**< There is no memory or no file handle for a conversion by iconv(). */
} CnvStatus;

/** KORVCnvCharToWVarcharSz converts fixed-length narrow text to zero-terminated wide text.
 *
 * @param source     the bytes
 * @param sourceLen  bytes of the source
 * @param target,targetCapacity,outLen,options  as in all conversions of datacnv.h
 * @retval CNV_SUCCESS           converted
 * @retval CNV_TARGET_TOO_SMALL  the text and its terminator do not fit
 * @retval CNV_MALFORMED_SOURCE  not valid text of its code page, or cut inside a character
 * @retval CNV_UNKNOWN_CODE_PAGE no such code page
 * @retval CNV_BAD_LENGTH        the length is negative as a signed number
 * @retval CNV_NO_MEMORY         no memory or no file handle for a conversion by iconv */
KORV_API int32_t KORVCnvCharToWVarcharSz(const char* source, const uint32_t* sourceLen,
                                         wchar_t* target, uint32_t targetCapacity, uint32_t* outLen,
                                         const CnvOptions* options);

/** KORVCnvVarcharToWVarcharSz converts narrow text led by a signed 16-bit byte count to
 * zero-terminated wide text.
 *
 * @param source     the count, followed by the text; need not be aligned
 * @param sourceLen  points to 0; not read
 * @param target,targetCapacity,outLen,options  as in all conversions of datacnv.h
 * @retval CNV_SUCCESS           converted
 * @retval CNV_TARGET_TOO_SMALL  the text and its terminator do not fit
 * @retval CNV_MALFORMED_SOURCE  not valid text of its code page, or cut inside a character
 * @retval CNV_UNKNOWN_CODE_PAGE no such code page
 * @retval CNV_BAD_LENGTH        the length is negative as a signed number
 * @retval CNV_NO_MEMORY         no memory or no file handle for a conversion by iconv */
KORV_API int32_t KORVCnvVarcharToWVarcharSz(const void* source, const uint32_t* sourceLen,
                                            wchar_t* target, uint32_t targetCapacity,
                                            uint32_t* outLen, const CnvOptions* options);

/** KORVCnvVarcharSzToWVarcharSz converts zero-terminated narrow text to zero-terminated wide text.
 *
 * @param source     the text
 * @param sourceLen  points to 0; not read
 * @param target,targetCapacity,outLen,options  as in all conversions of datacnv.h
 * @retval CNV_SUCCESS           converted
 * @retval CNV_TARGET_TOO_SMALL  the text and its terminator do not fit
 * @retval CNV_MALFORMED_SOURCE  not valid text of its code page, or cut inside a character
 * @retval CNV_UNKNOWN_CODE_PAGE no such code page
 * @retval CNV_BAD_LENGTH        the text has 2 GiB or more
 * @retval CNV_NO_MEMORY         no memory or no file handle for a conversion by iconv */
KORV_API int32_t KORVCnvVarcharSzToWVarcharSz(const char* source, const uint32_t* sourceLen,
                                              wchar_t* target, uint32_t targetCapacity,
                                              uint32_t* outLen, const CnvOptions* options);

/** KORVCnvWCharToWVarcharSz converts fixed-length wide text to zero-terminated wide text.
 *
 * @param source     the characters; may be NULL if the length is less than one unit
 * @param sourceLen  bytes of the source; a partial unit at its end is left out
 * @param target,targetCapacity,outLen  as in all conversions of datacnv.h
 * @param options    not read
 * @retval CNV_SUCCESS          converted
 * @retval CNV_TARGET_TOO_SMALL the text and its terminator do not fit
 * @retval CNV_BAD_LENGTH       the length is negative as a signed number */
KORV_API int32_t KORVCnvWCharToWVarcharSz(const wchar_t* source, const uint32_t* sourceLen,
                                          wchar_t* target, uint32_t targetCapacity,
                                          uint32_t* outLen, const CnvOptions* options);

/** KORVCnvWVarcharToWVarcharSz converts wide text led by a signed 16-bit byte count to
 * zero-terminated wide text.
 *
 * @param source     the count, followed by the text; neither need be aligned
 * @param sourceLen  points to 0; not read
 * @param target,targetCapacity,outLen  as in all conversions of datacnv.h
 * @param options    not read
 * @retval CNV_SUCCESS          converted
 * @retval CNV_TARGET_TOO_SMALL the text and its terminator do not fit
 * @retval CNV_BAD_LENGTH       the length is negative as a signed number */
KORV_API int32_t KORVCnvWVarcharToWVarcharSz(const void* source, const uint32_t* sourceLen,
                                             wchar_t* target, uint32_t targetCapacity,
                                             uint32_t* outLen, const CnvOptions* options);

/** KORVCnvIntToWVarcharSz1 converts a signed 32-bit integer to zero-terminated wide text: decimal
 * digits, after a minus sign if it is negative.
 *
 * @param source     the integer, not necessarily aligned
 * @param sourceLen  points to 0; not read
 * @param target,targetCapacity,outLen  as in all conversions of datacnv.h
 * @param options    not read
 * @retval CNV_SUCCESS          converted
 * @retval CNV_TARGET_TOO_SMALL the text and its terminator do not fit */
KORV_API int32_t KORVCnvIntToWVarcharSz1(const int32_t* source, const uint32_t* sourceLen,
                                         wchar_t* target, uint32_t targetCapacity, uint32_t* outLen,
                                         const CnvOptions* options);

/** KORVCnvUIntToWVarcharSz converts an unsigned 32-bit integer, as decimal digits, to
 * zero-terminated wide text.
 *
 * @param source     the integer, not necessarily aligned
 * @param sourceLen  points to 0; not read
 * @param target,targetCapacity,outLen  as in all conversions of datacnv.h
 * @param options    not read
 * @retval CNV_SUCCESS          converted
 * @retval CNV_TARGET_TOO_SMALL the text and its terminator do not fit */
KORV_API int32_t KORVCnvUIntToWVarcharSz(const uint32_t* source, const uint32_t* sourceLen,
                                         wchar_t* target, uint32_t targetCapacity, uint32_t* outLen,
                                         const CnvOptions* options);

/** KORVCnvSmallIntToWVarcharSz converts a signed 16-bit integer to zero-terminated wide text:
 * decimal digits, after a minus sign if it is negative.
 *
 * @param source     the integer, not necessarily aligned
 * @param sourceLen  points to 0; not read
 * @param target,targetCapacity,outLen  as in all conversions of datacnv.h
 * @param options    not read
 * @retval CNV_SUCCESS          converted
 * @retval CNV_TARGET_TOO_SMALL the text and its terminator do not fit */
KORV_API int32_t KORVCnvSmallIntToWVarcharSz(const int16_t* source, const uint32_t* sourceLen,
                                             wchar_t* target, uint32_t targetCapacity,
                                             uint32_t* outLen, const CnvOptions* options);

/** KORVCnvSmallUIntToWVarcharSz converts an unsigned 16-bit integer, as decimal digits, to
 * zero-terminated wide text.
 *
 * @param source     the integer, not necessarily aligned
 * @param sourceLen  points to 0; not read
 * @param target,targetCapacity,outLen  as in all conversions of datacnv.h
 * @param options    not read
 * @retval CNV_SUCCESS          converted
 * @retval CNV_TARGET_TOO_SMALL the text and its terminator do not fit */
KORV_API int32_t KORVCnvSmallUIntToWVarcharSz(const uint16_t* source, const uint32_t* sourceLen,
                                              wchar_t* target, uint32_t targetCapacity,
                                              uint32_t* outLen, const CnvOptions* options);

/** KORVCnvWVarcharSzToVarcharSz converts zero-terminated wide text to zero-terminated narrow text.
 *
 * Wide units that are surrogates or above U+10FFFF are malformed for every code page.
 *
 * @param      source          the text
 * @param      sourceLen       its length in characters, or 0 when it ends at its terminator; a
 *                             terminator before that length ends it too
 * @param[out] target          the narrow text; on failure an empty string, if it has room
 *                             for a terminator
 * @param      targetCapacity  bytes of the target, terminator included
 * @param[out] outLen          bytes written, terminator not counted; left alone on failure
 * @param      options         code page and flag of the text; NULL: ISO 8859-1
 * @retval CNV_SUCCESS           converted
 * @retval CNV_TARGET_TOO_SMALL  the text and its terminator do not fit
 * @retval CNV_MALFORMED_SOURCE  a unit is a surrogate or above U+10FFFF
 * @retval CNV_UNCONVERTIBLE     a character that the code page does not have
 * @retval CNV_UNKNOWN_CODE_PAGE no such code page
 * @retval CNV_BAD_LENGTH        the length is negative as a signed number
 * @retval CNV_NO_MEMORY         no memory or no file handle for a conversion by iconv */
KORV_API int32_t KORVCnvWVarcharSzToVarcharSz(const wchar_t* source, const uint32_t* sourceLen,
                                              char* target, uint32_t targetCapacity,
                                              uint32_t* outLen, const CnvOptions* options);

/** KORVGetStringFromTS converts a date and time record to wide text, "YYYY-MM-DD HH:MM:SS", each
 * number in at least the digits shown and a negative year led by a minus.
 *
 * The function does not know the type of the record. It reads the first 12 bytes as six 16-bit
 * numbers: year (signed), month, day, hour, minute, second. A fraction is ignored. An OdbcDate has
 * only 6 bytes: copy it into a buffer of 12 bytes first.
 *
 * @param      source          12 bytes, which need not be aligned
 * @param[out] target          the wide text; on failure an empty string, if it has room
 *                             for a terminator
 * @param      targetCapacity  bytes of the target, terminator included
 * @param[out] outLen          characters written, terminator not counted; left alone on failure
 * @retval CNV_SUCCESS          converted
 * @retval CNV_TARGET_TOO_SMALL the text and its terminator do not fit */
KORV_API int32_t KORVGetStringFromTS(const void* source, wchar_t* target, uint32_t targetCapacity,
                                     uint32_t* outLen);

/** Convert16To32 converts UTF-16 units to UTF-32 units. Surrogate pairs are joined; no terminator
 * is added, and zero units are ordinary.
 *
 * @param      source       UTF-16 units
 * @param      sourceUnits  units of the source
 * @param[out] target       on failure it may hold the part converted so far
 * @param      targetUnits  units of the target
 * @param[out] count        target units written; left alone on failure
 * @retval CNV_SUCCESS          converted
 * @retval CNV_TARGET_TOO_SMALL the converted text does not fit
 * @retval CNV_MALFORMED_SOURCE a lone surrogate
 * @retval CNV_BAD_LENGTH       a negative count */
KORV_API int32_t Convert16To32(const uint16_t* source, int32_t sourceUnits, wchar_t* target,
                               int32_t targetUnits, uint32_t* count);

/** Convert32To16 converts UTF-32 units to UTF-16 units. Characters beyond U+FFFF are split into
 * pairs; no terminator is added, and zero units are ordinary.
 *
 * @param      source       UTF-32 units
 * @param      sourceUnits  units of the source
 * @param[out] target       on failure it may hold the part converted so far, never half a pair
 * @param      targetUnits  units of the target
 * @param[out] count        target units written; left alone on failure
 * @retval CNV_SUCCESS          converted
 * @retval CNV_TARGET_TOO_SMALL the converted text does not fit
 * @retval CNV_MALFORMED_SOURCE a surrogate, or a unit above U+10FFFF
 * @retval CNV_BAD_LENGTH       a negative count */
KORV_API int32_t Convert32To16(const wchar_t* source, int32_t sourceUnits, uint16_t* target,
                               int32_t targetUnits, uint32_t* count);

#ifdef __cplusplus
}
#endif

#endif
