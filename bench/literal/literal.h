/* The functions of the library step by step, as plainly as they can be written. */
#ifndef BENCH_LITERAL_H
#define BENCH_LITERAL_H

#include "korv/ctrlblk.h"
#include "korv/datatypes.h"
#include "korv/errors.h"
#include "korv/sort.h"

#ifdef __cplusplus
extern "C" {
#endif

int32_t literalCnvCtrlBlkFromIToX(const CtrlBlkI* source, CtrlBlkX* target);
int32_t literalCleanCtrlBlkX(CtrlBlkX* block);

int32_t literalErrorCapture(ErrorAnchor* anchor, uint32_t firstCode, uint32_t secondCode,
                            int16_t slotCount);
int32_t literalTokenCapture(ErrorAnchor* anchor, const void* value, int16_t dataType,
                            uint32_t tokenId); /* VARCHAR_SZ, WVARCHAR_SZ and INTEGER only */
int32_t literalTermErrors(ErrorAnchor* anchor);

int32_t literalGetIntDigitCount(int32_t value, uint32_t* counter);
int32_t literalGetLongLongDigitCount(int64_t value, uint32_t* counter);
void literalIntSYBToODBC(const int32_t* day, OdbcDate* date);
void literalIntODBCToSYB(const OdbcDate* date, int32_t* day);

int32_t literalLongToNum(int32_t value, int16_t width, char* field);
int32_t literalLongToNumW(int32_t value, int16_t width, wchar_t* field);
int32_t literalNumToLong(const char* field, int16_t digits, int16_t width, int32_t* value);
int32_t literalNumToLongW(const wchar_t* field, int16_t digits, int16_t width, int32_t* value);

int32_t literalTransposeNum(const char* input, char* output, int16_t length, int32_t key,
                            int16_t shift);
int32_t literalTransposeNumW(const wchar_t* input, wchar_t* output, int16_t length, int32_t key,
                             int16_t shift);
void literalGetPermutation(int32_t key, int32_t count, int16_t* output);
int32_t literalReverseNum(uint64_t* value);

char* literalStrToUpper(char* text);
wchar_t* literalStrToWUpper(wchar_t* text);
int32_t literalStringWCaseCompare(const wchar_t* first, const wchar_t* second);
int32_t literalGetNextElement(const wchar_t* source, wchar_t* output, uint32_t* length,
                              wchar_t delimiter, uint32_t ignored, uint32_t start);
int32_t literalTrimSourceW(wchar_t* source, uint32_t* length, const wchar_t* delimiters,
                           wchar_t* work, uint8_t mode);

int32_t literalUtf16ToUtf32(const uint16_t* source, int32_t sourceUnits, wchar_t* target,
                            int32_t targetUnits, uint32_t* count);
int32_t literalUtf32ToUtf16(const wchar_t* source, int32_t sourceUnits, uint16_t* target,
                            int32_t targetUnits, uint32_t* count);

uint16_t* literalSwapnBytes_2(uint16_t* units, int32_t bytes);
uint32_t* literalSwapnBytes_4(uint32_t* units, int32_t bytes);
void literalBitfieldFlip(uint8_t* target, const uint8_t* source, uint32_t count);

void literalQSort(void* base, uint32_t count, uint32_t width, KorvCompare compare, void* context,
                  uint8_t ascending);

#ifdef __cplusplus
}
#endif

#endif
