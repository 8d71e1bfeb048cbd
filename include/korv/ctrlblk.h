/** @file
 * Control blocks: the request records in both forms, their conversion and release, copies of the
 * framework's descriptions, and the numbers of the masking providers.
 *
 * The framework builds a request in the I form; the library turns it into the X form that providers
 * read, and releases the X form again. Members marked "carried" belong to the framework and its
 * providers: the library moves them and gives them no meaning. An X record shares the text buffers
 * of the I record that it was made from; releasing it leaves them alone. The I record and its texts
 * must therefore live as long as the X record.
 *
 * The sizes of records, and the lengths in their headers, are given for the 32-bit build. In the
 * 64-bit build the headers carry 64 (FLDX), 72 (BLKX), 96 (OPRX) and 40 (SVCX).
 *
 * Order of calls for a request:
 *   1. zero-fill a CtrlBlkX and a SvcDefX taken from malloc()
 *   2. KORVCnvCtrlBlkFromIToX, then KORVCnvSvcDefFromIToX with the converted block
 *   3. CleanSvcDefX, CleanCtrlBlkX
 *
 * @since 1.0 */
#ifndef KORV_CTRLBLK_H
#define KORV_CTRLBLK_H

#include "korv/base.h"

#ifdef __cplusplus
extern "C" {
#endif

struct ErrorAnchor;

/* ---- Records of a request -------------------------------------------------------------------- */

/** Field definition, I form: one data item that a provider works on. 56 bytes (72 in the 64-bit
 * build). */
typedef struct FieldDefI {
    struct FieldDefI* link; /**< next field definition; NULL at the end */
    BlockHeader header;     /**< the framework's; only DuplicateFieldDefI copies it */
    int16_t dataType;       /**< data type code, korv/datatypes.h */
    uint32_t length;        /**< declared length; characters for character types */
    uint32_t fldValue1;     /**< carried */
    uint16_t fldValue2;     /**< carried */
    uint32_t fldValue3;     /**< carried */
    uint8_t fldFlag;        /**< carried */
    uint32_t fldExtra;      /**< I form only; not copied into the X form */
    wchar_t* wideText;      /**< zero-terminated; owned by this record */
    char* narrowText;       /**< the same text, terminated, or NULL when the source was wide */
    int32_t wideTextLen;    /**< bytes of wideText, terminator included; its buffer may be larger */
    int32_t narrowTextLen;  /**< bytes of the narrowText buffer, terminator included */
} FieldDefI;

/** Field definition, X form: header "FLDX", 21, 52. Owned by the control block that lists it. */
typedef struct FieldDefX {
    struct FieldDefX* link; /**< next field definition; NULL at the end */
    BlockHeader header;     /**< "FLDX", 21, 52 */
    int16_t dataType;       /**< data type code, korv/datatypes.h */
    uint32_t length;        /**< declared length; characters for character types */
    uint32_t fldValue1;     /**< carried */
    uint16_t fldValue2;     /**< carried */
    uint32_t fldValue3;     /**< carried */
    uint8_t fldFlag;        /**< carried */
    wchar_t* wideText;      /**< shared with the I record */
    char* narrowText;       /**< shared with the I record */
    int32_t wideTextLen;    /**< bytes */
    int32_t narrowTextLen;  /**< bytes */
} FieldDefX;

/** Field reference, I form: picks a field out of the block's list by position. */
typedef struct FieldRefI {
    struct FieldRefI* link; /**< next reference; NULL at the end */
    int16_t fieldPos;       /**< position in the field list, from 0 */
    FieldDefI* fieldDef;    /**< the field at this position. KORV_IsZeroOrZeroLength reads it in the
                             * embedded node; the conversion does not */
} FieldRefI;

/** Field reference, X form. */
typedef struct FieldRefX {
    struct FieldRefX* link; /**< next reference; NULL at the end */
    uint16_t fieldPos;      /**< the low 16 bits of FieldRefI::fieldPos: -1 becomes 65535 */
    FieldDefX* fieldDef;    /**< borrowed from the block's field list */
} FieldRefX;

/** Control block, I form. Members called reserved are room that the library does not use. */
typedef struct CtrlBlkI {
    BlockHeader header;    /**< the framework's; never read */
    uint8_t blkCode;       /**< carried; KORV_IsZeroOrZeroLength reads it as its copy flag */
    uint8_t reserved1[3];  /**< not used */
    uint16_t blkAttr1;     /**< carried */
    uint16_t blkAttr2;     /**< carried */
    uint16_t blkAttr3;     /**< carried */
    uint16_t blkAttr4;     /**< carried */
    uint16_t blkAttr5;     /**< carried */
    uint8_t blkFlag;       /**< carried */
    uint32_t blkValue1;    /**< carried */
    uint32_t blkValue2;    /**< carried */
    FieldDefI* fieldDefs;  /**< field list; NULL when there are no fields */
    uint32_t reserved2[2]; /**< not used */
    uint32_t blkValue3;    /**< carried */
    struct ErrorAnchor* errorAnchor; /**< the request's error chain */
    uint32_t reserved3[10];          /**< not used */
    FieldRefI fieldRefs;             /**< first reference node; the others hang from its link */
} CtrlBlkI;

/** Control block, X form: header "BLKX", 21, 56. It owns its field list and the reference nodes
 * after the embedded one. */
typedef struct CtrlBlkX {
    BlockHeader header;   /**< "BLKX", 21, 56 */
    uint8_t blkCode;      /**< carried */
    uint8_t reserved1;    /**< never written by the library */
    uint16_t blkAttr1;    /**< carried */
    uint16_t blkAttr2;    /**< carried */
    uint16_t blkAttr3;    /**< carried */
    uint16_t blkAttr4;    /**< carried */
    uint16_t blkAttr5;    /**< carried */
    uint8_t blkFlag;      /**< carried */
    uint32_t blkValue1;   /**< carried */
    uint32_t blkValue2;   /**< carried */
    FieldDefX* fieldDefs; /**< field list, owned */
    uint32_t blkSlot;     /**< the caller's; never written by the library */
    uint32_t blkValue3;   /**< carried */
    FieldRefX fieldRefs;  /**< first reference node; the others, owned, hang from its link */
} CtrlBlkX;

/** Kinds of an operand's value (OprDef::valueKind). Any other kind means an opaque 32-bit value in
 * otherValue. */
typedef enum OprValueKind {
    OPR_VALUE_NONE = 0,    /**< no value */
    OPR_VALUE_INTEGER = 1, /**< intValue */
    OPR_VALUE_WIDE = 2,    /**< wideValue */
    OPR_VALUE_NARROW = 3   /**< narrowValue, with a wide copy in wideValue */
} OprValueKind;

/** Operand definition, one layout for both forms: a parameter of a service.
 * X form: header "OPRX", 21, 72; its texts are shared with the I record. */
typedef struct OprDef {
    struct OprDef* link;     /**< next operand; NULL at the end */
    BlockHeader header;      /**< X form: "OPRX", 21, 72 */
    uint16_t oprCode;        /**< carried */
    wchar_t* oprText;        /**< owned by the I record */
    uint32_t oprValue1;      /**< carried */
    uint8_t oprFlag;         /**< carried */
    uint32_t oprValue2;      /**< carried */
    uint32_t oprTextLen;     /**< bytes of oprText */
    int32_t valueKind;       /**< OprValueKind */
    uint8_t valueFlag;       /**< conversion flag of a narrow value */
    int32_t valueCodePage;   /**< of a narrow value, as given, or KORV_CODEPAGE_NOT_GIVEN */
    uint32_t narrowValueLen; /**< bytes of narrowValue, terminator included */
    uint32_t wideValueLen;   /**< bytes of wideValue, terminator included */
    uint32_t intValue;       /**< kind 1 */
    wchar_t* wideValue;      /**< kinds 2 and 3; zero-terminated; owned by the I record */
    char* narrowValue;       /**< kind 3; zero-terminated; owned by the I record */
    uint32_t otherValue;     /**< value of any kind other than 0 to 3 */
} OprDef;
typedef OprDef OprDefI; /**< an operand in the framework's list */
typedef OprDef OprDefX; /**< an operand in the provider's list */

/** Service definition, I form. */
typedef struct SvcDefI {
    BlockHeader header; /**< the framework's; never read */
    uint8_t svcCode1;   /**< carried */
    uint8_t svcCode2;   /**< carried */
    uint16_t svcAttr1;  /**< carried */
    uint16_t svcAttr2;  /**< carried */
    uint8_t svcFlag;    /**< carried */
    uint32_t svcValue;  /**< carried */
    OprDefI* oprDefs;   /**< operand list */
} SvcDefI;

/** Service definition, X form: header "SVCX", 21, 28. */
typedef struct SvcDefX {
    BlockHeader header;   /**< "SVCX", 21, 28 */
    uint8_t svcCode1;     /**< carried */
    uint8_t svcCode2;     /**< carried */
    uint16_t svcAttr1;    /**< carried */
    uint16_t svcAttr2;    /**< carried */
    uint8_t svcFlag;      /**< carried */
    uint32_t svcValue;    /**< carried */
    OprDefX* oprDefs;     /**< owned */
    FieldDefX* fieldDefs; /**< borrowed: the field list of the block it was converted for */
} SvcDefX;

/* ---- The framework's descriptions ------------------------------------------------------------ */

/** Value of TextDesc::codePage when no code page is given. */
#define KORV_CODEPAGE_NOT_GIVEN INT32_MIN

/** Text descriptor. In a wide text (FieldDesc with a wide mode, OPR_VALUE_WIDE, ParamDesc::oprText)
 * head holds wideText; in a narrow text (KORV_TEXT_NARROW, OPR_VALUE_NARROW) it holds flag. */
typedef struct TextDesc {
    /** Pointer to the wide text, or conversion flag of the narrow text. */
    union {
        const wchar_t* wideText; /**< wide text */
        uint8_t flag;            /**< narrow text: the conversion flag, in the first byte */
    } head;                      /**< see the record */
    int32_t codePage;            /**< of the narrow text, or KORV_CODEPAGE_NOT_GIVEN */
    const char* narrowText;      /**< narrow text */
} TextDesc;

/** Text mode of narrow text, for FieldDesc::textMode and the argument of CopyPrvStruct. Any other
 * mode means wide text. */
#define KORV_TEXT_NARROW 'M'
/** Value of ParamDesc::oprTextMode when there is an operand text. Any other mode means none. */
#define KORV_TEXT_WIDE 'W'

/** Field description, read by CopyFieldStruct. */
typedef struct FieldDesc {
    uint32_t reserved1[3]; /**< not read */
    int16_t dataType;      /**< data type code */
    uint32_t length;       /**< declared length */
    uint32_t fldValue1;    /**< carried */
    uint16_t fldValue2;    /**< carried */
    uint32_t fldValue3;    /**< carried */
    uint8_t fldFlag;       /**< carried */
    int32_t textLen;       /**< bytes of the text, without terminator; wide: a multiple of 4 */
    uint8_t textMode;      /**< KORV_TEXT_NARROW, or wide */
    const TextDesc* text;  /**< the text, or NULL */
} FieldDesc;

/** Parameter description, read by CopyParamsStruct. */
typedef struct ParamDesc {
    uint32_t reserved1[3];   /**< not read */
    uint16_t oprCode;        /**< carried */
    uint8_t oprTextMode;     /**< KORV_TEXT_WIDE, or no operand text */
    uint32_t oprTextLen;     /**< bytes of the operand text, terminator included */
    const TextDesc* oprText; /**< only its wide text is used */
    int32_t valueKind;       /**< OprValueKind */
    int32_t valueLen; /**< bytes of a text value, without terminator; wide: a multiple of 4 */
    /** The value. */
    union {
        uint32_t number;      /**< kind 1, and every opaque kind */
        const TextDesc* text; /**< kinds 2 and 3 */
    } value;                  /**< by its kind */
} ParamDesc;

/** Provider description, read by CopyPrvStruct. */
typedef struct PrvDesc {
    uint32_t reserved1[3]; /**< not read */
    uint8_t prvCode1;      /**< carried */
    uint8_t prvCode2;      /**< carried */
    uint16_t prvAttr1;     /**< carried */
    uint32_t prvAttr2;     /**< the low 16 bits are copied */
    uint32_t text1Len;     /**< characters of text1, or 0: up to its terminator. Read with
                            * KORV_TEXT_NARROW only; see KORVCnvWVarcharSzToVarcharSz */
    uint32_t text2Len;     /**< the same for text2 */
    const wchar_t* text1;  /**< zero-terminated */
    const wchar_t* text2;  /**< zero-terminated */
} PrvDesc;

/** Provider record, filled by CopyPrvStruct. */
typedef struct PrvRecord {
    uint32_t reserved1; /**< not written */
    uint8_t prvCode1;   /**< carried */
    uint8_t prvCode2;   /**< carried */
    uint16_t prvAttr1;  /**< carried */
    uint16_t prvAttr2;  /**< carried */
    uint32_t text1Cap;  /**< bytes of the buffer texts[0] */
    uint32_t text2Cap;  /**< bytes of the buffer texts[1] */
    void** texts;       /**< two buffers of the caller: of char with KORV_TEXT_NARROW, otherwise of
                         * wchar_t */
} PrvRecord;

/* ---- Conversion ------------------------------------------------------------------------------ */

/** KORVCnvCtrlBlkFromIToX fills an X block from an I block: header, carried members, a field
 * definition for each field, and a reference node for each reference.
 *
 * reserved1 and blkSlot are not written. If the I block has no fields, fieldDefs is not written
 * either. Otherwise fieldDefs is overwritten, and a list that it held before is not released.
 * Reference nodes that are already linked to the X block are filled again; nodes after the
 * counterpart of the last I node stay linked.
 *
 * The fieldDef of a reference is the record that fieldPos steps from the first record of the X
 * block's fieldDefs lead to, also in a list that the caller left there. Zero and negative positions
 * name the first record. A position past the end of the list gives the address one FieldDefX beyond
 * the last record, never NULL: it may be compared, but not read. If the X block's fieldDefs is
 * NULL, every fieldDef is NULL.
 *
 * If memory runs out, the X block's fieldDefs and every node after the embedded one are released,
 * and both pointers become NULL. This includes nodes that the caller had linked and, if the I block
 * has no fields, the caller's field list: they must come from malloc(). The header and the carried
 * members remain written. After KORV_NO_MEMORY_REFERENCE the fieldDef of the embedded node is no
 * longer valid. The X block itself is not released. CleanCtrlBlkX releases what was built.
 *
 * @code
 * CtrlBlkX* block = calloc(1, sizeof *block);
 * if (KORVCnvCtrlBlkFromIToX(&request, block) == KORV_SUCCESS) {
 *     // block->fieldRefs.fieldDef is the field that the first reference names
 * }
 * CleanCtrlBlkX(block);
 * @endcode
 *
 * @param      source  the framework's block
 * @param[out] target  zero-filled; taken from malloc(), if CleanCtrlBlkX is to release it
 * @retval KORV_SUCCESS             converted
 * @retval KORV_FAILURE             an argument is NULL; nothing is written
 * @retval KORV_NO_MEMORY_FIELD     no memory for a field definition
 * @retval KORV_NO_MEMORY_REFERENCE no memory for a reference node */
KORV_API int32_t KORVCnvCtrlBlkFromIToX(const CtrlBlkI* source, CtrlBlkX* target);

/** KORVCnvFieldDefFromIToX fills one X field definition. Its link becomes NULL. The texts are
 * shared.
 *
 * @param      source  the framework's field
 * @param[out] target  the provider's
 * @retval KORV_SUCCESS converted
 * @retval KORV_FAILURE an argument is NULL; nothing is written */
KORV_API int32_t KORVCnvFieldDefFromIToX(const FieldDefI* source, FieldDefX* target);

/** KORVCnvOprDefFromIToX fills one X operand. The texts are shared; the link is not touched.
 *
 * @param      source  the framework's operand
 * @param[out] target  the provider's
 * @retval KORV_SUCCESS converted
 * @retval KORV_FAILURE an argument is NULL; nothing is written */
KORV_API int32_t KORVCnvOprDefFromIToX(const OprDefI* source, OprDefX* target);

/** KORVCnvSvcDefFromIToX fills an X service definition with an X operand for each I operand, and
 * borrows the field list of a block. An operand list that it held before is overwritten, not
 * released. CleanSvcDefX releases what was built.
 *
 * @param      block   not NULL. Convert it first: the service gets the field list that the block
 *                     has now, and must not use it after CleanCtrlBlkX
 * @param      source  the framework's service definition
 * @param[out] target  zero-filled; taken from malloc(), if CleanSvcDefX is to release it
 * @retval KORV_SUCCESS           converted
 * @retval KORV_FAILURE           source or target is NULL; nothing is written
 * @retval KORV_NO_MEMORY_OPERAND no memory for an operand: oprDefs is released and set to NULL, the
 *                                other members are written */
KORV_API int32_t KORVCnvSvcDefFromIToX(const CtrlBlkX* block, const SvcDefI* source,
                                       SvcDefX* target);

/** DuplicateFieldDefI makes a deep copy of a field definition. The link of the copy is NULL. A text
 * that is NULL, or whose length is zero or negative, is not copied: its pointer is NULL in the
 * copy, and its length is copied unchanged. Note the order of the arguments: target first.
 *
 * When memory runs out, no text is left in the copy, and its other members are written.
 *
 * @param[out] target  the copy, whose texts are the caller's to free(); what it held before is
 *                     overwritten, not released
 * @param      source  the field
 * @retval KORV_SUCCESS               copied
 * @retval KORV_FAILURE               an argument is NULL; nothing is written
 * @retval KORV_NO_MEMORY_NARROW_TEXT no memory for the narrow text
 * @retval KORV_NO_MEMORY_WIDE_TEXT   no memory for the wide text */
KORV_API int32_t DuplicateFieldDefI(FieldDefI* target, const FieldDefI* source);

/* ---- Release --------------------------------------------------------------------------------- */

/** CleanCtrlBlkX releases the field list, the chained reference nodes and the block itself. Texts
 * are not touched.
 *
 * @param block  from malloc(), or NULL; invalid after the call
 * @retval KORV_SUCCESS always */
KORV_API int32_t CleanCtrlBlkX(CtrlBlkX* block);

/** CleanSvcDefX releases the operand list and the service definition itself. Texts and the borrowed
 * field list are not touched.
 *
 * @param service  from malloc(), or NULL; invalid after the call
 * @retval KORV_SUCCESS always */
KORV_API int32_t CleanSvcDefX(SvcDefX* service);

/** CleanParamsX releases a list of X operands. Texts are not touched.
 *
 * @param first  the first operand, or NULL; each one from malloc(), and invalid after the call. A
 *               pointer to the list, such as SvcDefX::oprDefs, is not cleared
 * @retval KORV_SUCCESS always */
KORV_API int32_t CleanParamsX(OprDefX* first);

/* ---- Copies of the framework's descriptions -------------------------------------------------- */

/** CopyParamsStruct fills an operand from a parameter description: oprCode, valueKind, the operand
 * text with its length when oprTextMode is KORV_TEXT_WIDE, and the value by its kind.
 *
 * oprValue1, oprFlag, oprValue2, link and header are not touched; nor are members of other kinds of
 * value, nor oprText and oprTextLen without an operand text. If the text of the value is NULL or
 * its length is 0, the text members of the kind become NULL and their lengths 0. The operand text
 * is copied as it is stored: it is zero-terminated only if oprTextLen includes the terminator.
 * valueCodePage and valueFlag take the descriptor's values, also when the defaults are used; for a
 * NULL or empty text they are not touched.
 *
 * Texts are copied into buffers of the process heap that the target owns and the caller releases
 * with free(). Pointers that the target held before are overwritten, not released. Nothing is
 * rolled back on failure: members and buffers written before it stay in the target, and the pointer
 * to a buffer that could not be allocated becomes NULL. When a narrow text is widened, the code
 * page and flag of its descriptor are used, or, if that code page is KORV_CODEPAGE_NOT_GIVEN, the
 * defaults.
 *
 * @param         source           value.text must be a valid descriptor for kinds 2 and 3 with a
 *                                 length above 0, and oprText one with a wide text when an operand
 *                                 text is present
 * @param[in,out] target           the operand
 * @param         defaultCodePage  code page for a narrow text without one of its own
 * @param         defaultFlag      conversion flag for a narrow text without a code page of its own
 * @retval KORV_SUCCESS                copied
 * @retval KORV_NO_MEMORY_WIDE_VALUE   no memory for the operand text or a wide value
 * @retval KORV_BAD_VALUE_LENGTH       negative value length
 * @retval KORV_NO_MEMORY_NARROW_VALUE no memory for a narrow value
 * @return otherwise a code of the companion library, unchanged (wideValueLen stays as it was) */
KORV_API int32_t CopyParamsStruct(const ParamDesc* source, OprDefI* target,
                                  uint32_t defaultCodePage, uint8_t defaultFlag);

/** CopyFieldStruct fills a field definition from a field description.
 *
 * link, header and fldExtra are not touched. With a narrow text, narrowText becomes a copy and
 * wideText its wide form. With a wide text only wideText and wideTextLen are written. If the
 * descriptor or the text of the mode is NULL, the text members are not touched and the result is
 * KORV_SUCCESS, whatever the length.
 *
 * The length of a wide text is not checked: 0 gives an empty string, -4 to -1 a block of length + 4
 * bytes, which has no room for a terminator, and a length below -4 gives KORV_NO_MEMORY_WIDE_TEXT.
 * wideTextLen is length + 4 in every case.
 *
 * Ownership, failure and widening are as described for CopyParamsStruct.
 *
 * @param         source           the description
 * @param[in,out] target           the field
 * @param         defaultCodePage  code page for a narrow text without one of its own
 * @param         defaultFlag      conversion flag for a narrow text without a code page of its own
 * @retval KORV_SUCCESS               copied
 * @retval KORV_BAD_TEXT_LENGTH       a narrow text has a zero or negative length
 * @retval KORV_NO_MEMORY_WIDE_TEXT   no memory for the wide text
 * @retval KORV_NO_MEMORY_NARROW_TEXT no memory for the narrow text
 * @return otherwise a code of the companion library, unchanged (wideTextLen stays as it was) */
KORV_API int32_t CopyFieldStruct(const FieldDesc* source, FieldDefI* target,
                                 uint32_t defaultCodePage, uint8_t defaultFlag);

/** CopyPrvStruct fills a provider record. Note the order of the arguments: target first.
 *
 * With text mode KORV_TEXT_NARROW the texts are narrowed by the companion library into the caller's
 * two buffers. With any other mode they are copied as wide text, at most capacity / 4 characters. A
 * shorter text is padded with zeros. A text of that many characters or more fills the buffer: it is
 * cut if necessary, and is not terminated.
 *
 * If text 1 cannot be narrowed, text 2 is not, and its buffer is left alone. The codes and
 * attributes are written in any case. The buffer of the text that failed holds what the companion
 * library left there (the stand-in: only a terminator, if there is room).
 *
 * @param[in,out] target    the record, with its buffers and their capacities
 * @param         source    the description
 * @param         codePage  code page of the narrow texts; read with KORV_TEXT_NARROW only
 * @param         flag      conversion flag of the narrow texts; read with KORV_TEXT_NARROW only
 * @param         textMode  KORV_TEXT_NARROW, or wide
 * @retval KORV_SUCCESS copied
 * @return otherwise a code of the companion library, unchanged */
KORV_API int32_t CopyPrvStruct(PrvRecord* target, const PrvDesc* source, uint32_t codePage,
                               uint8_t flag, uint8_t textMode);

/* ---- Providers ------------------------------------------------------------------------------- */

/** GetProviderID returns the number of a masking provider. The numbers are irregular, as providers
 * expect them:
 *
 *     CCN 1, NID 2, EML 3, AFF 4, COL 4, AGE 6, HASH 5, LKP 7, DSWAP 8, CDSWAP 10, DDSWAP 9
 *
 * @param name  zero-terminated; compared as a whole and without regard to the case of ASCII letters
 * @return the number, or KORV_PROVIDER_UNKNOWN for any other name */
KORV_API int32_t GetProviderID(const char* name);

/** Returned by GetProviderID for an unknown name. */
#define KORV_PROVIDER_UNKNOWN 11

#ifdef __cplusplus
}
#endif

#endif
