/** @file
 * Control blocks: the request records in both forms, their conversion and release, copies of the
 * framework's descriptions, and the numbers of the masking providers.
 *
 * The framework builds a request in the I form; the library turns it into the X form that providers
 * read, and releases the X form again. Members marked "carried" belong to the framework and its
 * providers: the library moves them and gives them no meaning. An X record shares the text buffers
 * of the I record that it was made from; releasing it leaves them alone.
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

/** Field definition, I form: one data item that a provider works on. 56 bytes. */
typedef struct FieldDefI {
    struct FieldDefI* link; /**< next field definition; NULL at the end */
    BlockHeader header;     /**< the framework's; never read */
    int16_t dataType;       /**< data type code, korv/datatypes.h */
    uint32_t length;        /**< declared length; characters for character types */
    uint32_t fldValue1;     /**< carried */
    uint16_t fldValue2;     /**< carried */
    uint32_t fldValue3;     /**< carried */
    uint8_t fldFlag;        /**< carried */
    uint32_t fldExtra;      /**< I form only; not copied into the X form */
    wchar_t* wideText;      /**< zero-terminated; owned by this record */
    char* narrowText;       /**< the same text, terminated, or NULL when the source was wide */
    int32_t wideTextLen;    /**< bytes of the wideText buffer, terminator included */
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
    FieldDefI* fieldDef;    /**< the field there; read by KORV_IsZeroOrZeroLength, not converted */
} FieldRefI;

/** Field reference, X form. */
typedef struct FieldRefX {
    struct FieldRefX* link; /**< next reference; NULL at the end */
    uint16_t fieldPos;      /**< position in the field list, as the I form has it */
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

/** What OprDef::valueKind says of an operand's value. Any other kind has an opaque 32-bit value. */
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
    wchar_t* oprText;        /**< zero-terminated; owned by the I record */
    uint32_t oprValue1;      /**< carried */
    uint8_t oprFlag;         /**< carried */
    uint32_t oprValue2;      /**< carried */
    uint32_t oprTextLen;     /**< bytes of the oprText buffer */
    int32_t valueKind;       /**< OprValueKind */
    uint8_t valueFlag;       /**< conversion flag of a narrow value */
    int32_t valueCodePage;   /**< of a narrow value, as given, or KORV_CODEPAGE_NOT_GIVEN */
    uint32_t narrowValueLen; /**< bytes of narrowValue, terminator included */
    uint32_t wideValueLen;   /**< bytes of wideValue, terminator included */
    uint32_t intValue;       /**< kind 1 */
    wchar_t* wideValue;      /**< kinds 2 and 3; zero-terminated; owned by the I record */
    char* narrowValue;       /**< kind 3; zero-terminated; owned by the I record */
    uint32_t otherValue;     /**< any kind but 0 to 3 */
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

/** TextDesc::codePage when the text does not say its code page. */
#define KORV_CODEPAGE_NOT_GIVEN INT32_MIN

/** Text descriptor. Which member of head is meant depends on the text's mode. */
typedef struct TextDesc {
    /** A text, or what is to be known of its narrow form. */
    union {
        const wchar_t* wideText; /**< wide text */
        uint8_t flag;            /**< narrow text: the conversion flag, in the first byte */
    } head;                      /**< by the text's mode */
    int32_t codePage;            /**< of the narrow text, or KORV_CODEPAGE_NOT_GIVEN */
    const char* narrowText;      /**< narrow text */
} TextDesc;

/** Mode of a narrow text, in FieldDesc::textMode and of CopyPrvStruct; any other is wide. */
#define KORV_TEXT_NARROW 'M'
/** ParamDesc::oprTextMode: a wide text is present. With any other mode there is no operand text. */
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
    int32_t textLen;       /**< bytes of the text, without terminator */
    uint8_t textMode;      /**< KORV_TEXT_NARROW, or wide */
    const TextDesc* text;  /**< the text, or NULL */
} FieldDesc;

/** Parameter description, read by CopyParamsStruct. */
typedef struct ParamDesc {
    uint32_t reserved1[3];   /**< not read */
    uint16_t oprCode;        /**< carried */
    uint8_t oprTextMode;     /**< KORV_TEXT_WIDE, or no operand text */
    uint32_t oprTextLen;     /**< bytes of the operand text as stored */
    const TextDesc* oprText; /**< only its wide text is used */
    int32_t valueKind;       /**< OprValueKind */
    int32_t valueLen;        /**< bytes of a text value, without terminator */
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
    uint32_t text1Len;     /**< as the wide-to-narrow conversion expects it, korv/datacnv.h */
    uint32_t text2Len;     /**< the same of text2 */
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
    void** texts;       /**< two buffers of the caller's: char or wchar_t by the text mode */
} PrvRecord;

/* ---- Conversion ------------------------------------------------------------------------------ */

/** KORVCnvCtrlBlkFromIToX fills an X block from an I block: header, carried members, a field
 * definition for each field, and a reference node for each reference.
 *
 * Every member is written except reserved1 and blkSlot. If the I block has no fields, fieldDefs
 * stays as the caller set it. Otherwise fieldDefs is overwritten, and a list that it held before is
 * not released. Reference nodes that are already linked to the X block are filled again; nodes
 * after the counterpart of the last I node stay linked.
 *
 * A reference's fieldDef is found by fieldPos steps from the block's first field. Zero and negative
 * positions name the first field. A position past the end of the list gives the address one
 * FieldDefX beyond the last record, never NULL: it may be compared, but not read. In a block
 * without fields every fieldDef is NULL.
 *
 * If memory runs out, the X block has no fields and no nodes after the embedded one: all are
 * released, including those that the caller had put there. The header and the carried members
 * remain written. After KORV_NO_MEMORY_REFERENCE the fieldDef of the embedded node points to a
 * released record. CleanCtrlBlkX releases what was built.
 *
 * @code
 * CtrlBlkX* block = calloc(1, sizeof *block);
 * if (KORVCnvCtrlBlkFromIToX(&request, block) == KORV_SUCCESS) {
 *     // block->fieldRefs.fieldDef is the field that the request means
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
 * @param      block   must be valid and should be converted already
 * @param      source  the framework's service definition
 * @param[out] target  zero-filled; taken from malloc(), if CleanSvcDefX is to release it
 * @retval KORV_SUCCESS           converted
 * @retval KORV_FAILURE           source or target is NULL; nothing is written
 * @retval KORV_NO_MEMORY_OPERAND no memory for an operand: oprDefs is released and set to NULL, the
 *                                other members are written */
KORV_API int32_t KORVCnvSvcDefFromIToX(const CtrlBlkX* block, const SvcDefI* source,
                                       SvcDefX* target);

/** DuplicateFieldDefI makes a deep copy of a field definition, whose link is NULL. A text whose
 * length is zero or negative is not copied: its pointer is NULL in the copy. Note the order of the
 * arguments: target first.
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
 * @param first  the first operand, or NULL; invalid after the call
 * @retval KORV_SUCCESS always */
KORV_API int32_t CleanParamsX(OprDefX* first);

/* ---- Copies of the framework's descriptions -------------------------------------------------- */

/** CopyParamsStruct fills an operand from a parameter description: oprCode, valueKind, the operand
 * text with its length when oprTextMode is KORV_TEXT_WIDE, and the value by its kind.
 *
 * oprValue1, oprFlag, oprValue2, link and header are not touched; nor are members of other kinds of
 * value. If the text of the value is NULL or its length is 0, the text members of the kind become
 * NULL and their lengths 0.
 *
 * Texts are copied into buffers of the process heap that the target owns and the caller releases
 * with free(). Nothing is rolled back on failure: members and buffers written before it stay in the
 * target, and the pointer to a buffer that could not be allocated becomes NULL. When a narrow text
 * is widened, the code page and flag of its descriptor are used, or, if that code page is
 * KORV_CODEPAGE_NOT_GIVEN, the defaults.
 *
 * @param         source           value.text must be a valid descriptor for kinds 2 and 3 with a
 *                                 length above 0, and oprText one when an operand text is present
 * @param[in,out] target           the operand
 * @param         defaultCodePage  for a narrow text that does not give its own
 * @param         defaultFlag      the same
 * @retval KORV_SUCCESS                copied
 * @retval KORV_NO_MEMORY_WIDE_VALUE   no memory for the operand text or a wide value
 * @retval KORV_BAD_VALUE_LENGTH       negative value length
 * @retval KORV_NO_MEMORY_NARROW_VALUE no memory for a narrow value
 * @return otherwise a code of the companion library, unchanged (wideValueLen stays as it was) */
KORV_API int32_t CopyParamsStruct(const ParamDesc* source, OprDefI* target,
                                  uint32_t defaultCodePage, uint8_t defaultFlag);

/** CopyFieldStruct fills a field definition from a field description.
 *
 * link, header and fldExtra are not touched. If the descriptor or its text is NULL, the text
 * members are not touched either. A wide text leaves narrowText and narrowTextLen as they were. The
 * length of a wide text is not checked: a negative length copies nothing, and one below -4 gives
 * KORV_NO_MEMORY_WIDE_TEXT.
 *
 * Ownership, failure and widening are as described for CopyParamsStruct.
 *
 * @param         source           the description
 * @param[in,out] target           the field
 * @param         defaultCodePage  for a narrow text that does not give its own
 * @param         defaultFlag      the same
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
 * two buffers; otherwise they are copied as wide text, at most capacity / 4 characters: a shorter
 * text is padded with zeros, a longer one is cut and then not terminated. After a failure of text
 * 1, text 2 is not converted; members written before remain written.
 *
 * @param[in,out] target    the record, with its buffers and their capacities
 * @param         source    the description
 * @param         codePage  of narrow texts
 * @param         flag      of narrow texts
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

/** What GetProviderID returns for a name that is no provider's. */
#define KORV_PROVIDER_UNKNOWN 11

#ifdef __cplusplus
}
#endif

#endif
