/* Text: case conversion and comparison, parsing helpers, Unicode units, byte order and bit order.
 * */
#ifndef KORV_TEXT_H
#define KORV_TEXT_H

#include "korv/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Case ------------------------------------------------------------------------------------ */

/* The four converters change a zero-terminated text in place, character by character, by the
 * LC_CTYPE locale of the host, and return their argument. The narrow ones hand each byte to toupper
 * or tolower as a signed char and keep the low byte of the answer. */
KORV_API char* KORV_StrToUpper(char* text);
KORV_API char* KORV_StrToLower(char* text);
KORV_API wchar_t* KORV_StrToWUpper(wchar_t* text);
KORV_API wchar_t* KORV_StrToWLower(wchar_t* text);

/* toportwupper and toportwlower convert one character code: the 26 ASCII letters change, everything
 * else is returned as it is, whatever the locale. */
KORV_API int32_t toportwupper(int32_t code);
KORV_API int32_t toportwlower(int32_t code);

/* StringWCaseCompare orders two zero-terminated wide texts without regard to case (towlower, by the
 * locale of the host). Returns 0 for equal texts; at the first difference the lowered character of
 * `first` minus that of `second`; and when one text is a prefix of the other, the lowered last
 * common character, negated when `first` is the shorter.
 *
 * When no character was compared because one text is empty, the "last common character" is that of
 * this function's previous call in the same thread: of `second`, when `first` is empty, and of
 * `first` otherwise. It is 0 in a thread that has compared none. */
KORV_API int32_t StringWCaseCompare(const wchar_t* first, const wchar_t* second);

/* StringWNCaseCompare is StringWCaseCompare for at most `count` characters. A count of 0 gives 0. A
 * negative count compares nothing: unless both texts are empty, the result is the remembered
 * character. It remembers on its own account, apart from StringWCaseCompare. */
KORV_API int32_t StringWNCaseCompare(const wchar_t* first, const wchar_t* second, int32_t count);

/* ---- Parsing --------------------------------------------------------------------------------- */

/* KORV_GetNextElement cuts the element that begins at index `start` out of the zero-terminated list
 * `source` and writes it, zero-terminated, to `output`, with its length in characters to *length.
 * Start with 0, go on with each result; a start behind the terminator is not detected.
 *
 * Leading spaces are skipped. An element that opens with a double quote ends at the next one: it
 * keeps its case, its spaces and both quotes, may hold delimiters, and what follows it up to the
 * delimiter is dropped. Any other element is upper-cased (by the locale of the host) and loses its
 * trailing spaces; so does, its case kept, a quoted one that is never closed. A backslash is
 * dropped and makes a quote or backslash behind it ordinary, inside and outside quotes; a delimiter
 * it does not escape. A zero delimiter never occurs.
 *
 * `output` is written without bound: give it room for the longest element and a terminator, at most
 * the characters of `source` plus one. `ignored` bounds nothing.
 *
 * Returns the index behind the delimiter; -1 when the element was the last; -2 when there is no
 * element (*length is 0, `output` is left alone); -3 at a quote where none may stand (`output` and
 * *length hold what was copied so far, not terminated). */
KORV_API int32_t KORV_GetNextElement(const wchar_t* source, wchar_t* output, uint32_t* length,
                                     wchar_t delimiter, uint32_t ignored, uint32_t start);

/* GetKeyValue takes the value out of a text of the form key, separator, value: what follows the
 * first separator and the spaces behind it, at most `maxCount` bytes (but always one), without
 * trailing spaces, zero-terminated. `output` has room for maxCount + 1 bytes, and never less than
 * 2.
 *
 * *length, unless `length` is empty, is the number of bytes copied before trailing spaces were cut.
 * Returns 0; -1 when source or output is empty, the separator is zero or missing, or the value is
 * empty (nothing is written). */
KORV_API int32_t GetKeyValue(const char* source, char* output, int32_t maxCount, uint32_t* length,
                             char separator);

/* TrimSourceW collects `source` without the characters of the zero-terminated set `delimiters` in
 * `work`, which has room for all of source and its terminator. With a mode of exactly 1 the result
 * is also copied back to `source` and its length in characters stored in *length. With any other
 * mode *length is left alone, and `source` is left cut: the delimiter behind each piece is zero.
 * Returns 0, or -1 when source is empty. */
KORV_API int32_t TrimSourceW(wchar_t* source, uint32_t* length, const wchar_t* delimiters,
                             wchar_t* work, uint8_t mode);

/* NormalizeColName upper-cases a zero-terminated column name in place (by the locale of the host)
 * unless it begins with a double quote and has a second one among its first `maxLength` characters.
 * Returns 0. */
KORV_API int32_t NormalizeColName(wchar_t* name, int32_t maxLength);

/* ---- Unicode units --------------------------------------------------------------------------- */

/* KORV_Utf16ToUtf32 and KORV_Utf32ToUtf16 hand a conversion to the companion library (Convert16To32
 * and Convert32To16 of korv/datacnv.h). Sizes are in bytes; a partial unit at the end of a buffer
 * is left out. *count becomes the count that the companion reports, unchanged (the one built here
 * counts target units). No terminator is added.
 * Returns 0, or the companion's status (*count is left alone). */
KORV_API int32_t KORV_Utf16ToUtf32(const uint16_t* source, int32_t sourceBytes, wchar_t* target,
                                   int32_t targetBytes, uint32_t* count);
KORV_API int32_t KORV_Utf32ToUtf16(const wchar_t* source, int32_t sourceBytes, uint16_t* target,
                                   uint32_t targetBytes, uint32_t* count);

/* KORVGetXMLCHARFromWCHAR narrows a zero-terminated wide text of n characters to n 16-bit units and
 * a zero unit, keeping the low 16 bits of each character; no surrogate pairs are formed.
 *
 * With an `allocate` other than 0 *units becomes a new block that the caller releases with free();
 * otherwise *units points to a buffer of at least 2 * n + 2 bytes.
 * Returns 0; -1 for an empty text (nothing is written) or when memory runs out (*units is null). */
KORV_API int32_t KORVGetXMLCHARFromWCHAR(const wchar_t* text, uint16_t** units, uint8_t allocate);

/* ---- Byte order and bit order ---------------------------------------------------------------- */

/* The value with its bytes in reverse order. */
KORV_API uint32_t RTENDIAN_SWAP_UINT(uint32_t value);
KORV_API uint16_t RTENDIAN_SWAP_USHORT(uint16_t value);

/* SwapBytes_2 and SwapBytes_4 swap the bytes of each unit of a zero-terminated string in place, and
 * return their argument. */
KORV_API uint16_t* SwapBytes_2(uint16_t* units);
KORV_API uint32_t* SwapBytes_4(uint32_t* units);

/* SwapnBytes_2 and SwapnBytes_4 also stop after `bytes` bytes, whichever comes first. A unit that
 * the byte count cuts through is swapped as a whole; a count of 0 or less swaps nothing. */
KORV_API uint16_t* SwapnBytes_2(uint16_t* units, int32_t bytes);
KORV_API uint32_t* SwapnBytes_4(uint32_t* units, int32_t bytes);

/* RTBITFIELD_FLIP stores each of `count` source bytes with its bits in reverse order. Each target
 * byte is cleared before its source byte is read, so flipping in place yields zeros. */
KORV_API void RTBITFIELD_FLIP(uint8_t* target, const uint8_t* source, uint32_t count);

/* KORV_IsPlatformBigEndian returns 1 on a big-endian platform and 0 on a little-endian one. */
KORV_API int32_t KORV_IsPlatformBigEndian(void);

#ifdef __cplusplus
}
#endif

#endif
