/** @file
 * Text: case conversion and comparison, parsing helpers, Unicode units, byte order and bit
 * order.
 *
 * @since 1.0 */
#ifndef KORV_TEXT_H
#define KORV_TEXT_H

#include "korv/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Case ------------------------------------------------------------------------------------ */

/** KORV_StrToUpper converts a zero-terminated text to upper case in place, byte by byte, with
 * toupper() and the LC_CTYPE locale of the host.
 *
 * Each byte is passed to the conversion as a signed char, and the low byte of the result is kept.
 *
 * @param[in,out] text  the text
 * @return `text` */
KORV_API char* KORV_StrToUpper(char* text);

/** KORV_StrToLower does the same as KORV_StrToUpper, but converts with tolower().
 * @copydetails KORV_StrToUpper */
KORV_API char* KORV_StrToLower(char* text);

/** KORV_StrToWUpper converts a zero-terminated wide text to upper case in place, character by
 * character, with towupper() and the LC_CTYPE locale of the host.
 *
 * @param[in,out] text  the text
 * @return `text` */
KORV_API wchar_t* KORV_StrToWUpper(wchar_t* text);

/** KORV_StrToWLower does the same as KORV_StrToWUpper, but converts with towlower().
 * @copydetails KORV_StrToWUpper */
KORV_API wchar_t* KORV_StrToWLower(wchar_t* text);

/** toportwupper converts a lower-case ASCII letter to upper case, whatever the locale.
 *
 * @param code  a character code
 * @return the converted code; any other code is returned unchanged */
KORV_API int32_t toportwupper(int32_t code);

/** toportwlower converts an upper-case ASCII letter to lower case, whatever the locale.
 *
 * @param code  a character code
 * @return the converted code; any other code is returned unchanged */
KORV_API int32_t toportwlower(int32_t code);

/** StringWCaseCompare compares two zero-terminated wide texts without regard to case, with
 * towlower() and the LC_CTYPE locale of the host.
 *
 * If exactly one text is an empty string, no characters are compared. The result then comes from
 * the last pair of characters that this function compared in an earlier call in the same thread,
 * whether they were equal or not: minus the lower-case character of `second` if `first` is empty,
 * the lower-case character of `first` if `second` is empty. The result is 0 if this function has
 * not compared any characters in this thread.
 *
 * @param first   a text
 * @param second  another text
 * @return 0 for equal texts; at the first difference, the lower-case character of `first` minus
 *         that of `second`; if one text is a non-empty prefix of the other, the last common
 *         character in lower case, negated if `first` is the shorter text */
KORV_API int32_t StringWCaseCompare(const wchar_t* first, const wchar_t* second);

/** StringWNCaseCompare does the same as StringWCaseCompare for at most `count` characters.
 *
 * It keeps a last pair of its own, which is not that of StringWCaseCompare.
 *
 * @param first   a text
 * @param second  another text
 * @param count   characters to compare at most. 0 gives 0. A negative count compares none: the
 *                result is 0 if both texts are empty strings, minus the last character of `second`
 *                in the remembered pair if only `first` is empty, and otherwise the last character
 *                of `first` in that pair
 * @return 0 if the first `count` characters are equal; otherwise as StringWCaseCompare */
KORV_API int32_t StringWNCaseCompare(const wchar_t* first, const wchar_t* second, int32_t count);

/* ---- Parsing --------------------------------------------------------------------------------- */

/** KORV_GetNextElement copies one element of a zero-terminated list.
 *
 * Leading spaces are skipped. An element that begins with a double quote extends to the next double
 * quote that is not escaped, or, if there is none, to the end of the list. It keeps its case, its
 * spaces and both quotes and may contain delimiters; the text between its closing quote and the
 * delimiter is dropped. Any other element is converted to upper case (by the locale of the host)
 * and loses its trailing spaces. A quoted element that is never closed also loses its trailing
 * spaces, but keeps its case. A backslash is dropped and escapes a quote or backslash after it,
 * inside and outside quotes. It does not escape a delimiter. An element may be an empty string, for
 * example between two delimiters; if the delimiter is a space, empty elements are skipped.
 *
 * `output` is written without bound: give it room for the longest element and a terminator, at most
 * the characters of `source` plus one.
 *
 * A loop over a list must test for -2 and -3 before it uses the element, because `output` then
 * holds an earlier element or an unterminated one. For a list that ends with a delimiter, such as
 * "a,b,", the call for "b" returns an index, and the next call returns -2.
 *
 * @code
 * wchar_t element[32];
 * uint32_t length;
 * int32_t next = 0;
 * do {
 *     next = KORV_GetNextElement(L"id, \"Last Name\", city,", element, &length, L',', 0,
 *                                (uint32_t)next);
 *     if (next < -1) break; // -2: no further element; -3: a misplaced quote
 *     printf("%ls\n", element); // ID, then "Last Name" with its quotes, then CITY
 * } while (next >= 0);
 * @endcode
 *
 * @param      source     the list
 * @param[out] output     the element, zero-terminated; must not overlap `source`
 * @param[out] length     the element's length in characters
 * @param      delimiter  ends an element; with 0, the list is one element
 * @param      ignored    not used; it does not limit `output`
 * @param      start      index at which the element begins: 0, then each result. An index past the
 *                        terminator is not detected
 * @return the index after the delimiter
 * @retval -1 the element was the last
 * @retval -2 there is no element: *length is 0, `output` is left alone
 * @retval -3 an unescaped double quote within an unquoted element, or after the closing quote of a
 *            quoted one: `output` and *length hold what was copied so far, not terminated */
KORV_API int32_t KORV_GetNextElement(const wchar_t* source, wchar_t* output, uint32_t* length,
                                     wchar_t delimiter, uint32_t ignored, uint32_t start);

/** GetKeyValue copies the value from a text of the form key, separator, value: the text after the
 * first separator and any spaces that follow it, without trailing spaces.
 *
 * @param      source     zero-terminated text
 * @param[out] output     the value, zero-terminated; room for maxCount + 1 bytes, never less than 2
 * @param      maxCount   the largest number of bytes to copy; with less than 1, one byte is copied
 * @param[out] length     may be NULL; the bytes copied before trailing spaces were cut
 * @param      separator  the character after the key
 * @retval KORV_SUCCESS copied
 * @retval KORV_FAILURE source or output is NULL, the separator is zero or missing, or only spaces,
 *                      or nothing, follow it (nothing is written) */
KORV_API int32_t GetKeyValue(const char* source, char* output, int32_t maxCount, uint32_t* length,
                             char separator);

/** TrimSourceW removes the characters of a set from a text.
 *
 * @param[in,out] source      the text, zero-terminated. With a mode of 1 it is replaced by the
 *                            result. Otherwise it stays cut: the delimiter after each piece has
 *                            become zero
 * @param[out]    length      with a mode of 1 the characters of the result, otherwise left alone
 * @param         delimiters  the set, zero-terminated
 * @param[out]    work        the result, zero-terminated; room for all of `source` and its
 *                            terminator; must not overlap `source`
 * @param         mode        exactly 1 copies the result back to `source`
 * @retval KORV_SUCCESS trimmed
 * @retval KORV_FAILURE source is NULL (nothing is written) */
KORV_API int32_t TrimSourceW(wchar_t* source, uint32_t* length, const wchar_t* delimiters,
                             wchar_t* work, uint8_t mode);

/** NormalizeColName upper-cases a zero-terminated column name in place (by the locale of the host)
 * unless it is quoted.
 *
 * @param[in,out] name       the name. It is quoted if it begins with a double quote and has a
 *                           second one among its first `maxLength` characters; otherwise all of
 *                           it is converted
 * @param         maxLength  how many characters are searched for the second quote; it does not
 *                           limit the conversion
 * @retval KORV_SUCCESS always */
KORV_API int32_t NormalizeColName(wchar_t* name, int32_t maxLength);

/* ---- Unicode units --------------------------------------------------------------------------- */

/** KORV_Utf16ToUtf32 converts UTF-16 units to wide text, through the companion library
 * (Convert16To32). No terminator is added.
 *
 * @param      source       UTF-16 units
 * @param      sourceBytes  bytes of the source; a partial unit at its end is left out
 * @param[out] target       room for `targetBytes` bytes, which must not overlap the source; on
 *                          failure it may hold the part converted so far
 * @param      targetBytes  bytes of the target; a partial unit at its end is left out
 * @param[out] count        the count that the companion library reports, unchanged (the stand-in
 *                          counts target units); left alone on failure
 * @retval KORV_SUCCESS converted
 * @return otherwise the companion library's status, see Convert16To32. A negative size of one unit
 *         or more gives CNV_BAD_LENGTH in the stand-in */
KORV_API int32_t KORV_Utf16ToUtf32(const uint16_t* source, int32_t sourceBytes, wchar_t* target,
                                   int32_t targetBytes, uint32_t* count);

/** KORV_Utf32ToUtf16 converts wide text to UTF-16 units, through the companion library
 * (Convert32To16). No terminator is added.
 *
 * @param      source       wide text
 * @param      sourceBytes  bytes of the source; a partial unit at its end is left out
 * @param[out] target       room for `targetBytes` bytes, which must not overlap the source; on
 *                          failure it may hold the part converted so far
 * @param      targetBytes  bytes of the target; a partial unit at its end is left out. Unsigned,
 *                          unlike in KORV_Utf16ToUtf32: 2 GiB and more are valid
 * @param[out] count        the count that the companion library reports, unchanged (the stand-in
 *                          counts target units); left alone on failure
 * @retval KORV_SUCCESS converted
 * @return otherwise the companion library's status, see Convert32To16. A negative source size of
 *         one unit or more gives CNV_BAD_LENGTH in the stand-in */
KORV_API int32_t KORV_Utf32ToUtf16(const wchar_t* source, int32_t sourceBytes, uint16_t* target,
                                   uint32_t targetBytes, uint32_t* count);

/** KORVGetXMLCHARFromWCHAR narrows a zero-terminated wide text of n characters to n 16-bit units
 * and a zero unit, keeping the low 16 bits of each character; no surrogate pairs are formed. A
 * character whose low 16 bits are 0, such as U+10000, becomes a zero unit and so ends the result
 * early.
 *
 * @param         text      the text
 * @param[in,out] units     with `allocate` overwritten with a new block, which the caller releases
 *                          with free(); otherwise it points to a buffer of at least 2 * n + 2 bytes
 *                          that does not overlap the text
 * @param         allocate  other than 0: allocate
 * @retval KORV_SUCCESS narrowed
 * @retval KORV_FAILURE an empty string (nothing is written), or no memory (*units is NULL) */
KORV_API int32_t KORVGetXMLCHARFromWCHAR(const wchar_t* text, uint16_t** units, uint8_t allocate);

/* ---- Byte order and bit order ---------------------------------------------------------------- */

/** RTENDIAN_SWAP_UINT reverses the bytes of a 32-bit value.
 *
 * @param value  the value
 * @return the value with its bytes in reverse order */
KORV_API uint32_t RTENDIAN_SWAP_UINT(uint32_t value);

/** RTENDIAN_SWAP_USHORT reverses the bytes of a 16-bit value.
 *
 * @param value  the value
 * @return the value with its bytes in reverse order */
KORV_API uint16_t RTENDIAN_SWAP_USHORT(uint16_t value);

/** SwapBytes_2 swaps the bytes of each 16-bit unit of a zero-terminated string in place.
 *
 * @param[in,out] units  the string
 * @return `units` */
KORV_API uint16_t* SwapBytes_2(uint16_t* units);

/** SwapBytes_4 swaps the bytes of each 32-bit unit of a zero-terminated string in place.
 *
 * @param[in,out] units  the string
 * @return `units` */
KORV_API uint32_t* SwapBytes_4(uint32_t* units);

/** SwapnBytes_2 does the same as SwapBytes_2, but also stops after `bytes` bytes.
 *
 * @param[in,out] units  the string; it needs no terminator if it has at least `bytes` bytes
 * @param         bytes  a unit that is only partly within this count is swapped as a whole; 0 or
 *                       less swaps nothing
 * @return `units` */
KORV_API uint16_t* SwapnBytes_2(uint16_t* units, int32_t bytes);

/** SwapnBytes_4 does the same as SwapBytes_4, but also stops after `bytes` bytes.
 *
 * @param[in,out] units  the string; it needs no terminator if it has at least `bytes` bytes
 * @param         bytes  a unit that is only partly within this count is swapped as a whole; 0 or
 *                       less swaps nothing
 * @return `units` */
KORV_API uint32_t* SwapnBytes_4(uint32_t* units, int32_t bytes);

/** RTBITFIELD_FLIP stores bytes with their bits in reverse order. Each target byte is cleared
 * before its source byte is read, so flipping in place yields zeros.
 *
 * @param[out] target  room for `count` bytes; must not overlap `source`
 * @param      source  `count` bytes
 * @param      count   bytes */
KORV_API void RTBITFIELD_FLIP(uint8_t* target, const uint8_t* source, uint32_t count);

/** KORV_IsPlatformBigEndian tells the byte order of the platform.
 *
 * @return 1 on a big-endian platform and 0 on a little-endian one */
KORV_API int32_t KORV_IsPlatformBigEndian(void);

#ifdef __cplusplus
}
#endif

#endif
