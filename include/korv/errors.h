/** @file
 * Error chain of a request, and the capture of message tokens as wide text.
 *
 * Order of calls:
 *   1. take an ErrorAnchor from malloc(), zero-fill it, store it in the block's errorAnchor
 *   2. for each error: ErrorCapture once, then TokenCapture once for each of its tokens
 *   3. read the chain from head; TermErrors; clear errorAnchor
 *
 * An anchor belongs to one request and one thread at a time.
 *
 * @since 1.0 */
#ifndef KORV_ERRORS_H
#define KORV_ERRORS_H

#include "korv/base.h"
#include "korv/ctrlblk.h"
#include "korv/datatypes.h"
#include "korv/tokens.h"

#ifdef __cplusplus
extern "C" {
#endif

/** One message token of an error. */
typedef struct TokenSlot {
    uint32_t tokenId; /**< KorvTokenId; 0 while the slot is unused */
    wchar_t* text;    /**< zero-terminated; owned by the record; NULL when the capture failed */
} TokenSlot;

/** One error. The header is "ECBD", 21, and the size of a record with one slot, whatever the number
 * of slots: 32, or 48 in the 64-bit build. The second code is stored before the first. */
typedef struct ErrorRecord {
    struct ErrorRecord* next; /**< the next error; NULL in the newest */
    BlockHeader header;       /**< "ECBD", 21, and 32 or 48 */
    int16_t tokenSlotCount;   /**< as given by the caller, 0 and negative included */
    uint32_t secondCode;      /**< as given by the caller */
    uint32_t firstCode;       /**< as given by the caller */
    TokenSlot tokenSlots[1];  /**< max(tokenSlotCount, 1) slots and a spare one */
} ErrorRecord;

/** Head of a request's error chain. largestSize is the number of bytes that the largest error needs
 * when it is flattened. */
typedef struct ErrorAnchor {
    ErrorRecord* head;    /**< NULL while there is no error */
    ErrorRecord* tail;    /**< the newest record; meaningful while head is not NULL */
    uint32_t recordCount; /**< records opened since the anchor was zeroed */
    uint32_t largestSize; /**< bytes: the largest currentSize after a record or a token was added */
    uint32_t currentSize; /**< bytes accounted for the newest record */
} ErrorAnchor;

/** ErrorCaptureEAB appends a zeroed record with max(slotCount, 1) token slots to the chain, which
 * owns it.
 *
 * currentSize becomes the size of the record, 24 + 8 * max(slotCount, 1) bytes, plus 8 * slotCount
 * (in the 64-bit build 32 + 16 * max(slotCount, 1) plus 16 * slotCount). A negative count lowers
 * it, and below 0 it wraps as an unsigned number. largestSize is raised to currentSize if it is
 * smaller.
 *
 * @param[in,out] anchor      the chain
 * @param         firstCode   stored as it is
 * @param         secondCode  stored as it is
 * @param         slotCount   stored as it is, 0 and negative included
 * @retval KORV_SUCCESS appended
 * @retval KORV_FAILURE the anchor is NULL (nothing is changed), or no memory: then the chain,
 *                      recordCount and largestSize are unchanged, and currentSize is the size of
 *                      the record that could not be allocated */
KORV_API int32_t ErrorCaptureEAB(ErrorAnchor* anchor, uint32_t firstCode, uint32_t secondCode,
                                 int16_t slotCount);

/** ErrorCapture calls ErrorCaptureEAB for the error anchor of a block.
 *
 * @param block       must not be NULL; its errorAnchor may be NULL
 * @param firstCode   stored as it is
 * @param secondCode  stored as it is
 * @param slotCount   stored as it is, 0 and negative included
 * @retval KORV_SUCCESS appended
 * @retval KORV_FAILURE as for ErrorCaptureEAB */
KORV_API int32_t ErrorCapture(const CtrlBlkI* block, uint32_t firstCode, uint32_t secondCode,
                              int16_t slotCount);

/** TermErrors releases every record with its token texts, and the anchor itself.
 *
 * Three kinds of text are not released: one captured under identifier 0, one in
 * tokenSlots[tokenSlotCount], and one that a later capture has replaced (see TokenCaptureEAB). The
 * caller must free such texts itself; one that a later capture will replace, before that capture.
 *
 * @param anchor  from malloc(), or NULL; invalid after the call
 * @retval KORV_SUCCESS always */
KORV_API int32_t TermErrors(ErrorAnchor* anchor);

/** TokenCaptureEAB turns a value into wide text and stores it in the first unused slot of the
 * newest record. The chain must have a record; this is not checked.
 *
 * A NULL `value` of a text type is captured as "<NULL>". Identifier 0 is stored, but leaves the
 * slot unused for the next capture. When all slots are taken, one further token is accepted into
 * tokenSlots[tokenSlotCount], and each later one replaces it; a text that is replaced is not
 * released. With a slot count of 0 that is the record's only slot.
 *
 * The types that can be captured are the twelve text types of korv/datatypes.h, INTEGER, U_INTEGER,
 * SMALLINT, USMALLINT, ODBC_DATE, ODBC_TIME and ODBC_TIMESTAMP. Narrow text is passed to the
 * companion library without a code page; the stand-in then reads each byte as an ISO 8859-1
 * character.
 *
 * A date, time or timestamp is passed on without its type. `value` must therefore point to at least
 * as many bytes as the catalogue lists for the type (12, 12, 20), although the records are smaller.
 *
 * currentSize grows by 4 bytes for each character of the text and for the terminator (for an
 * integer of value 0 by 4 in all), and largestSize is raised to it if it is smaller. The result of
 * the companion library is not checked: the text is what it leaves in the buffer. If it does not
 * report a number of characters, the number that the buffer was sized for is counted: for fixed
 * wide text its length in bytes, for numbers and dates 0.
 *
 * The tests come in this order: NULL anchor, tokenId, slot count, NULL value, data type, memory. If
 * one of the first three fails, nothing is changed. If a later one fails, the slot holds tokenId
 * and a NULL text. It counts as used unless tokenId is 0, and a text that it held before is lost.
 *
 * @param[in,out] anchor    the chain, which owns the text
 * @param         value     the value, of the type `dataType`: variable text begins with its length
 *                          prefix, _SZ text is zero-terminated. May be NULL for a text type
 * @param         dataType  data type code
 * @param         tokenId   KorvTokenId
 * @param         length    bytes of the value, used only for CHAR, DATETIME_CHAR, WCHAR and
 *                          DATETIME_WCHAR
 * @retval KORV_FAILURE        the anchor is NULL, the value is NULL and its type is not a text
 *                             type, or no memory
 * @retval KORV_TOKEN_BAD_ID   tokenId is 91 or more
 * @retval KORV_TOKEN_NO_SLOT  the record's slot count is negative
 * @retval KORV_TOKEN_BAD_TYPE the value is not NULL and its type cannot be captured
 * @retval KORV_SUCCESS        captured */
KORV_API int32_t TokenCaptureEAB(ErrorAnchor* anchor, const void* value, int16_t dataType,
                                 uint32_t tokenId, uint32_t length);

/** TokenCapture calls TokenCaptureEAB for the error anchor of a block, but tests tokenId before it
 * reads the block.
 *
 * @code
 * ErrorCapture(&request, 1, 2, 1);
 * TokenCapture(&request, L"CARD", WVARCHAR_SZ, KORV_TOKID_COLNAME, 0);
 * @endcode
 *
 * @param block     must not be NULL; its errorAnchor may be NULL
 * @param value     as for TokenCaptureEAB
 * @param dataType  data type code
 * @param tokenId   KorvTokenId
 * @param length    bytes, as for TokenCaptureEAB
 * @retval KORV_TOKEN_BAD_ID   tokenId is 91 or more
 * @retval KORV_FAILURE        as for TokenCaptureEAB
 * @retval KORV_TOKEN_NO_SLOT  as for TokenCaptureEAB
 * @retval KORV_TOKEN_BAD_TYPE as for TokenCaptureEAB
 * @retval KORV_SUCCESS        captured */
KORV_API int32_t TokenCapture(const CtrlBlkI* block, const void* value, int16_t dataType,
                              uint32_t tokenId, uint32_t length);

#ifdef __cplusplus
}
#endif

#endif
