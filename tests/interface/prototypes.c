/* Every exported name has exactly the type written here: anything else does not compile. */
#include <stdio.h>

#include "korv/datacnv.h"
#include "korv/korv.h"

/* NOLINTNEXTLINE(bugprone-macro-parentheses): parameter types take none */
#define FUNCTION(name, result, arguments) static result(*const check_##name) arguments = (name);
#define OBJECT(name, type, count) static const type(*const check_##name)[count] = &(name);

/* clang-format off */

/* libKORVSupport */
FUNCTION(KORVCnvCtrlBlkFromIToX, int32_t, (const CtrlBlkI*, CtrlBlkX*))
FUNCTION(KORVCnvFieldDefFromIToX, int32_t, (const FieldDefI*, FieldDefX*))
FUNCTION(KORVCnvOprDefFromIToX, int32_t, (const OprDefI*, OprDefX*))
FUNCTION(KORVCnvSvcDefFromIToX, int32_t, (const CtrlBlkX*, const SvcDefI*, SvcDefX*))
FUNCTION(DuplicateFieldDefI, int32_t, (FieldDefI*, const FieldDefI*))
FUNCTION(CleanCtrlBlkX, int32_t, (CtrlBlkX*))
FUNCTION(CleanSvcDefX, int32_t, (SvcDefX*))
FUNCTION(CleanParamsX, int32_t, (OprDefX*))
FUNCTION(CopyParamsStruct, int32_t, (const ParamDesc*, OprDefI*, uint32_t, uint8_t))
FUNCTION(CopyFieldStruct, int32_t, (const FieldDesc*, FieldDefI*, uint32_t, uint8_t))
FUNCTION(CopyPrvStruct, int32_t, (PrvRecord*, const PrvDesc*, uint32_t, uint8_t, uint8_t))
FUNCTION(GetProviderID, int32_t, (const char*))
FUNCTION(ErrorCapture, int32_t, (const CtrlBlkI*, uint32_t, uint32_t, int16_t))
FUNCTION(ErrorCaptureEAB, int32_t, (ErrorAnchor*, uint32_t, uint32_t, int16_t))
FUNCTION(TermErrors, int32_t, (ErrorAnchor*))
FUNCTION(TokenCapture, int32_t, (const CtrlBlkI*, const void*, int16_t, uint32_t, uint32_t))
FUNCTION(TokenCaptureEAB, int32_t, (ErrorAnchor*, const void*, int16_t, uint32_t, uint32_t))
FUNCTION(GetDataTypeBytes, int32_t, (const FieldDefI*, uint32_t*))
FUNCTION(GetDataTypeLengths, int32_t, (const FieldDefI*, uint32_t*))
FUNCTION(KORVGetDataTypeName, const char*, (int16_t))
FUNCTION(KORV_IsCharacterDatatype, int32_t, (int16_t))
FUNCTION(KORV_IsWideCharacterDatatype, int32_t, (int16_t))
FUNCTION(GetSrcBufLen, int32_t, (ValueRecord*, int16_t))
FUNCTION(KORVGetSourceDataLen, int32_t, (const ValueRecord*, const FieldDefI*, int32_t*))
FUNCTION(KORVAllocateBuffer, int32_t, (void**, uint32_t*, int32_t))
FUNCTION(KORVAllocateBuffer1, int32_t, (void**, uint32_t*, int32_t, uint8_t))
FUNCTION(KORV_IsZeroOrZeroLength, int32_t, (const CtrlBlkI*, ValueRecord*, ValueRecord*))
FUNCTION(KORVGetLongLongDigitCount, int32_t, (int64_t, uint32_t*))
FUNCTION(KORVGetIntDigitCount, int32_t, (int32_t, uint32_t*))
FUNCTION(KORVIntSYBToODBC, void, (const int32_t*, OdbcDate*))
FUNCTION(KORVIntODBCToSYB, void, (const OdbcDate*, int32_t*))
FUNCTION(PXLongToNum, int32_t, (int32_t, int16_t, char*))
FUNCTION(PXLongToNumW, int32_t, (int32_t, int16_t, wchar_t*))
FUNCTION(PXIntToNum, int32_t, (int32_t, int16_t, char*))
FUNCTION(PXIntToNumW, int32_t, (int32_t, int16_t, wchar_t*))
FUNCTION(PXNumToLong, int32_t, (const char*, int16_t, int16_t, int32_t*))
FUNCTION(PXNumToLongW, int32_t, (const wchar_t*, int16_t, int16_t, int32_t*))
FUNCTION(KORVCharNumToInt, int32_t, (const char*, int16_t, int16_t, int32_t*))
OBJECT(PXSpaces, char, 257)
OBJECT(PXSpacesW, wchar_t, 257)
FUNCTION(PXTransposeNum, int32_t, (const char*, char*, int16_t, int32_t, int16_t))
FUNCTION(PXTransposeNumW, int32_t, (const wchar_t*, wchar_t*, int16_t, int32_t, int16_t))
FUNCTION(PXGetPermutation, void, (int32_t, int32_t, int16_t*))
FUNCTION(KORVRevString, char*, (char*, int32_t))
FUNCTION(KORVRevStringW, int32_t, (wchar_t*))
FUNCTION(KORVReverseNum, int32_t, (uint64_t*))
FUNCTION(KORVShuffle, int32_t, (wchar_t*))
FUNCTION(KORVRandomValue, int32_t, (int32_t, uint8_t))
FUNCTION(KORV_StrToUpper, char*, (char*))
FUNCTION(KORV_StrToLower, char*, (char*))
FUNCTION(KORV_StrToWUpper, wchar_t*, (wchar_t*))
FUNCTION(KORV_StrToWLower, wchar_t*, (wchar_t*))
FUNCTION(toportwupper, int32_t, (int32_t))
FUNCTION(toportwlower, int32_t, (int32_t))
FUNCTION(StringWCaseCompare, int32_t, (const wchar_t*, const wchar_t*))
FUNCTION(StringWNCaseCompare, int32_t, (const wchar_t*, const wchar_t*, int32_t))
FUNCTION(KORV_GetNextElement, int32_t, (const wchar_t*, wchar_t*, uint32_t*, wchar_t, uint32_t,
          uint32_t))
FUNCTION(GetKeyValue, int32_t, (const char*, char*, int32_t, uint32_t*, char))
FUNCTION(TrimSourceW, int32_t, (wchar_t*, uint32_t*, const wchar_t*, wchar_t*, uint8_t))
FUNCTION(NormalizeColName, int32_t, (wchar_t*, int32_t))
FUNCTION(KORV_Utf16ToUtf32, int32_t, (const uint16_t*, int32_t, wchar_t*, int32_t, uint32_t*))
FUNCTION(KORV_Utf32ToUtf16, int32_t, (const wchar_t*, int32_t, uint16_t*, uint32_t, uint32_t*))
FUNCTION(KORVGetXMLCHARFromWCHAR, int32_t, (const wchar_t*, uint16_t**, uint8_t))
FUNCTION(RTENDIAN_SWAP_UINT, uint32_t, (uint32_t))
FUNCTION(RTENDIAN_SWAP_USHORT, uint16_t, (uint16_t))
FUNCTION(SwapBytes_2, uint16_t*, (uint16_t*))
FUNCTION(SwapnBytes_2, uint16_t*, (uint16_t*, int32_t))
FUNCTION(SwapBytes_4, uint32_t*, (uint32_t*))
FUNCTION(SwapnBytes_4, uint32_t*, (uint32_t*, int32_t))
FUNCTION(RTBITFIELD_FLIP, void, (uint8_t*, const uint8_t*, uint32_t))
FUNCTION(KORV_IsPlatformBigEndian, int32_t, (void))
FUNCTION(KORVGetLocalTime, char*, (char*, uint32_t))
FUNCTION(KORVGetCurLocalTimeTS, void, (OdbcTimestamp*, uint8_t))
FUNCTION(KORVGetDiffDays, int32_t, (const OdbcTimestamp*, const OdbcTimestamp*))
FUNCTION(FixLeapYearDay, void, (OdbcTimestamp*))
FUNCTION(KorvQSort, void, (void*, uint32_t, uint32_t, int32_t (*)(const void*, const void*,
          void*), void*, uint8_t))

/* libKORVDataCnvLib */
FUNCTION(KORVCnvCharToWVarcharSz, int32_t, (const char*, const uint32_t*, wchar_t*, uint32_t,
          uint32_t*, const CnvOptions*))
FUNCTION(KORVCnvVarcharToWVarcharSz, int32_t, (const void*, const uint32_t*, wchar_t*, uint32_t,
          uint32_t*, const CnvOptions*))
FUNCTION(KORVCnvVarcharSzToWVarcharSz, int32_t, (const char*, const uint32_t*, wchar_t*, uint32_t,
          uint32_t*, const CnvOptions*))
FUNCTION(KORVCnvWCharToWVarcharSz, int32_t, (const wchar_t*, const uint32_t*, wchar_t*, uint32_t,
          uint32_t*, const CnvOptions*))
FUNCTION(KORVCnvWVarcharToWVarcharSz, int32_t, (const void*, const uint32_t*, wchar_t*, uint32_t,
          uint32_t*, const CnvOptions*))
FUNCTION(KORVCnvIntToWVarcharSz1, int32_t, (const int32_t*, const uint32_t*, wchar_t*, uint32_t,
          uint32_t*, const CnvOptions*))
FUNCTION(KORVCnvUIntToWVarcharSz, int32_t, (const uint32_t*, const uint32_t*, wchar_t*, uint32_t,
          uint32_t*, const CnvOptions*))
FUNCTION(KORVCnvSmallIntToWVarcharSz, int32_t, (const int16_t*, const uint32_t*, wchar_t*,
          uint32_t, uint32_t*, const CnvOptions*))
FUNCTION(KORVCnvSmallUIntToWVarcharSz, int32_t, (const uint16_t*, const uint32_t*, wchar_t*,
          uint32_t, uint32_t*, const CnvOptions*))
FUNCTION(KORVCnvWVarcharSzToVarcharSz, int32_t, (const wchar_t*, const uint32_t*, char*, uint32_t,
          uint32_t*, const CnvOptions*))
FUNCTION(KORVGetStringFromTS, int32_t, (const void*, wchar_t*, uint32_t, uint32_t*))
FUNCTION(Convert16To32, int32_t, (const uint16_t*, int32_t, wchar_t*, int32_t, uint32_t*))
FUNCTION(Convert32To16, int32_t, (const wchar_t*, int32_t, uint16_t*, int32_t, uint32_t*))
/* clang-format on */

#define PRESENT(name) \
    { #name, check_##name != 0 }

int main(void) {
    /* A name that is only declared would not link. */
    const struct {
        const char* name;
        int present;
    } rows[] = {
        PRESENT(KORVCnvCtrlBlkFromIToX),
        PRESENT(KORVCnvFieldDefFromIToX),
        PRESENT(KORVCnvOprDefFromIToX),
        PRESENT(KORVCnvSvcDefFromIToX),
        PRESENT(DuplicateFieldDefI),
        PRESENT(CleanCtrlBlkX),
        PRESENT(CleanSvcDefX),
        PRESENT(CleanParamsX),
        PRESENT(CopyParamsStruct),
        PRESENT(CopyFieldStruct),
        PRESENT(CopyPrvStruct),
        PRESENT(GetProviderID),
        PRESENT(ErrorCapture),
        PRESENT(ErrorCaptureEAB),
        PRESENT(TermErrors),
        PRESENT(TokenCapture),
        PRESENT(TokenCaptureEAB),
        PRESENT(GetDataTypeBytes),
        PRESENT(GetDataTypeLengths),
        PRESENT(KORVGetDataTypeName),
        PRESENT(KORV_IsCharacterDatatype),
        PRESENT(KORV_IsWideCharacterDatatype),
        PRESENT(GetSrcBufLen),
        PRESENT(KORVGetSourceDataLen),
        PRESENT(KORVAllocateBuffer),
        PRESENT(KORVAllocateBuffer1),
        PRESENT(KORV_IsZeroOrZeroLength),
        PRESENT(KORVGetLongLongDigitCount),
        PRESENT(KORVGetIntDigitCount),
        PRESENT(KORVIntSYBToODBC),
        PRESENT(KORVIntODBCToSYB),
        PRESENT(PXLongToNum),
        PRESENT(PXLongToNumW),
        PRESENT(PXIntToNum),
        PRESENT(PXIntToNumW),
        PRESENT(PXNumToLong),
        PRESENT(PXNumToLongW),
        PRESENT(KORVCharNumToInt),
        PRESENT(PXSpaces),
        PRESENT(PXSpacesW),
        PRESENT(PXTransposeNum),
        PRESENT(PXTransposeNumW),
        PRESENT(PXGetPermutation),
        PRESENT(KORVRevString),
        PRESENT(KORVRevStringW),
        PRESENT(KORVReverseNum),
        PRESENT(KORVShuffle),
        PRESENT(KORVRandomValue),
        PRESENT(KORV_StrToUpper),
        PRESENT(KORV_StrToLower),
        PRESENT(KORV_StrToWUpper),
        PRESENT(KORV_StrToWLower),
        PRESENT(toportwupper),
        PRESENT(toportwlower),
        PRESENT(StringWCaseCompare),
        PRESENT(StringWNCaseCompare),
        PRESENT(KORV_GetNextElement),
        PRESENT(GetKeyValue),
        PRESENT(TrimSourceW),
        PRESENT(NormalizeColName),
        PRESENT(KORV_Utf16ToUtf32),
        PRESENT(KORV_Utf32ToUtf16),
        PRESENT(KORVGetXMLCHARFromWCHAR),
        PRESENT(RTENDIAN_SWAP_UINT),
        PRESENT(RTENDIAN_SWAP_USHORT),
        PRESENT(SwapBytes_2),
        PRESENT(SwapnBytes_2),
        PRESENT(SwapBytes_4),
        PRESENT(SwapnBytes_4),
        PRESENT(RTBITFIELD_FLIP),
        PRESENT(KORV_IsPlatformBigEndian),
        PRESENT(KORVGetLocalTime),
        PRESENT(KORVGetCurLocalTimeTS),
        PRESENT(KORVGetDiffDays),
        PRESENT(FixLeapYearDay),
        PRESENT(KorvQSort),
        PRESENT(KORVCnvCharToWVarcharSz),
        PRESENT(KORVCnvVarcharToWVarcharSz),
        PRESENT(KORVCnvVarcharSzToWVarcharSz),
        PRESENT(KORVCnvWCharToWVarcharSz),
        PRESENT(KORVCnvWVarcharToWVarcharSz),
        PRESENT(KORVCnvIntToWVarcharSz1),
        PRESENT(KORVCnvUIntToWVarcharSz),
        PRESENT(KORVCnvSmallIntToWVarcharSz),
        PRESENT(KORVCnvSmallUIntToWVarcharSz),
        PRESENT(KORVCnvWVarcharSzToVarcharSz),
        PRESENT(KORVGetStringFromTS),
        PRESENT(Convert16To32),
        PRESENT(Convert32To16),
    };
    int missing = 0;
    size_t i;
    for (i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        if (rows[i].present) continue;
        ++missing;
        fprintf(stderr, "%s is missing\n", rows[i].name);
    }
    return missing != 0;
}
