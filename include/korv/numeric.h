/** @file
 * Numeric text and masking primitives: fixed-width digit fields, keyed transposition of digits,
 * reversal, half-swapping and random values.
 *
 * A digit field is a run of decimal digits of a given width, most significant first, with leading
 * zeros, without sign or point. A function whose name ends in W is the wide counterpart of the
 * function of the same name without W. The comments of PXLongToNumW, PXNumToLongW and
 * KORVRevStringW say what else differs.
 *
 * @since 1.0 */
#ifndef KORV_NUMERIC_H
#define KORV_NUMERIC_H

#include "korv/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** 256 blanks and a terminator. */
KORV_API extern const char PXSpaces[257];
/** 256 wide blanks and a terminator. */
KORV_API extern const wchar_t PXSpacesW[257];

/* ---- Writing and reading digit fields -------------------------------------------------------- */

/** PXLongToNum writes a number as a field of `width` digits: exactly that many bytes, never a
 * terminator.
 *
 * If the value needs more digits, the field holds the low-order ones. A negative value gets no
 * sign: each digit d of its magnitude is written as the character of code 0x30 - d.
 *
 * @param      value  the number
 * @param      width  digits of the field; with 0 or less nothing is written
 * @param[out] field  room for `width` bytes
 * @retval KORV_SUCCESS written
 * @retval KORV_FAILURE the value needs more than `width` digits (the field is written); with a
 *                      width of 0 or less, any value but 0 */
KORV_API int32_t PXLongToNum(int32_t value, int16_t width, char* field);

/** PXIntToNum does the same as PXLongToNum and writes a terminator after the digits.
 *
 * @code
 * char field[9];
 * PXIntToNum(42, 8, field); // 00000042
 * @endcode
 *
 * @param      value  the number
 * @param      width  digits of the field; with 0 only the terminator is written, with less nothing
 * @param[out] field  room for width + 1 bytes
 * @retval KORV_SUCCESS written
 * @retval KORV_FAILURE the value needs more than `width` digits (the field is written); with a
 *                      width of 0 or less, any value but 0 */
KORV_API int32_t PXIntToNum(int32_t value, int16_t width, char* field);

/** PXLongToNumW is the wide counterpart of PXIntToNum: it terminates the field, unlike
 * PXLongToNum.
 *
 * @param      value  the number
 * @param      width  digits of the field; with 0 only the terminator is written, with less nothing
 * @param[out] field  room for width + 1 characters
 * @retval KORV_SUCCESS written
 * @retval KORV_FAILURE the value needs more than `width` digits (the field is written); with a
 *                      width of 0 or less, any value but 0 */
KORV_API int32_t PXLongToNumW(int32_t value, int16_t width, wchar_t* field);

/** PXIntToNumW is another name of PXLongToNumW. @copydetails PXLongToNumW */
KORV_API int32_t PXIntToNumW(int32_t value, int16_t width, wchar_t* field);

/** PXNumToLong reads `digits` digits from the start of a field, and requires that only blanks
 * follow them.
 *
 * The low 32 bits of the number are kept, as a signed number: 2147483648 and above wrap. The bytes
 * after the digits are compared with PXSpaces, its terminator included: 257 of them are accepted
 * only if the last one is zero, and more than 257 never.
 *
 * A field of at most 12 digits without a tail may be read as a whole, also the bytes after a
 * character that is not a digit. The bytes read are always among the first `digits` bytes and on
 * one page of memory. If the array is shorter, memory checkers report the read: valgrind.supp in
 * the folder share/korv-support suppresses such reports.
 *
 * @param      field   the characters
 * @param      digits  digits to read; with 0 or less no digit is read, and the number is 0
 * @param      width   bytes of the field; if `digits` is larger, the field has `digits` bytes. The
 *                     digits must be followed by `width` - `digits` blanks, also with a negative
 *                     `digits`
 * @param[out] value   the number; left alone on failure
 * @retval KORV_SUCCESS read
 * @retval KORV_FAILURE a character is not a decimal digit, or the tail is not blank */
KORV_API int32_t PXNumToLong(const char* field, int16_t digits, int16_t width, int32_t* value);

/** KORVCharNumToInt is another name of PXNumToLong. @copydetails PXNumToLong */
KORV_API int32_t KORVCharNumToInt(const char* field, int16_t digits, int16_t width, int32_t* value);

/** PXNumToLongW is the wide counterpart of PXNumToLong. Unlike PXNumToLong, it accepts exactly 256
 * blanks and a terminator as the tail with any larger width: what follows the terminator is not
 * compared.
 *
 * The digits are read one by one. The tail is read in blocks of 16 characters within `width` and
 * within one page of memory, also after a character that is not a blank; see PXNumToLong about
 * memory checkers.
 *
 * @param      field   the characters
 * @param      digits  digits to read; with 0 or less no digit is read, and the number is 0
 * @param      width   characters of the field; if `digits` is larger, the field has `digits`
 *                     characters. The digits must be followed by `width` - `digits` blanks, also
 *                     with a negative `digits`
 * @param[out] value   the number; left alone on failure
 * @retval KORV_SUCCESS read
 * @retval KORV_FAILURE a character is not a decimal digit, or the tail is not blank */
KORV_API int32_t PXNumToLongW(const wchar_t* field, int16_t digits, int16_t width, int32_t* value);

/* ---- Transposition --------------------------------------------------------------------------- */

/** PXTransposeNum disguises a number of `length` digits.
 *
 * Unless `shift` is 0, the digit at position i, counted from 0, first becomes (digit + shift + i)
 * modulo 10. While the resulting digits add up to 0, this is repeated on them, so that the shifted
 * number is never all zeros. Then the digits are transposed in groups of four by one of 23
 * permutations. The remainder of the key divided by 23 selects it; 23 is added to a negative
 * remainder.
 *
 * Lengths 4, 8 and 12 are fully defined. At other lengths digits may be lost: in an incomplete
 * group a position that names a digit beyond the last becomes zero (the code 0). Every character
 * counts as a digit code - 0x30; a non-digit or a negative shift can give characters 0x27 to 0x2F.
 * With a shift of 0, characters that are not digits are transposed unchanged.
 *
 * If the input has a character of code 0, `output` is left as it was from that position on, with
 * KORV_SUCCESS. Characters after it are not shifted, but may move before it within its group. As
 * the first character it is one like any other if `shift` is not 0.
 *
 * @code
 * char digits[] = "123456789012";
 * PXTransposeNum(digits, digits, 12, 5, 3); // 408628640642
 * @endcode
 *
 * @param      input   `length` characters; need not be terminated
 * @param[out] output  room for `length` characters, not terminated; may be `input`
 * @param      length  characters, 0 to 12; 0 writes nothing
 * @param      key     chooses the permutation
 * @param      shift   how far the first digit moves; 0 moves none
 * @retval KORV_SUCCESS written
 * @retval KORV_FAILURE the length is above 12 or negative, or the shifted digits would add up to 0
 *                      after every repetition, such as the single digit 0 with a shift of 10;
 *                      nothing is written */
KORV_API int32_t PXTransposeNum(const char* input, char* output, int16_t length, int32_t key,
                                int16_t shift);

/** PXTransposeNumW is the wide counterpart of PXTransposeNum. @copydetails PXTransposeNum */
KORV_API int32_t PXTransposeNumW(const wchar_t* input, wchar_t* output, int16_t length, int32_t key,
                                 int16_t shift);

/** PXGetPermutation writes a permutation of 1 to `count`, chosen by a key: key 7, count 4 gives
 * 4 2 3 1.
 *
 * Each step divides the whole key by the count of numbers that are left, and takes the number whose
 * index, counted from 0, is the remainder. If that is negative, the count is added to it.
 *
 * @param      key     chooses the permutation
 * @param      count   numbers, 1 to 16; with any other count nothing is written
 * @param[out] output  room for `count` 16-bit numbers */
KORV_API void PXGetPermutation(int32_t key, int32_t count, int16_t* output);

/* ---- Reversal, shuffle, random values -------------------------------------------------------- */

/** KORVRevString reverses `length` bytes, including zeros.
 *
 * @param[in,out] buffer  the bytes
 * @param         length  bytes; below 2 nothing changes
 * @return `buffer` */
KORV_API char* KORVRevString(char* buffer, int32_t length);

/** KORVRevStringW reverses a zero-terminated wide text. Unlike KORVRevString, it takes no length
 * and returns a status.
 *
 * @param[in,out] text  the text
 * @retval KORV_SUCCESS always */
KORV_API int32_t KORVRevStringW(wchar_t* text);

/** KORVReverseNum reverses the decimal digits of a number: trailing zeros are lost, and a result of
 * 2^64 or more wraps.
 *
 * @param[in,out] value  the number
 * @retval KORV_SUCCESS always */
KORV_API int32_t KORVReverseNum(uint64_t* value);

/** KORVShuffle exchanges the two halves of a zero-terminated wide text: abcd becomes cdab.
 *
 * If the text has an odd length, its last character stays in place. Despite the name, nothing is
 * random: a second call restores the text.
 *
 * @param[in,out] text  the text
 * @retval KORV_SUCCESS always */
KORV_API int32_t KORVShuffle(wchar_t* text);

/** KORVRandomValue draws a value from rand(), the generator of the C library. It is not for
 * secrets.
 *
 * Two calls that reseed within the same second return the same value for the same range.
 *
 * @note Threads: the generator belongs to the whole process; call from one thread at a time.
 *
 * @param range   the number of possible values; its sign is ignored. 0 gives 0
 * @param reseed  exactly 1 first seeds the generator with the calendar time
 * @return a value of 0 to |range| - 1 */
KORV_API int32_t KORVRandomValue(int32_t range, uint8_t reseed);

#ifdef __cplusplus
}
#endif

#endif
