/** @file
 * Message token catalogue: the identifiers that tag the values of an error, and their names.
 *
 * The catalogue is the two lists below; the constants KORV_TOKID_... and the table gTokenIds are
 * both made from them. Identifiers are 32-bit unsigned numbers, contiguous from 0:
 * - 0 marks an unused token slot;
 * - 55 keeps its place between the lists so that later numbers stand; it has no constant;
 * - 91 is KORV_TOKID_COUNT, the number of entries before it; from here on nothing is a token.
 *
 * @since 1.0 */
#ifndef KORV_TOKENS_H
#define KORV_TOKENS_H

#include "korv/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** X(number, name) for the identifiers 1 to 54. */
#define KORV_TOKENS_1_TO_54(X) \
    X(1, DATATYPE)             \
    X(2, PROVIDER)             \
    X(3, METHOD)               \
    X(4, COLNAME)              \
    X(5, SRCDATA)              \
    X(6, ROW_COUNT)            \
    X(7, ROWS_LIST)            \
    X(8, COLINDEX)             \
    X(9, ROWDEFINE_COUNT)      \
    X(10, MASK)                \
    X(11, YEAR)                \
    X(12, MONTH)               \
    X(13, DAY)                 \
    X(14, WEEK)                \
    X(15, CENTURY)             \
    X(16, DSTDATA)             \
    X(17, SRC_DATATYPE)        \
    X(18, DST_DATATYPE)        \
    X(19, SRCFORMAT)           \
    X(20, OPERAND_LIST)        \
    X(21, OPERAND_COUNT)       \
    X(22, COL_LIST)            \
    X(23, COL_COUNT)           \
    X(24, SRC_COLTYPE)         \
    X(25, SRC_COLLIST)         \
    X(26, FLAG)                \
    X(27, INFO_REQUEST)        \
    X(28, BUFFER_SIZE)         \
    X(29, LIB_NAME)            \
    X(30, PROC_NAME)           \
    X(31, ENV_VARIABLE)        \
    X(32, ENV_VALUE)           \
    X(33, TRIMCHAR)            \
    X(34, SEED)                \
    X(35, SRCLEN)              \
    X(36, EXPSRCLEN)           \
    X(37, COUNTRY)             \
    X(38, SEP)                 \
    X(39, NAME1_COLINDEX)      \
    X(40, NAME2_COLINDEX)      \
    X(41, USERPRFX_LEN)        \
    X(42, DOMAIN_LEN)          \
    X(43, HASHSEED_LEN)        \
    X(44, TIMESTAMP)           \
    X(45, SRCDST)              \
    X(46, PATH)                \
    X(47, SQLSTATE)            \
    X(48, SQLCODE)             \
    X(49, SQLMESSAGE)          \
    X(50, BUF_EXPECTED_LEN)    \
    X(51, ERR_CODE)            \
    X(52, CHAR_POS)            \
    X(53, PARMVALUE)           \
    X(54, PARMKEY)

/** X(number, name) for the identifiers 56 to 90. The mixed case of ICU_MB_AorE is its name. */
#define KORV_TOKENS_56_TO_90(X) \
    X(56, ERR_FILE)             \
    X(57, TRC_FILE)             \
    X(58, MAX_TRC_FILE_NUM)     \
    X(59, ICU_DIR)              \
    X(60, ICU_CNV_NAME)         \
    X(61, ICU_CODEPAGE)         \
    X(62, ICU_NEAREST_CODEPAGE) \
    X(63, ICU_MB_MINBYTES)      \
    X(64, ICU_MB_MAXBYTES)      \
    X(65, ICU_MB_TYPE)          \
    X(66, ICU_MB_AorE)          \
    X(67, ICU_DBMSCODE)         \
    X(68, ICU_ALIAS)            \
    X(69, SP_FILE)              \
    X(70, ERRMSG)               \
    X(71, MSG_ID)               \
    X(72, MSG_SRC)              \
    X(73, MSG_TEXT)             \
    X(74, MSG_BODY)             \
    X(75, ALGO)                 \
    X(76, SERVICE_TOKEN)        \
    X(77, ORA_CHARSET)          \
    X(78, ORA_NCHARSET)         \
    X(79, TABLENAME)            \
    X(80, PARMVALUE_SUBTYPE)    \
    X(81, COLLEN)               \
    X(82, KEY)                  \
    X(83, KEY_SIZE)             \
    X(84, TWEAKS_LEN)           \
    X(85, RADIX)                \
    X(86, ITERATIONS)           \
    X(87, STATE_BYTES)          \
    X(88, UNICODE_CODEPOINT)    \
    X(89, SUBSTR)               \
    X(90, CODEPAGE)

/** Token identifiers: KORV_TOKID_DATATYPE = 1 and so on, and the two bounds. */
typedef enum KorvTokenId {
    KORV_TOKID_UNUSED = 0, /**< an unused token slot */
#define KORV_TOKEN_CONSTANT(number, name) KORV_TOKID_##name = (number),
    KORV_TOKENS_1_TO_54(KORV_TOKEN_CONSTANT) KORV_TOKENS_56_TO_90(KORV_TOKEN_CONSTANT)
#undef KORV_TOKEN_CONSTANT
        KORV_TOKID_COUNT = 91 /**< from here on nothing is a token */
} KorvTokenId;

/** gTokenIds maps an identifier, 0 to 91 inclusive, to its name as zero-terminated wide text, for
 * callers that print tokens: gTokenIds[1] is L"KORV_TOKID_DATATYPE". Entry 55 is a placeholder.
 * There is no bound check; each module that includes this header has a copy of its own. */
static const wchar_t* const gTokenIds[KORV_TOKID_COUNT + 1] KORV_UNUSED = {
    L"Unused token node",
#define KORV_TOKEN_NAME(number, name) L"KORV_TOKID_" #name,
    KORV_TOKENS_1_TO_54(KORV_TOKEN_NAME) L"Reserved token node",
    KORV_TOKENS_56_TO_90(KORV_TOKEN_NAME)
#undef KORV_TOKEN_NAME
        L"Number of tokens",
};

/* Country names of identity numbers, and the two places of a value in an ageing message, for the
 * providers; the library itself does not read them. */
static const wchar_t Nid_FR[] KORV_UNUSED = L"France"; /**< country of an identity number */
static const wchar_t Nid_ES[] KORV_UNUSED = L"Spain";  /**< country of an identity number */
static const wchar_t Nid_IT[] KORV_UNUSED = L"Italy";  /**< country of an identity number */
static const wchar_t Nid_UK[] KORV_UNUSED = L"UK";     /**< country of an identity number */
static const wchar_t Nid_US[] KORV_UNUSED = L"US";     /**< country of an identity number */
static const wchar_t Nid_CA[] KORV_UNUSED = L"Canada"; /**< country of an identity number */
static const wchar_t Location_SourceValue[] KORV_UNUSED = L"Source"; /**< the value before ageing */
static const wchar_t Location_AgedValue[] KORV_UNUSED = L"Aged";     /**< the value after ageing */

#ifdef __cplusplus
}
#endif

#endif
