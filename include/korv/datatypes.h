/* Data types: the catalogue of codes, the lengths of source values, work buffers, digit counts, and
 * the conversion between Sybase day numbers and ODBC dates.
 *
 * Text comes in three forms: fixed (its length comes with it), variable (led by a signed 16-bit
 * length prefix; wide variable text counts bytes there), and terminated (the _SZ types). The W
 * types hold 4-byte units. "The twelve text types" are CHAR to WVARCHAR_SZ and the six DATETIME_
 * types.
 */
#ifndef KORV_DATATYPES_H
#define KORV_DATATYPES_H

#include "korv/base.h"
#include "korv/ctrlblk.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Data type codes; they are stored in records and never change. 0, 11 and 12 are placeholders. */
typedef enum KorvDataType {
    CHAR = 1,
    VARCHAR = 2,
    VARCHAR_SZ = 3,
    WCHAR = 4,
    WVARCHAR = 5,
    WVARCHAR_SZ = 6,
    LONG_LONG = 7,
    U_LONG_LONG = 8,
    INTEGER = 9,
    U_INTEGER = 10,
    DECIMAL_PACKED = 13,
    ODBC_DATE = 14,
    ODBC_TIME = 15,
    ODBC_TIMESTAMP = 16,
    DATETIME_SZ = 17,
    DATETIME_WSZ = 18,
    DOUBLE = 19,
    FLOAT = 20,
    SMALLINT = 21,
    USMALLINT = 22,
    TINYINT = 23,
    UTINYINT = 24,
    DATETIME_CHAR = 25,
    DATETIME_VARCHAR = 26,
    DATETIME_WCHAR = 27,
    DATETIME_WVARCHAR = 28,
    DATATYPE_101 = 101 /* 50 bytes, text length 51, no catalogue name */
} KorvDataType;

/* ODBC date record, 6 bytes. A value of type ODBC_DATE counts 12. */
typedef struct OdbcDate {
    int16_t year;
    uint16_t month; /* 1 to 12 */
    uint16_t day;   /* 1 to 31 */
} OdbcDate;

/* ODBC timestamp record, 16 bytes. A value of type ODBC_TIMESTAMP counts 20. */
typedef struct OdbcTimestamp {
    int16_t year;
    uint16_t month; /* 1 to 12 */
    uint16_t day;   /* 1 to 31 */
    uint16_t hour;
    uint16_t minute;
    uint16_t second;
    uint32_t fraction; /* of a second; the library writes 0 and never reads it */
} OdbcTimestamp;

/* Value record: the framework's description of one source value and its target. The framework's
 * record may be longer; the library knows these members only. */
typedef struct ValueRecord {
    uint32_t reserved1[3];
    uint8_t nullIndicator;   /* 1: the value is null */
    uint8_t secondFlag;      /* cleared in the result record by KORV_IsZeroOrZeroLength */
    int32_t length;          /* bytes of the value's buffer; 0 or negative when not yet known */
    int32_t capacity;        /* bytes of the target */
    int32_t copiedLength;    /* bytes copied to the target */
    int32_t processingClass; /* KorvProcessingClass */
    void* data;
    void* target; /* the provider's output buffer */
} ValueRecord;

/* How a provider processes a value. */
typedef enum KorvProcessingClass {
    KORV_CLASS_NONE = -1,
    KORV_CLASS_TEXT = 74,
    KORV_CLASS_NUMBER = 75
} KorvProcessingClass;

/* Bytes of a value, and characters of its text form, for the types whose field length says neither:
 *
 *   64-bit integers     8  21      DOUBLE, FLOAT      8, 4  32      DATETIME_ narrow   50  50
 *   32-bit integers     4  11      DECIMAL_PACKED       16  42      DATETIME_ wide    200  50
 *   16-bit integers     2   6      ODBC_DATE, _TIME     12  50      DATATYPE_101       50  51
 *   8-bit integers      1   4      ODBC_TIMESTAMP       20  50
 */

/* ---- Catalogue ------------------------------------------------------------------------------- */

/* GetDataTypeBytes stores the size in bytes of a value of the field's type: the field length for
 * CHAR, VARCHAR and VARCHAR_SZ, four times the field length for WCHAR, WVARCHAR and WVARCHAR_SZ,
 * and a constant for every other type. An ODBC date and time count 12 bytes, a timestamp 20,
 * although their records are smaller.
 * Returns 0; 48 when the field is empty; 49 when the type has no size (`bytes` is left alone). */
KORV_API int32_t GetDataTypeBytes(const FieldDefI* field, uint32_t* bytes);

/* GetDataTypeLengths stores the length in characters of the text form of the field's type.
 * Returns 0; 65 with the length 50 for the DATETIME_ types; 50 for CHAR to WVARCHAR_SZ, whose
 * length depends on the value, and 49 for an unknown type (`length` is left alone by both). */
KORV_API int32_t GetDataTypeLengths(const FieldDefI* field, uint32_t* length);

/* KORVGetDataTypeName returns the catalogue name of a code as constant text, or null for a code
 * outside 1 to 28. The placeholders 11 and 12 are called "11" and "12". */
KORV_API const char* KORVGetDataTypeName(int16_t code);

/* KORV_IsCharacterDatatype tells whether a type is narrow text: 0 means yes, -1 no. */
KORV_API int32_t KORV_IsCharacterDatatype(int16_t code);

/* KORV_IsWideCharacterDatatype tells whether a type is wide text: 0 means yes, -1 no. */
KORV_API int32_t KORV_IsWideCharacterDatatype(int16_t code);

/* ---- Source values --------------------------------------------------------------------------- */

/* GetSrcBufLen completes value->length, the bytes of the buffer that holds the value, by the type
 * `code`:
 *   fixed text, DECIMAL_PACKED, 101  left as it stands
 *   variable text                    if not above 0: the low 16 bits become the length prefix, the
 *                                    high 16 bits stay, and 2 is added to the whole
 *   terminated text                  if not above 0: the length in characters, cut to a signed
 *                                    16-bit number, times the unit, plus one unit for its end
 *   other numbers, ODBC records      the type's bytes, always
 * Returns 0, or -1 for a code that has no rule (nothing is written). */
KORV_API int32_t GetSrcBufLen(ValueRecord* value, int16_t code);

/* KORVGetSourceDataLen stores the length of a value in characters: from the value for the twelve
 * text types, otherwise what GetDataTypeLengths gives for the field; for an unknown type `length`
 * is left alone. A null value (null indicator 1, or no data) has the length -1. Lengths of fixed
 * and variable wide text are their bytes / 4, truncated. Always returns 0. */
KORV_API int32_t KORVGetSourceDataLen(const ValueRecord* value, const FieldDefI* field,
                                      int32_t* length);

/* KORV_IsZeroOrZeroLength returns the processing class of the value named by
 * context->fieldRefs.fieldDef: 74 for the twelve text types, 75 for numbers, DECIMAL_PACKED and
 * 101, otherwise -1. The class is also stored in value->processingClass, and result->secondFlag
 * becomes 0.
 *
 * When context->blkCode is not 0, the smaller of value->capacity and value->length is first stored
 * in value->copiedLength and as many bytes are copied from value->data to value->target; a negative
 * length is stored and copies nothing. */
KORV_API int32_t KORV_IsZeroOrZeroLength(const CtrlBlkI* context, ValueRecord* value,
                                         ValueRecord* result);

/* ---- Work buffers ---------------------------------------------------------------------------- */

/* KORVAllocateBuffer makes *buffer a zeroed block of `newSize` bytes, resizing the block that it
 * holds, if any, and stores newSize in *size. The caller releases it with free().
 * Returns 0; 107 when newSize is below 1 (nothing changes); 106 when memory runs out: *buffer is
 * then null, *size as it was, and a block held before is no longer referenced and lost to the
 * caller. */
KORV_API int32_t KORVAllocateBuffer(void** buffer, uint32_t* size, int32_t newSize);

/* KORVAllocateBuffer1 is KORVAllocateBuffer, but with a keep flag of exactly 1 only the bytes from
 * the old *size on are zeroed, so that the contents survive a growth. Keeping is for growing: when
 * newSize is below *size nothing is zeroed. A buffer that was null is zeroed as a whole. */
KORV_API int32_t KORVAllocateBuffer1(void** buffer, uint32_t* size, int32_t newSize, uint8_t keep);

/* ---- Digits and days ------------------------------------------------------------------------- */

/* KORVGetIntDigitCount adds the number of decimal digits of `value`, sign apart, to *counter. Zero
 * has none. Returns 0. */
KORV_API int32_t KORVGetIntDigitCount(int32_t value, uint32_t* counter);

/* KORVGetLongLongDigitCount is KORVGetIntDigitCount for a 64-bit value. */
KORV_API int32_t KORVGetLongLongDigitCount(int64_t value, uint32_t* counter);

/* KORVIntSYBToODBC stores the date of a Sybase day number (days since 1900-01-01, proleptic
 * Gregorian). Exact from 0001-01-01 (day -693595) to 9999-12-31 (day 2958463); outside, the result
 * is what the 16-bit steps of the calculation give. */
KORV_API void KORVIntSYBToODBC(const int32_t* day, OdbcDate* date);

/* KORVIntODBCToSYB stores the Sybase day number of a date. The date is not validated: an impossible
 * one goes through the same calculation. */
KORV_API void KORVIntODBCToSYB(const OdbcDate* date, int32_t* day);

#ifdef __cplusplus
}
#endif

#endif
