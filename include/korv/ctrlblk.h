/* Control blocks: the request records in both forms, their conversion and release, copies of the
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
 */
#ifndef KORV_CTRLBLK_H
#define KORV_CTRLBLK_H

#include "korv/base.h"

#ifdef __cplusplus
extern "C" {
#endif

struct ErrorAnchor; /* korv/errors.h */

/* ---- Records of a request -------------------------------------------------------------------- */

/* Field definition, I form: one data item that a provider works on. 56 bytes. */
typedef struct FieldDefI {
    struct FieldDefI* link; /* next field definition; empty at the end */
    BlockHeader header;     /* the framework's; never read */
    int16_t dataType;       /* data type code, korv/datatypes.h */
    uint32_t length;        /* declared length; characters for character types */
    uint32_t fldValue1;     /* carried */
    uint16_t fldValue2;     /* carried */
    uint32_t fldValue3;     /* carried */
    uint8_t fldFlag;        /* carried */
    uint32_t fldExtra;      /* I form only; not copied into the X form */
    wchar_t* wideText;      /* zero-terminated; owned by this record */
    char* narrowText;       /* the same text, zero-terminated, or empty when the source was wide */
    int32_t wideTextLen;    /* bytes of the wideText buffer, terminator included */
    int32_t narrowTextLen;  /* bytes of the narrowText buffer, terminator included */
} FieldDefI;

/* Field definition, X form: header "FLDX", 21, 52. Owned by the control block that lists it. */
typedef struct FieldDefX {
    struct FieldDefX* link;
    BlockHeader header;
    int16_t dataType;
    uint32_t length;
    uint32_t fldValue1;
    uint16_t fldValue2;
    uint32_t fldValue3;
    uint8_t fldFlag;
    wchar_t* wideText;     /* shared with the I record */
    char* narrowText;      /* shared with the I record */
    int32_t wideTextLen;   /* bytes */
    int32_t narrowTextLen; /* bytes */
} FieldDefX;

/* Field reference, I form: picks a field out of the block's list by position. */
typedef struct FieldRefI {
    struct FieldRefI* link;
    int16_t fieldPos;    /* position in the field list, from 0 */
    FieldDefI* fieldDef; /* the field there; read by KORV_IsZeroOrZeroLength, not converted */
} FieldRefI;

/* Field reference, X form. */
typedef struct FieldRefX {
    struct FieldRefX* link;
    uint16_t fieldPos;
    FieldDefX* fieldDef; /* borrowed from the block's field list */
} FieldRefX;

/* Control block, I form. Members called reserved are room that the library does not use. */
typedef struct CtrlBlkI {
    BlockHeader header; /* the framework's; never read */
    uint8_t blkCode;    /* carried; KORV_IsZeroOrZeroLength reads it as its copy flag */
    uint8_t reserved1[3];
    uint16_t blkAttr1;               /* carried, as all blkAttr, blkFlag and blkValue members */
    uint16_t blkAttr2;
    uint16_t blkAttr3;
    uint16_t blkAttr4;
    uint16_t blkAttr5;
    uint8_t blkFlag;
    uint32_t blkValue1;
    uint32_t blkValue2;
    FieldDefI* fieldDefs;            /* field list; empty when there are no fields */
    uint32_t reserved2[2];
    uint32_t blkValue3;
    struct ErrorAnchor* errorAnchor; /* the request's error chain */
    uint32_t reserved3[10];
    FieldRefI fieldRefs;             /* first reference node; the others hang from its link */
} CtrlBlkI;

/* Control block, X form: header "BLKX", 21, 56. It owns its field list and the reference nodes
 * behind the embedded one. */
typedef struct CtrlBlkX {
    BlockHeader header;
    uint8_t blkCode;
    uint8_t reserved1; /* never written by the library */
    uint16_t blkAttr1;
    uint16_t blkAttr2;
    uint16_t blkAttr3;
    uint16_t blkAttr4;
    uint16_t blkAttr5;
    uint8_t blkFlag;
    uint32_t blkValue1;
    uint32_t blkValue2;
    FieldDefX* fieldDefs;
    uint32_t blkSlot; /* the caller's; never written by the library */
    uint32_t blkValue3;
    FieldRefX fieldRefs;
} CtrlBlkX;

/* What OprDef::valueKind says of an operand's value. Any other kind has an opaque 32-bit value. */
typedef enum OprValueKind {
    OPR_VALUE_NONE = 0,
    OPR_VALUE_INTEGER = 1, /* intValue */
    OPR_VALUE_WIDE = 2,    /* wideValue */
    OPR_VALUE_NARROW = 3   /* narrowValue, with a wide copy in wideValue */
} OprValueKind;

/* Operand definition, one layout for both forms: a parameter of a service.
 * X form: header "OPRX", 21, 72; its texts are shared with the I record. */
typedef struct OprDef {
    struct OprDef* link;
    BlockHeader header;
    uint16_t oprCode;        /* carried */
    wchar_t* oprText;        /* zero-terminated; owned by the I record */
    uint32_t oprValue1;      /* carried */
    uint8_t oprFlag;         /* carried */
    uint32_t oprValue2;      /* carried */
    uint32_t oprTextLen;     /* bytes of the oprText buffer */
    int32_t valueKind;       /* OprValueKind */
    uint8_t valueFlag;       /* conversion flag of a narrow value */
    int32_t valueCodePage;   /* code page of a narrow value as given, or KORV_CODEPAGE_NOT_GIVEN */
    uint32_t narrowValueLen; /* bytes of narrowValue, terminator included */
    uint32_t wideValueLen;   /* bytes of wideValue, terminator included */
    uint32_t intValue;       /* kind 1 */
    wchar_t* wideValue;      /* kinds 2 and 3; zero-terminated; owned by the I record */
    char* narrowValue;       /* kind 3; zero-terminated; owned by the I record */
    uint32_t otherValue;     /* any kind but 0 to 3 */
} OprDef;
typedef OprDef OprDefI;
typedef OprDef OprDefX;

/* Service definition, I form. */
typedef struct SvcDefI {
    BlockHeader header; /* the framework's; never read */
    uint8_t svcCode1;   /* carried, as all members up to svcValue */
    uint8_t svcCode2;
    uint16_t svcAttr1;
    uint16_t svcAttr2;
    uint8_t svcFlag;
    uint32_t svcValue;
    OprDefI* oprDefs; /* operand list */
} SvcDefI;

/* Service definition, X form: header "SVCX", 21, 28. */
typedef struct SvcDefX {
    BlockHeader header;
    uint8_t svcCode1;
    uint8_t svcCode2;
    uint16_t svcAttr1;
    uint16_t svcAttr2;
    uint8_t svcFlag;
    uint32_t svcValue;
    OprDefX* oprDefs;     /* owned */
    FieldDefX* fieldDefs; /* borrowed: the field list of the block it was converted for */
} SvcDefX;

/* ---- The framework's descriptions ------------------------------------------------------------ */

/* TextDesc::codePage when the text does not say its code page. */
#define KORV_CODEPAGE_NOT_GIVEN INT32_MIN

/* Text descriptor. Which member of head is meant depends on the text's mode. */
typedef struct TextDesc {
    union {
        const wchar_t* wideText; /* wide text */
        uint8_t flag;            /* narrow text: the conversion flag, in the first byte */
    } head;
    int32_t codePage;       /* of the narrow text, or KORV_CODEPAGE_NOT_GIVEN */
    const char* narrowText; /* narrow text */
} TextDesc;

/* Modes of the texts in descriptions. */
#define KORV_TEXT_NARROW 'M' /* FieldDesc::textMode and CopyPrvStruct: narrow; any other is wide */
#define KORV_TEXT_WIDE 'W'   /* ParamDesc::oprTextMode: a wide text is present; any other is none */

/* Field description, read by CopyFieldStruct. */
typedef struct FieldDesc {
    uint32_t reserved1[3];
    int16_t dataType;
    uint32_t length;
    uint32_t fldValue1;
    uint16_t fldValue2;
    uint32_t fldValue3;
    uint8_t fldFlag;
    int32_t textLen;  /* bytes of the text, without terminator */
    uint8_t textMode; /* KORV_TEXT_NARROW, or wide */
    const TextDesc* text;
} FieldDesc;

/* Parameter description, read by CopyParamsStruct. */
typedef struct ParamDesc {
    uint32_t reserved1[3];
    uint16_t oprCode;
    uint8_t oprTextMode;     /* KORV_TEXT_WIDE, or no operand text */
    uint32_t oprTextLen;     /* bytes of the operand text as stored */
    const TextDesc* oprText; /* only its wide text is used */
    int32_t valueKind;       /* OprValueKind */
    int32_t valueLen;        /* bytes of a text value, without terminator */
    union {
        uint32_t number;      /* kind 1, and every opaque kind */
        const TextDesc* text; /* kinds 2 and 3 */
    } value;
} ParamDesc;

/* Provider description, read by CopyPrvStruct. */
typedef struct PrvDesc {
    uint32_t reserved1[3];
    uint8_t prvCode1;
    uint8_t prvCode2;
    uint16_t prvAttr1;
    uint32_t prvAttr2;    /* the low 16 bits are copied */
    uint32_t text1Len;    /* as the wide-to-narrow conversion expects it, korv/datacnv.h */
    uint32_t text2Len;
    const wchar_t* text1; /* zero-terminated */
    const wchar_t* text2;
} PrvDesc;

/* Provider record, filled by CopyPrvStruct. */
typedef struct PrvRecord {
    uint32_t reserved1; /* not written */
    uint8_t prvCode1;
    uint8_t prvCode2;
    uint16_t prvAttr1;
    uint16_t prvAttr2;
    uint32_t text1Cap; /* bytes of the buffer texts[0] */
    uint32_t text2Cap; /* bytes of the buffer texts[1] */
    void** texts;      /* two buffers of the caller's: char or wchar_t by the text mode */
} PrvRecord;

/* ---- Conversion ------------------------------------------------------------------------------ */

/* KORVCnvCtrlBlkFromIToX fills the X block `target` from the I block `source`: header, carried
 * members, a field definition for each of the I block's, and a reference node for each of its.
 *
 * Written: everything but reserved1 and blkSlot. With an empty I field list fieldDefs stays as the
 * caller set it; a list that it held before is otherwise dropped, not released. Reference nodes
 * that already hang from the X block are filled again; nodes beyond the last I node stay linked.
 *
 * A reference's fieldDef is found by fieldPos steps from the block's first field. Zero and negative
 * positions name the first field. A position past the end of the list gives the address one
 * FieldDefX beyond the last record, never an empty pointer: it may be compared, not read. In a
 * block without fields every fieldDef is empty.
 *
 * Returns 0; -1 when an argument is empty (nothing is written); 99 or 100 when memory runs out for
 * a field definition or a reference node. After 99 and 100 the X block has no fields and no nodes
 * behind the embedded one (all are released), while header and carried members stay written; after
 * 100 the embedded node's fieldDef names a released record. CleanCtrlBlkX releases what was built.
 * */
KORV_API int32_t KORVCnvCtrlBlkFromIToX(const CtrlBlkI* source, CtrlBlkX* target);

/* KORVCnvFieldDefFromIToX fills one X field definition and empties its link. The texts are shared.
 * Returns 0, or -1 when an argument is empty. */
KORV_API int32_t KORVCnvFieldDefFromIToX(const FieldDefI* source, FieldDefX* target);

/* KORVCnvOprDefFromIToX fills one X operand. The texts are shared; the link is not touched.
 * Returns 0, or -1 when an argument is empty. */
KORV_API int32_t KORVCnvOprDefFromIToX(const OprDefI* source, OprDefX* target);

/* KORVCnvSvcDefFromIToX fills the X service definition with an X operand for each I operand, and
 * borrows the field list of `block`, which must be valid and should be converted already.
 *
 * Returns 0; -1 when `source` or `target` is empty; 102 when memory runs out, with oprDefs released
 * and empty and the other members written. CleanSvcDefX releases what was built. */
KORV_API int32_t KORVCnvSvcDefFromIToX(const CtrlBlkX* block, const SvcDefI* source,
                                       SvcDefX* target);

/* DuplicateFieldDefI makes `target` a deep copy of `source` with an empty link. A text whose length
 * is zero or negative is left empty in the copy. The copy's texts are the caller's to free().
 *
 * Note the order: target first. What `target` held before is overwritten, not released.
 * Returns 0; -1 when an argument is empty; 85 or 84 when memory runs out for the narrow or the wide
 * text, with no text left in the copy and its other members written. */
KORV_API int32_t DuplicateFieldDefI(FieldDefI* target, const FieldDefI* source);

/* ---- Release --------------------------------------------------------------------------------- */

/* CleanCtrlBlkX releases the field list, the chained reference nodes and the block itself, which
 * must come from malloc(). Texts are not touched. Returns 0, also for an empty block. */
KORV_API int32_t CleanCtrlBlkX(CtrlBlkX* block);

/* CleanSvcDefX releases the operand list and the service definition itself, which must come from
 * malloc(). Texts and the borrowed field list are not touched. Returns 0, also when empty. */
KORV_API int32_t CleanSvcDefX(SvcDefX* service);

/* CleanParamsX releases a list of X operands. Texts are not touched. Returns 0, also when empty. */
KORV_API int32_t CleanParamsX(OprDefX* first);

/* ---- Copies of the framework's descriptions -------------------------------------------------- */

/* For all three: the texts are copied into buffers of the process heap that the target record owns
 * and the caller releases with free(). Nothing is rolled back on failure: members and buffers
 * written before it stay in the target, and a buffer that could not be had is stored as empty.
 * Where a narrow text is widened, its descriptor's own code page and flag are used, or, when that
 * code page is KORV_CODEPAGE_NOT_GIVEN, the defaults passed in. A non-zero result of the companion
 * conversion library (korv/datacnv.h) is passed on unchanged. */

/* CopyParamsStruct fills an operand from a parameter description: oprCode, valueKind, the operand
 * text with its length when oprTextMode is KORV_TEXT_WIDE, and the value by its kind. oprValue1,
 * oprFlag, oprValue2, link and header are not touched; nor are members of other kinds of value. An
 * empty text value, or one of length 0, empties the kind's text members and lengths.
 *
 * value.text must be a valid descriptor for kinds 2 and 3 with a length above 0, and oprText one
 * when an operand text is present.
 * Returns 0; 78 no memory for the operand text or a wide value; 82 negative value length; 89 no
 * memory for a narrow value; or a code of the companion library (wideValueLen stays as it was). */
KORV_API int32_t CopyParamsStruct(const ParamDesc* source, OprDefI* target,
                                  uint32_t defaultCodePage, uint8_t defaultFlag);

/* CopyFieldStruct fills a field definition from a field description. link, header and fldExtra are
 * not touched. With an empty descriptor or text the text members are not touched either. A wide
 * text leaves narrowText and narrowTextLen as they were.
 *
 * Returns 0; 83 when a narrow text has a zero or negative length (a wide one is copied whatever
 * length it is given; a negative one copies nothing, and one below -4 gives 84); 84 or 85 no memory
 * for the wide or narrow text; or a code of the companion library (wideTextLen stays as it was). */
KORV_API int32_t CopyFieldStruct(const FieldDesc* source, FieldDefI* target,
                                 uint32_t defaultCodePage, uint8_t defaultFlag);

/* CopyPrvStruct fills a provider record. Note the order: target first.
 *
 * With text mode KORV_TEXT_NARROW the texts are narrowed by the companion library with the given
 * code page and flag into the caller's two buffers; otherwise they are copied as wide text, at most
 * capacity / 4 characters: a shorter text is padded with zeros, a longer one is cut and then not
 * terminated.
 * Returns 0, or a code of the companion library; after a failure of text 1, text 2 is not tried. */
KORV_API int32_t CopyPrvStruct(PrvRecord* target, const PrvDesc* source, uint32_t codePage,
                               uint8_t flag, uint8_t textMode);

/* ---- Providers ------------------------------------------------------------------------------- */

/* GetProviderID returns the number of the masking provider with the zero-terminated `name`,
 * compared as a whole and without regard to the case of ASCII letters:
 *
 *   CCN 1, NID 2, EML 3, AFF 4, COL 4, AGE 6, HASH 5, LKP 7, DSWAP 8, CDSWAP 10, DDSWAP 9
 *
 * and KORV_PROVIDER_UNKNOWN for any other name. The irregular numbers are as providers know them.
 * */
KORV_API int32_t GetProviderID(const char* name);

#define KORV_PROVIDER_UNKNOWN 11

#ifdef __cplusplus
}
#endif

#endif
