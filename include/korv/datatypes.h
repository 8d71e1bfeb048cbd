/** @file
 * Data types: the catalogue of codes, the lengths of source values, work buffers, digit counts, and
 * the conversion between Sybase day numbers and ODBC dates.
 *
 * Text comes in three forms: fixed (its length comes with it), variable (led by a signed 16-bit
 * length prefix; wide variable text counts bytes there), and terminated (the _SZ types). The W
 * types hold 4-byte units. "The twelve text types" are CHAR to WVARCHAR_SZ and the six DATETIME_
 * types.
 *
 * @since 1.0 */
#ifndef KORV_DATATYPES_H
#define KORV_DATATYPES_H

#include "korv/base.h"
#include "korv/ctrlblk.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Data type codes; they are stored in records and never change. 0, 11 and 12 are placeholders.
 *
 * Each has a second name without KORV_TYPE_, such as VARCHAR_SZ (DATATYPE_101 for KORV_TYPE_101).
 * ODBC headers may use the same names: define KORV_PREFIXED_TYPES_ONLY before the first korv
 * header to leave them out. */
typedef enum KorvDataType {
    KORV_TYPE_CHAR = 1,               /**< fixed narrow text */
    KORV_TYPE_VARCHAR = 2,            /**< variable narrow text */
    KORV_TYPE_VARCHAR_SZ = 3,         /**< terminated narrow text */
    KORV_TYPE_WCHAR = 4,              /**< fixed wide text */
    KORV_TYPE_WVARCHAR = 5,           /**< variable wide text */
    KORV_TYPE_WVARCHAR_SZ = 6,        /**< terminated wide text */
    KORV_TYPE_LONG_LONG = 7,          /**< signed, 64 bits */
    KORV_TYPE_U_LONG_LONG = 8,        /**< unsigned, 64 bits */
    KORV_TYPE_INTEGER = 9,            /**< signed, 32 bits */
    KORV_TYPE_U_INTEGER = 10,         /**< unsigned, 32 bits */
    KORV_TYPE_DECIMAL_PACKED = 13,    /**< packed decimal, 16 bytes */
    KORV_TYPE_ODBC_DATE = 14,         /**< OdbcDate; the catalogue lists 12 bytes */
    KORV_TYPE_ODBC_TIME = 15,         /**< the catalogue lists 12 bytes */
    KORV_TYPE_ODBC_TIMESTAMP = 16,    /**< OdbcTimestamp; the catalogue lists 20 bytes */
    KORV_TYPE_DATETIME_SZ = 17,       /**< date and time as terminated narrow text */
    KORV_TYPE_DATETIME_WSZ = 18,      /**< date and time as terminated wide text */
    KORV_TYPE_DOUBLE = 19,            /**< floating point, 64 bits */
    KORV_TYPE_FLOAT = 20,             /**< floating point, 32 bits */
    KORV_TYPE_SMALLINT = 21,          /**< signed, 16 bits */
    KORV_TYPE_USMALLINT = 22,         /**< unsigned, 16 bits */
    KORV_TYPE_TINYINT = 23,           /**< signed, 8 bits */
    KORV_TYPE_UTINYINT = 24,          /**< unsigned, 8 bits */
    KORV_TYPE_DATETIME_CHAR = 25,     /**< date and time as fixed narrow text */
    KORV_TYPE_DATETIME_VARCHAR = 26,  /**< date and time as variable narrow text */
    KORV_TYPE_DATETIME_WCHAR = 27,    /**< date and time as fixed wide text */
    KORV_TYPE_DATETIME_WVARCHAR = 28, /**< date and time as variable wide text */
    KORV_TYPE_101 = 101,              /**< 50 bytes, text length 51, no catalogue name */
#ifndef KORV_PREFIXED_TYPES_ONLY
    /** @cond */
    CHAR = KORV_TYPE_CHAR,
    VARCHAR = KORV_TYPE_VARCHAR,
    VARCHAR_SZ = KORV_TYPE_VARCHAR_SZ,
    WCHAR = KORV_TYPE_WCHAR,
    WVARCHAR = KORV_TYPE_WVARCHAR,
    WVARCHAR_SZ = KORV_TYPE_WVARCHAR_SZ,
    LONG_LONG = KORV_TYPE_LONG_LONG,
    U_LONG_LONG = KORV_TYPE_U_LONG_LONG,
    INTEGER = KORV_TYPE_INTEGER,
    U_INTEGER = KORV_TYPE_U_INTEGER,
    DECIMAL_PACKED = KORV_TYPE_DECIMAL_PACKED,
    ODBC_DATE = KORV_TYPE_ODBC_DATE,
    ODBC_TIME = KORV_TYPE_ODBC_TIME,
    ODBC_TIMESTAMP = KORV_TYPE_ODBC_TIMESTAMP,
    DATETIME_SZ = KORV_TYPE_DATETIME_SZ,
    DATETIME_WSZ = KORV_TYPE_DATETIME_WSZ,
    DOUBLE = KORV_TYPE_DOUBLE,
    FLOAT = KORV_TYPE_FLOAT,
    SMALLINT = KORV_TYPE_SMALLINT,
    USMALLINT = KORV_TYPE_USMALLINT,
    TINYINT = KORV_TYPE_TINYINT,
    UTINYINT = KORV_TYPE_UTINYINT,
    DATETIME_CHAR = KORV_TYPE_DATETIME_CHAR,
    DATETIME_VARCHAR = KORV_TYPE_DATETIME_VARCHAR,
    DATETIME_WCHAR = KORV_TYPE_DATETIME_WCHAR,
    DATETIME_WVARCHAR = KORV_TYPE_DATETIME_WVARCHAR,
    DATATYPE_101 = KORV_TYPE_101
/** @endcond */
#endif
} KorvDataType;

/** ODBC date record, 6 bytes, although the catalogue lists 12 for a value of type ODBC_DATE. */
typedef struct OdbcDate {
    int16_t year;   /**< 1 to 9999 */
    uint16_t month; /**< 1 to 12 */
    uint16_t day;   /**< 1 to 31 */
} OdbcDate;

/** ODBC timestamp record, 16 bytes, although the catalogue lists 20 for a value of type
 * ODBC_TIMESTAMP. */
typedef struct OdbcTimestamp {
    int16_t year;      /**< 1 to 9999 */
    uint16_t month;    /**< 1 to 12 */
    uint16_t day;      /**< 1 to 31 */
    uint16_t hour;     /**< 0 to 23 */
    uint16_t minute;   /**< 0 to 59 */
    uint16_t second;   /**< 0 to 59 */
    uint32_t fraction; /**< of a second; the library writes 0 and never reads it */
} OdbcTimestamp;

/** Value record: the framework's description of one source value and its target. The framework's
 * record may be longer; the library knows these members only. */
typedef struct ValueRecord {
    uint32_t reserved1[3];   /**< the framework's */
    uint8_t nullIndicator;   /**< 1: the value is null */
    uint8_t secondFlag;      /**< cleared in the result record by KORV_IsZeroOrZeroLength */
    int32_t length;          /**< bytes of the value's buffer; 0 or negative when not yet known */
    int32_t capacity;        /**< bytes of the target */
    int32_t copiedLength;    /**< bytes copied to the target */
    int32_t processingClass; /**< KorvProcessingClass */
    void* data;              /**< the value, in the form of its type */
    void* target;            /**< the provider's output buffer */
} ValueRecord;

/** How a provider processes a value. */
typedef enum KorvProcessingClass {
    KORV_CLASS_NONE = -1,  /**< neither, such as an ODBC date */
    KORV_CLASS_TEXT = 74,  /**< the twelve text types */
    KORV_CLASS_NUMBER = 75 /**< numbers, DECIMAL_PACKED and 101 */
} KorvProcessingClass;

/* ---- Catalogue ------------------------------------------------------------------------------- */

/** GetDataTypeBytes stores the size in bytes of a value of a field's type: the field length for
 * CHAR, VARCHAR and VARCHAR_SZ, four times the field length (modulo 2^32) for WCHAR, WVARCHAR and
 * WVARCHAR_SZ, and a constant for every other type. Bytes of a value, and characters of its text
 * form:
 *
 * @verbatim
   64-bit integers     8  21      DOUBLE, FLOAT      8, 4  32      DATETIME_ narrow   50  50
   32-bit integers     4  11      DECIMAL_PACKED       16  42      DATETIME_ wide    200  50
   16-bit integers     2   6      ODBC_DATE, _TIME     12  50      DATATYPE_101       50  51
   8-bit integers      1   4      ODBC_TIMESTAMP       20  50
@endverbatim
 *
 * @param      field  the field, or NULL
 * @param[out] bytes  the size; left alone on failure
 * @retval KORV_SUCCESS       stored
 * @retval KORV_TYPE_NO_FIELD the field is NULL
 * @retval KORV_TYPE_UNKNOWN  the code is 0, 11, 12 or not in the catalogue */
KORV_API int32_t GetDataTypeBytes(const FieldDefI* field, uint32_t* bytes);

/** GetDataTypeLengths stores the length in characters of the text form of a field's type, as
 * GetDataTypeBytes lists it.
 *
 * @param      field   the field, which must not be NULL
 * @param[out] length  characters; left alone where no length is stored
 * @retval KORV_SUCCESS       stored
 * @retval KORV_TYPE_DATETIME stored: always 50, for the six DATETIME_ types
 * @retval KORV_TYPE_VARIABLE CHAR to WVARCHAR_SZ, whose length depends on the value
 * @retval KORV_TYPE_UNKNOWN  the code is 0, 11, 12 or not in the catalogue */
KORV_API int32_t GetDataTypeLengths(const FieldDefI* field, uint32_t* length);

/** KORVGetDataTypeName returns the catalogue name of a code. The placeholders 11 and 12 are called
 * "11" and "12".
 *
 * @param code  data type code
 * @return constant text, or NULL for a code outside 1 to 28 */
KORV_API const char* KORVGetDataTypeName(int16_t code);

/** KORV_IsCharacterDatatype tells whether a type is narrow text.
 *
 * @param code  data type code
 * @retval KORV_SUCCESS yes
 * @retval KORV_FAILURE no */
KORV_API int32_t KORV_IsCharacterDatatype(int16_t code);

/** KORV_IsWideCharacterDatatype tells whether a type is wide text.
 *
 * @param code  data type code
 * @retval KORV_SUCCESS yes
 * @retval KORV_FAILURE no */
KORV_API int32_t KORV_IsWideCharacterDatatype(int16_t code);

/* ---- Source values --------------------------------------------------------------------------- */

/** GetSrcBufLen completes value->length, the bytes of the buffer that holds the value, as the
 * data type requires:
 *
 * - fixed text, DECIMAL_PACKED, 101: left as it stands;
 * - variable text, where the length is not above 0: its low 16 bits become the length prefix (40000
 *   stays 40000), its high 16 bits stay, and 2 is added to the whole. A negative length thus gives
 *   a wrong one;
 * - terminated text, where the length is not above 0: the text's length in characters, cut to a
 *   signed 16-bit number, times the unit, plus one unit for the terminator;
 * - other numbers and ODBC records: the type's bytes, whatever the length was.
 *
 * The null indicator is not read: where the text itself is read, value->data must not be NULL.
 *
 * @param[in,out] value  the value
 * @param         code   data type code
 * @retval KORV_SUCCESS complete
 * @retval KORV_FAILURE the code is 0, 11, 12 or not in the catalogue (nothing is written) */
KORV_API int32_t GetSrcBufLen(ValueRecord* value, int16_t code);

/** KORVGetSourceDataLen stores the length of a value in characters: from the value for the twelve
 * text types, otherwise what GetDataTypeLengths gives for the field.
 *
 * For fixed text value->length must be complete. A length prefix is read as a signed number and is
 * not counted. Byte lengths of wide text are divided by 4, truncated toward zero. The result is
 * KORV_SUCCESS for an unknown type, too.
 *
 * @param      value   the value
 * @param      field   its field
 * @param[out] length  characters; -1 for a null value (null indicator 1, or no data); left alone
 *                     for an unknown type
 * @retval KORV_SUCCESS always */
KORV_API int32_t KORVGetSourceDataLen(const ValueRecord* value, const FieldDefI* field,
                                      int32_t* length);

/** KORV_IsZeroOrZeroLength classifies a value by the type of context->fieldRefs.fieldDef, and
 * copies it to its target when context->blkCode is not 0.
 *
 * Despite its name it tests neither for zero nor for a length of zero, and it does not read the
 * null indicator. The class is also stored in value->processingClass, and result->secondFlag
 * becomes 0. When the value is copied, whatever its class, the smaller of value->capacity and
 * value->length is stored in value->copiedLength, and that many bytes are copied from value->data
 * to value->target. If it is negative, nothing is copied.
 *
 * @param         context  the request
 * @param[in,out] value    the value; if it is to be copied, its length must be complete, see
 *                         GetSrcBufLen
 * @param[in,out] result   the result record
 * @retval KORV_CLASS_TEXT   the twelve text types
 * @retval KORV_CLASS_NUMBER numbers, DECIMAL_PACKED and 101
 * @retval KORV_CLASS_NONE   any other type */
KORV_API int32_t KORV_IsZeroOrZeroLength(const CtrlBlkI* context, ValueRecord* value,
                                         ValueRecord* result);

/* ---- Work buffers ---------------------------------------------------------------------------- */

/** KORVAllocateBuffer makes *buffer a zeroed block, resizing the block that it holds, if any.
 *
 * @param[in,out] buffer   a block of the process heap, or NULL; the caller releases it with free()
 * @param[out]    size     receives newSize; left alone on failure, never read
 * @param         newSize  bytes of the block after the call
 * @retval KORV_SUCCESS          done; *size is newSize
 * @retval KORV_BAD_BUFFER_SIZE  newSize is below 1 (nothing changes)
 * @retval KORV_NO_MEMORY_BUFFER no memory: *buffer is NULL and *size is as it was. A block that
 *                               *buffer held before is not released, and its address is lost */
KORV_API int32_t KORVAllocateBuffer(void** buffer, uint32_t* size, int32_t newSize);

/** KORVAllocateBuffer1 does the same as KORVAllocateBuffer, and can keep the contents of a block
 * that grows.
 *
 * @param[in,out] buffer   a block of the process heap, or NULL; the caller releases it with free()
 * @param[in,out] size     bytes of the block
 * @param         newSize  bytes of the block after the call
 * @param         keep     1 keeps the contents: only the bytes from the old *size on are zeroed.
 *                         Use it for growing only; a smaller newSize zeroes nothing. If *buffer is
 *                         NULL, the whole block is zeroed. Any other value zeroes the whole block
 * @retval KORV_SUCCESS          done; *size is newSize
 * @retval KORV_BAD_BUFFER_SIZE  newSize is below 1 (nothing changes)
 * @retval KORV_NO_MEMORY_BUFFER as KORVAllocateBuffer */
KORV_API int32_t KORVAllocateBuffer1(void** buffer, uint32_t* size, int32_t newSize, uint8_t keep);

/* ---- Digits and days ------------------------------------------------------------------------- */

/** KORVGetIntDigitCount adds the number of decimal digits of a value, without its sign, to a
 * counter, which is not reset first. Zero has no digits.
 *
 * @param         value    the value
 * @param[in,out] counter  the counter
 * @retval KORV_SUCCESS always */
KORV_API int32_t KORVGetIntDigitCount(int32_t value, uint32_t* counter);

/** KORVGetLongLongDigitCount does the same as KORVGetIntDigitCount for a 64-bit value.
 * @copydetails KORVGetIntDigitCount */
KORV_API int32_t KORVGetLongLongDigitCount(int64_t value, uint32_t* counter);

/** KORVIntSYBToODBC stores the date of a Sybase day number: days since 1900-01-01, proleptic
 * Gregorian.
 *
 * Exact from 0001-01-01 (day -693595) to 9999-12-31 (day 2958463). For other days the result is not
 * a correct date, because intermediate values are cut to 16 bits.
 *
 * @param      day   the day number
 * @param[out] date  the date */
KORV_API void KORVIntSYBToODBC(const int32_t* day, OdbcDate* date);

/** KORVIntODBCToSYB stores the Sybase day number of a date.
 *
 * The date is not validated: an impossible date is converted by the same arithmetic.
 *
 * @param      date  the date
 * @param[out] day   the day number */
KORV_API void KORVIntODBCToSYB(const OdbcDate* date, int32_t* day);

#ifdef __cplusplus
}
#endif

#endif
