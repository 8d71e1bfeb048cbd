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

/** One error. Header "ECBD", 21, and always the length 32, whatever the number of slots. Note that
 * the second code precedes the first. */
typedef struct ErrorRecord {
    struct ErrorRecord* next; /**< the next error; NULL in the newest */
    BlockHeader header;       /**< "ECBD", 21, 32 */
    int16_t tokenSlotCount;   /**< as given by the caller, 0 and negative included */
    uint32_t secondCode;      /**< the caller's, as firstCode */
    uint32_t firstCode;       /**< the caller's */
    TokenSlot tokenSlots[1];  /**< really max(tokenSlotCount, 1) slots, and a spare one */
} ErrorRecord;

/** Head of a request's error chain. The sizes tell how many bytes one flattened error needs. */
typedef struct ErrorAnchor {
    ErrorRecord* head;    /**< NULL while there is no error */
    ErrorRecord* tail;    /**< the newest record; meaningful while head is not NULL */
    uint32_t recordCount; /**< records opened since the anchor was zeroed */
    uint32_t largestSize; /**< bytes: the largest value of currentSize so far */
    uint32_t currentSize; /**< bytes accounted for the newest record */
} ErrorAnchor;

/** ErrorCaptureEAB appends a zeroed record with max(slotCount, 1) token slots to the chain, which
 * owns it.
 *
 * currentSize becomes the record's 24 + 8 * max(slotCount, 1) bytes plus 8 * slotCount (a negative
 * count lowers it); largestSize follows.
 *
 * @param[in,out] anchor      the chain
 * @param         firstCode   stored as it is
 * @param         secondCode  stored as it is
 * @param         slotCount   stored as it is, 0 and negative included
 * @retval KORV_SUCCESS appended
 * @retval KORV_FAILURE the anchor is NULL (nothing is changed), or no memory: then the chain and
 *                      recordCount are unchanged, and currentSize is the size of the record that
 *                      could not be allocated */
KORV_API int32_t ErrorCaptureEAB(ErrorAnchor* anchor, uint32_t firstCode, uint32_t secondCode,
                                 int16_t slotCount);

/** ErrorCapture calls ErrorCaptureEAB for the error anchor of a block.
 *
 * @param block       must not be NULL; its errorAnchor may be NULL
 * @param firstCode   stored as it is
 * @param secondCode  stored as it is
 * @param slotCount   stored as it is, 0 and negative included
 * @retval KORV_SUCCESS appended
 * @retval KORV_FAILURE as ErrorCaptureEAB */
KORV_API int32_t ErrorCapture(const CtrlBlkI* block, uint32_t firstCode, uint32_t secondCode,
                              int16_t slotCount);

/** TermErrors releases every record with its token texts, and the anchor itself.
 *
 * Three kinds of text are not released: one captured under identifier 0, one in
 * tokenSlots[tokenSlotCount], and one that a later capture has replaced (see TokenCaptureEAB). A
 * caller that makes such texts frees them itself, a text of the last kind before it is replaced.
 *
 * @param anchor  from malloc(), or NULL; invalid after the call
 * @retval KORV_SUCCESS always */
KORV_API int32_t TermErrors(ErrorAnchor* anchor);

/** TokenCaptureEAB turns a value into wide text and stores it in the first unused slot of the
 * newest record; the anchor must have one.
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
 * currentSize grows by the text's characters * 4 + 4 bytes (by 4 only for an integer of value 0),
 * and largestSize follows. The text is what the companion library leaves in the buffer; its result
 * is not checked. If it does not say how many characters it wrote, the number that the buffer was
 * sized for is counted (for fixed wide text its bytes, for numbers and dates none).
 *
 * The codes are listed in the order of the tests. With KORV_FAILURE for a value and with
 * KORV_TOKEN_BAD_TYPE the slot keeps tokenId without text; with the others nothing is changed.
 *
 * @param[in,out] anchor    the chain, which owns the text
 * @param         value     of the type `dataType`; terminated, or with its length prefix, by the
 *                          type
 * @param         dataType  data type code
 * @param         tokenId   KorvTokenId
 * @param         length    bytes of the value, used only for CHAR, DATETIME_CHAR, WCHAR and
 *                          DATETIME_WCHAR
 * @retval KORV_FAILURE        the anchor is NULL (nothing is changed); or, checked after the next
 *                             two, a NULL value of a type other than text, or no memory
 * @retval KORV_TOKEN_BAD_ID   tokenId is 91 or more
 * @retval KORV_TOKEN_NO_SLOT  the record's slot count is negative
 * @retval KORV_TOKEN_BAD_TYPE a value of a type that cannot be captured
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
 * @retval KORV_FAILURE        as TokenCaptureEAB
 * @retval KORV_TOKEN_NO_SLOT  as TokenCaptureEAB
 * @retval KORV_TOKEN_BAD_TYPE as TokenCaptureEAB
 * @retval KORV_SUCCESS        captured */
KORV_API int32_t TokenCapture(const CtrlBlkI* block, const void* value, int16_t dataType,
                              uint32_t tokenId, uint32_t length);

#ifdef __cplusplus
}
#endif

#endif
