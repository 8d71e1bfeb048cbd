/* Numeric text and masking primitives: fixed-width digit fields, keyed transposition of digits,
 * reversal, half-swapping and random values.
 *
 * A digit field is a run of decimal digits of a given width, most significant first, with leading
 * zeros, without sign or point. Functions ending in W are the wide twins of those without.
 */
#ifndef KORV_NUMERIC_H
#define KORV_NUMERIC_H

#include "korv/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* 256 blanks and a terminator, in both widths. */
KORV_API extern const char PXSpaces[257];
KORV_API extern const wchar_t PXSpacesW[257];

/* ---- Writing and reading digit fields -------------------------------------------------------- */

/* PXLongToNum writes `value` as a field of `width` digits: exactly that many bytes, never a
 * terminator. A value that needs more digits leaves its low-order ones in the field. A negative
 * value gets no sign: each digit d of its magnitude is written as the character of code 0x30 - d. A
 * width of 0 or less writes no digit.
 * Returns 0, or -1 when the value needs more than `width` digits (the field is written). */
KORV_API int32_t PXLongToNum(int32_t value, int16_t width, char* field);

/* PXIntToNum is PXLongToNum with a terminator at position `width`; `field` has room for width + 1
 * bytes. A negative width writes nothing at all. */
KORV_API int32_t PXIntToNum(int32_t value, int16_t width, char* field);

/* PXLongToNumW and PXIntToNumW are the wide twins of PXIntToNum; both terminate the
 * field, which has room for width + 1 characters. */
KORV_API int32_t PXLongToNumW(int32_t value, int16_t width, wchar_t* field);
KORV_API int32_t PXIntToNumW(int32_t value, int16_t width, wchar_t* field);

/* PXNumToLong reads `digits` digits from the start of `field`, which is `width` bytes long
 * (`digits` bytes when that is more), and requires that only blanks follow them. Of the number the
 * low 32 bits are kept, as a signed number: 2147483648 and above wrap. A digit count of 0 or less
 * reads no digit and the value 0.
 *
 * The bytes behind the digits are compared with PXSpaces, its terminator included: 257 of them are
 * accepted only when the last is zero, more never.
 * Returns 0, or -1 when a digit is none or the tail is not blank (`value` is left alone). */
KORV_API int32_t PXNumToLong(const char* field, int16_t digits, int16_t width, int32_t* value);

/* KORVCharNumToInt is another name of PXNumToLong. */
KORV_API int32_t KORVCharNumToInt(const char* field, int16_t digits, int16_t width, int32_t* value);

/* PXNumToLongW is the wide twin of PXNumToLong, except that the comparison of the tail ends at a
 * terminator behind exactly 256 blanks: such a tail is accepted whatever the width. */
KORV_API int32_t PXNumToLongW(const wchar_t* field, int16_t digits, int16_t width, int32_t* value);

/* ---- Transposition --------------------------------------------------------------------------- */

/* PXTransposeNum disguises a number of `length` digits (not necessarily terminated) into `output`,
 * of the same length and not terminated. `output` may be `input`.
 *
 * Unless `shift` is 0, the digit at position i first moves forward by shift + i, modulo 10, and
 * this is repeated while the remainders add up to 0, so that a masked number is never all zeros.
 * Then the digits are transposed in groups of four by one of 23 permutations, chosen by key modulo
 * 23.
 *
 * Lengths 4, 8 and 12 are fully defined. At other lengths digits are
 * lost: in an incomplete group a position that names a digit
 * beyond the last becomes zero (the code 0). Every character counts as a digit code - 0x30; a
 * non-digit or a negative shift gives characters 0x27 to 0x2F. A zero code ends the number early,
 * unless it is the first character and shifted, which makes it a character like any other. Of a
 * negative key the remainder, when it is negative, counts plus 23.
 *
 * Returns 0; -1 when the length is above 12 or negative, or when the repetition would never end
 * (with nothing written, in every case). A length of 0 writes nothing. */
KORV_API int32_t PXTransposeNum(const char* input, char* output, int16_t length, int32_t key,
                                int16_t shift);

/* PXTransposeNumW is the wide twin of PXTransposeNum; lengths are in characters. */
KORV_API int32_t PXTransposeNumW(const wchar_t* input, wchar_t* output, int16_t length,
                                 int32_t key, int16_t shift);

/* PXGetPermutation fills `output`, `count` 16-bit numbers, with a permutation of 1 to `count`,
 * chosen by `key`: key 7, count 4 gives 4 2 3 1. A negative key is reduced to a remainder of 0 or
 * above at each step. A count below 1 or above 16 writes nothing. */
KORV_API void PXGetPermutation(int32_t key, int32_t count, int16_t* output);

/* ---- Reversal, shuffle, random values -------------------------------------------------------- */

/* KORVRevString reverses `length` bytes, zeros among them included, and returns `buffer`. A length
 * below 2 changes nothing. */
KORV_API char* KORVRevString(char* buffer, int32_t length);

/* KORVRevStringW reverses a zero-terminated wide text. Returns 0. */
KORV_API int32_t KORVRevStringW(wchar_t* text);

/* KORVReverseNum reverses the decimal digits of *value: trailing zeros are lost, and a result of
 * 2^64 or more wraps. Returns 0. */
KORV_API int32_t KORVReverseNum(uint64_t* value);

/* KORVShuffle exchanges the two halves of a zero-terminated wide text: abcd becomes cdab. The last
 * character of an odd length stays in place. Nothing is random about it: done twice it restores the
 * text. Returns 0. */
KORV_API int32_t KORVShuffle(wchar_t* text);

/* KORVRandomValue returns a value of 0 to |range| - 1 from the system library's generator, and 0
 * for a range of 0. A `reseed` of exactly 1 seeds the generator with the calendar time first. The
 * generator belongs to the whole process: call from one thread at a time. */
KORV_API int32_t KORVRandomValue(int32_t range, uint8_t reseed);

#ifdef __cplusplus
}
#endif

#endif
