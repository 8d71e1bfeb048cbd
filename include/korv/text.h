/** @file
 * Text: case conversion and comparison, parsing helpers, Unicode units, byte order and bit
 * order. */
#ifndef KORV_TEXT_H
#define KORV_TEXT_H

#include "korv/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Case ------------------------------------------------------------------------------------ */

/** KORV_StrToUpper converts a zero-terminated text in place, byte by byte, by the LC_CTYPE locale
 * of the host: each byte goes to toupper as a signed char, and the low byte of the answer is kept.
 *
 * @param[in,out] text  the text
 * @return `text` */
KORV_API char* KORV_StrToUpper(char* text);

/** KORV_StrToLower is KORV_StrToUpper by tolower. @copydetails KORV_StrToUpper */
KORV_API char* KORV_StrToLower(char* text);

/** KORV_StrToWUpper converts a zero-terminated wide text in place, character by character, by
 * towupper and the LC_CTYPE locale of the host.
 *
 * @param[in,out] text  the text
 * @return `text` */
KORV_API wchar_t* KORV_StrToWUpper(wchar_t* text);

/** KORV_StrToWLower is KORV_StrToWUpper by towlower. @copydetails KORV_StrToWUpper */
KORV_API wchar_t* KORV_StrToWLower(wchar_t* text);

/** toportwupper converts the code of a lower-case ASCII letter to that of its upper case, whatever
 * the locale.
 *
 * @param code  a character code
 * @return the converted code; every other code as it is */
KORV_API int32_t toportwupper(int32_t code);

/** toportwlower converts the code of an upper-case ASCII letter to that of its lower case, whatever
 * the locale.
 *
 * @param code  a character code
 * @return the converted code; every other code as it is */
KORV_API int32_t toportwlower(int32_t code);

/** StringWCaseCompare orders two zero-terminated wide texts without regard to case (towlower, by
 * the locale of the host).
 *
 * When no character was compared because one text is empty, the result is made of the pair that
 * this function compared last in the same thread, in whichever call, whether they were equal or
 * not: of its character of `second`, when `first` is empty, and of `first` otherwise. It is 0 in a
 * thread that has compared none.
 *
 * @param first   a text
 * @param second  another text
 * @return 0 for equal texts; at the first difference the lowered character of `first` minus that of
 *         `second`; and when one text is a prefix of the other, the lowered last common character,
 *         negated when `first` is the shorter */
KORV_API int32_t StringWCaseCompare(const wchar_t* first, const wchar_t* second);

/** StringWNCaseCompare is StringWCaseCompare for at most `count` characters.
 *
 * It remembers its last common character on its own account, apart from StringWCaseCompare.
 *
 * @param first   a text
 * @param second  another text
 * @param count   characters; 0 gives 0; a negative count compares nothing: unless both texts are
 *                empty, the result is made of the remembered pair
 * @return as StringWCaseCompare */
KORV_API int32_t StringWNCaseCompare(const wchar_t* first, const wchar_t* second, int32_t count);

/* ---- Parsing --------------------------------------------------------------------------------- */

/** KORV_GetNextElement cuts one element out of a zero-terminated list.
 *
 * Leading spaces are skipped. An element that opens with a double quote ends at the next one: it
 * keeps its case, its spaces and both quotes, may hold delimiters, and what follows it up to the
 * delimiter is dropped. Any other element is upper-cased (by the locale of the host) and loses its
 * trailing spaces; so does, its case kept, a quoted one that is never closed. A backslash is
 * dropped and makes a quote or backslash behind it ordinary, inside and outside quotes; a delimiter
 * it does not escape.
 *
 * `output` is written without bound: give it room for the longest element and a terminator, at most
 * the characters of `source` plus one.
 *
 * @code
 * wchar_t element[32];
 * uint32_t length;
 * int32_t next = 0;
 * while (next >= 0) {
 *     next = KORV_GetNextElement(L"id, \"Last Name\", city", element, &length, L',', 0,
 *                                (uint32_t)next);
 *     // ID, then "Last Name" with its quotes, then CITY
 * }
 * @endcode
 *
 * @param      source     the list
 * @param[out] output     the element, zero-terminated; must not overlap `source`
 * @param[out] length     the element's length in characters
 * @param      delimiter  ends an element; zero never occurs
 * @param      ignored    bounds nothing
 * @param      start      index where the element begins: 0, then each result; one behind the
 *                        terminator is not detected
 * @return the index behind the delimiter
 * @retval -1 the element was the last
 * @retval -2 there is no element: *length is 0, `output` is left alone
 * @retval -3 a quote where none may stand: `output` and *length hold what was copied so far, not
 *            terminated */
KORV_API int32_t KORV_GetNextElement(const wchar_t* source, wchar_t* output, uint32_t* length,
                                     wchar_t delimiter, uint32_t ignored, uint32_t start);

/** GetKeyValue takes the value out of a text of the form key, separator, value: what follows the
 * first separator and the spaces behind it, without trailing spaces.
 *
 * @param      source     zero-terminated text
 * @param[out] output     the value, zero-terminated; room for maxCount + 1 bytes, never less than 2
 * @param      maxCount   bytes of the value that are taken at most, but always one
 * @param[out] length     may be empty; the bytes copied before trailing spaces were cut
 * @param      separator  behind the key
 * @retval KORV_SUCCESS copied
 * @retval KORV_FAILURE source or output is empty, the separator is zero or missing, or the value is
 *                      empty (nothing is written) */
KORV_API int32_t GetKeyValue(const char* source, char* output, int32_t maxCount, uint32_t* length,
                             char separator);

/** TrimSourceW takes the characters of a set out of a text.
 *
 * @param[in,out] source      the text, zero-terminated; replaced by the result with a mode of 1,
 *                            otherwise left cut: the delimiter behind each piece is zero
 * @param[out]    length      with a mode of 1 the characters of the result, otherwise left alone
 * @param         delimiters  the set, zero-terminated
 * @param[out]    work        the result, zero-terminated; room for all of source and its
 *                            terminator, apart from it
 * @param         mode        exactly 1 copies the result back to `source`
 * @retval KORV_SUCCESS trimmed
 * @retval KORV_FAILURE source is empty (nothing is written) */
KORV_API int32_t TrimSourceW(wchar_t* source, uint32_t* length, const wchar_t* delimiters,
                             wchar_t* work, uint8_t mode);

/** NormalizeColName upper-cases a zero-terminated column name in place (by the locale of the host)
 * unless it is quoted.
 *
 * @param[in,out] name       the name; quoted when it begins with a double quote and has a second
 *                           one among its first `maxLength` characters
 * @param         maxLength  characters
 * @retval KORV_SUCCESS always */
KORV_API int32_t NormalizeColName(wchar_t* name, int32_t maxLength);

/* ---- Unicode units --------------------------------------------------------------------------- */

/** KORV_Utf16ToUtf32 hands a conversion of UTF-16 units to wide text to the companion library
 * (Convert16To32). No terminator is added.
 *
 * @param      source       UTF-16 units
 * @param      sourceBytes  bytes of the source; a partial unit at its end is left out
 * @param[out] target       room for `targetBytes` bytes; on failure it may hold the part converted
 *                          so far
 * @param      targetBytes  bytes of the target; a partial unit at its end is left out
 * @param[out] count        the count that the companion reports, unchanged (the one built here
 *                          counts target units); left alone on failure
 * @retval KORV_SUCCESS converted
 * @return otherwise the companion's status */
KORV_API int32_t KORV_Utf16ToUtf32(const uint16_t* source, int32_t sourceBytes, wchar_t* target,
                                   int32_t targetBytes, uint32_t* count);

/** KORV_Utf32ToUtf16 hands a conversion of wide text to UTF-16 units to the companion library
 * (Convert32To16). No terminator is added.
 *
 * @param      source       wide text
 * @param      sourceBytes  bytes of the source; a partial unit at its end is left out
 * @param[out] target       room for `targetBytes` bytes; on failure it may hold the part converted
 *                          so far
 * @param      targetBytes  bytes of the target; a partial unit at its end is left out
 * @param[out] count        the count that the companion reports, unchanged (the one built here
 *                          counts target units); left alone on failure
 * @retval KORV_SUCCESS converted
 * @return otherwise the companion's status */
KORV_API int32_t KORV_Utf32ToUtf16(const wchar_t* source, int32_t sourceBytes, uint16_t* target,
                                   uint32_t targetBytes, uint32_t* count);

/** KORVGetXMLCHARFromWCHAR narrows a zero-terminated wide text of n characters to n 16-bit units
 * and a zero unit, keeping the low 16 bits of each character; no surrogate pairs are formed.
 *
 * @param         text      the text
 * @param[in,out] units     with `allocate` a new block, which the caller releases with free();
 *                          otherwise it points to a buffer of at least 2 * n + 2 bytes that does
 *                          not overlap the text
 * @param         allocate  other than 0: allocate
 * @retval KORV_SUCCESS narrowed
 * @retval KORV_FAILURE an empty text (nothing is written), or no memory (*units is null) */
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

/** SwapnBytes_2 is SwapBytes_2 that also stops after `bytes` bytes, whichever comes first.
 *
 * @param[in,out] units  the string
 * @param         bytes  a unit that this count cuts through is swapped as a whole; 0 or less swaps
 *                       nothing
 * @return `units` */
KORV_API uint16_t* SwapnBytes_2(uint16_t* units, int32_t bytes);

/** SwapnBytes_4 is SwapBytes_4 that also stops after `bytes` bytes, whichever comes first.
 *
 * @param[in,out] units  the string
 * @param         bytes  a unit that this count cuts through is swapped as a whole; 0 or less swaps
 *                       nothing
 * @return `units` */
KORV_API uint32_t* SwapnBytes_4(uint32_t* units, int32_t bytes);

/** RTBITFIELD_FLIP stores bytes with their bits in reverse order. Each target byte is cleared
 * before its source byte is read, so flipping in place yields zeros.
 *
 * @param[out] target  room for `count` bytes
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
