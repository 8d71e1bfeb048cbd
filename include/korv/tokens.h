/** @file
 * Message token catalogue: the identifiers that tag the values of an error, and their names.
 *
 * The catalogue is the two lists below; the constants KORV_TOKID_... and the table gTokenIds are
 * both made from them. Identifiers are 32-bit unsigned numbers, contiguous from 0:
 * - 0 marks an unused token slot;
 * - 55 is reserved, so that later numbers do not change; it has no constant;
 * - 91 is KORV_TOKID_COUNT, the number of entries before it; 91 and above are not valid.
 *
 * @since 1.0 */
#ifndef KORV_TOKENS_H
#define KORV_TOKENS_H

#include "korv/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** X(number, name) for the identifiers 1 to 54, with what the value is. */
#define KORV_TOKENS_1_TO_54(X)                                       \
    X(1, DATATYPE)          /* data type */                          \
    X(2, PROVIDER)          /* name of the provider */               \
    X(3, METHOD)            /* method of the provider */             \
    X(4, COLNAME)           /* column name */                        \
    X(5, SRCDATA)           /* source value */                       \
    X(6, ROW_COUNT)         /* number of rows */                     \
    X(7, ROWS_LIST)         /* list of rows */                       \
    X(8, COLINDEX)          /* index of the column */                \
    X(9, ROWDEFINE_COUNT)   /* number of row definitions */          \
    X(10, MASK)             /* mask */                               \
    X(11, YEAR)             /* year */                               \
    X(12, MONTH)            /* month */                              \
    X(13, DAY)              /* day */                                \
    X(14, WEEK)             /* week */                               \
    X(15, CENTURY)          /* century */                            \
    X(16, DSTDATA)          /* target value */                       \
    X(17, SRC_DATATYPE)     /* data type of the source */            \
    X(18, DST_DATATYPE)     /* data type of the target */            \
    X(19, SRCFORMAT)        /* format of the source */               \
    X(20, OPERAND_LIST)     /* list of operands */                   \
    X(21, OPERAND_COUNT)    /* number of operands */                 \
    X(22, COL_LIST)         /* list of columns */                    \
    X(23, COL_COUNT)        /* number of columns */                  \
    X(24, SRC_COLTYPE)      /* type of the source column */          \
    X(25, SRC_COLLIST)      /* list of source columns */             \
    X(26, FLAG)             /* flag */                               \
    X(27, INFO_REQUEST)     /* request for information */            \
    X(28, BUFFER_SIZE)      /* size of a buffer */                   \
    X(29, LIB_NAME)         /* name of a library */                  \
    X(30, PROC_NAME)        /* name of a procedure */                \
    X(31, ENV_VARIABLE)     /* environment variable */               \
    X(32, ENV_VALUE)        /* value of an environment variable */   \
    X(33, TRIMCHAR)         /* character that is trimmed */          \
    X(34, SEED)             /* seed */                               \
    X(35, SRCLEN)           /* length of the source */               \
    X(36, EXPSRCLEN)        /* expected length of the source */      \
    X(37, COUNTRY)          /* country */                            \
    X(38, SEP)              /* separator */                          \
    X(39, NAME1_COLINDEX)   /* index of the first name column */     \
    X(40, NAME2_COLINDEX)   /* index of the second name column */    \
    X(41, USERPRFX_LEN)     /* length of the prefix of user names */ \
    X(42, DOMAIN_LEN)       /* length of a domain */                 \
    X(43, HASHSEED_LEN)     /* length of a hash seed */              \
    X(44, TIMESTAMP)        /* timestamp */                          \
    X(45, SRCDST)           /* whether source or target is meant */  \
    X(46, PATH)             /* path */                               \
    X(47, SQLSTATE)         /* SQLSTATE of the database */           \
    X(48, SQLCODE)          /* SQLCODE of the database */            \
    X(49, SQLMESSAGE)       /* message of the database */            \
    X(50, BUF_EXPECTED_LEN) /* expected length of a buffer */        \
    X(51, ERR_CODE)         /* error code */                         \
    X(52, CHAR_POS)         /* position of a character */            \
    X(53, PARMVALUE)        /* value of a parameter */               \
    X(54, PARMKEY)          /* key of a parameter */

/** X(number, name) for the identifiers 56 to 90, with what the value is. The mixed case of
 * ICU_MB_AorE is deliberate. */
#define KORV_TOKENS_56_TO_90(X)                                              \
    X(56, ERR_FILE)             /* error file */                             \
    X(57, TRC_FILE)             /* trace file */                             \
    X(58, MAX_TRC_FILE_NUM)     /* largest number of trace files */          \
    X(59, ICU_DIR)              /* folder of the ICU data */                 \
    X(60, ICU_CNV_NAME)         /* name of an ICU converter */               \
    X(61, ICU_CODEPAGE)         /* code page in ICU */                       \
    X(62, ICU_NEAREST_CODEPAGE) /* nearest code page in ICU */               \
    X(63, ICU_MB_MINBYTES)      /* fewest bytes of a character */            \
    X(64, ICU_MB_MAXBYTES)      /* most bytes of a character */              \
    X(65, ICU_MB_TYPE)          /* type of a multi-byte code page */         \
    X(66, ICU_MB_AorE)          /* whether a code page is ASCII or EBCDIC */ \
    X(67, ICU_DBMSCODE)         /* code of the database system */            \
    X(68, ICU_ALIAS)            /* alias of an ICU converter */              \
    X(69, SP_FILE)              /* SP file */                                \
    X(70, ERRMSG)               /* error message */                          \
    X(71, MSG_ID)               /* identifier of a message */                \
    X(72, MSG_SRC)              /* source of a message */                    \
    X(73, MSG_TEXT)             /* text of a message */                      \
    X(74, MSG_BODY)             /* body of a message */                      \
    X(75, ALGO)                 /* algorithm */                              \
    X(76, SERVICE_TOKEN)        /* token of a service */                     \
    X(77, ORA_CHARSET)          /* character set of a database */            \
    X(78, ORA_NCHARSET)         /* national character set of a database */   \
    X(79, TABLENAME)            /* name of a table */                        \
    X(80, PARMVALUE_SUBTYPE)    /* subtype of a parameter's value */         \
    X(81, COLLEN)               /* length of a column */                     \
    X(82, KEY)                  /* key */                                    \
    X(83, KEY_SIZE)             /* size of a key */                          \
    X(84, TWEAKS_LEN)           /* length of the tweaks */                   \
    X(85, RADIX)                /* radix */                                  \
    X(86, ITERATIONS)           /* number of iterations */                   \
    X(87, STATE_BYTES)          /* bytes of a state */                       \
    X(88, UNICODE_CODEPOINT)    /* Unicode code point */                     \
    X(89, SUBSTR)               /* part of a text */                         \
    X(90, CODEPAGE)             /* code page */

/** Token identifiers: KORV_TOKID_DATATYPE = 1 and so on, and the two special
 * values 0 and 91. */
typedef enum KorvTokenId {
    KORV_TOKID_UNUSED = 0, /**< an unused token slot */
#define KORV_TOKEN_CONSTANT(number, name) KORV_TOKID_##name = (number),
    KORV_TOKENS_1_TO_54(KORV_TOKEN_CONSTANT) KORV_TOKENS_56_TO_90(KORV_TOKEN_CONSTANT)
#undef KORV_TOKEN_CONSTANT
        KORV_TOKID_COUNT = 91 /**< number of entries before it; not a token */
} KorvTokenId;

/** gTokenIds maps the numbers 0 to 91 to zero-terminated wide text, for callers that print tokens.
 * For an identifier this is the name of its constant: gTokenIds[1] is L"KORV_TOKID_DATATYPE". Entry
 * 0 is L"Unused token node", entry 91 is L"Number of tokens", and entry 55 is a placeholder. The
 * index is not checked. Each module that includes this header has a copy of its own. */
static const wchar_t* const gTokenIds[KORV_TOKID_COUNT + 1] KORV_UNUSED = {
    L"Unused token node",
#define KORV_TOKEN_NAME(number, name) L"KORV_TOKID_" #name,
    KORV_TOKENS_1_TO_54(KORV_TOKEN_NAME) L"Reserved token node",
    KORV_TOKENS_56_TO_90(KORV_TOKEN_NAME)
#undef KORV_TOKEN_NAME
        L"Number of tokens",
};

/* Texts that providers use in messages; the library does not read them: countries of identity
 * numbers, and whether a message is about the value before or after ageing. */
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
