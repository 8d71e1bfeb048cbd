/** @file
 * The masking engine, libkorvmask: rules, providers, and the masking of columns in batches.
 *
 * The order of calls:
 *   1. KorvMaskOpen with the rules and the names of the columns
 *   2. KorvMaskGetColumn says what will happen to each column
 *   3. KorvMaskBatch for the values of one column, as often as there are batches
 *   4. KorvMaskGetRecord after a call that did not return KORV_MASK_SUCCESS
 *   5. KorvMaskClose
 *
 * @code
 * const char* names[] = {"CARD"};
 * KorvMaskSettings settings = {0};
 * settings.size = sizeof settings;
 * settings.rules = "CARD = CCN, method=transpose, key=17";
 * settings.columns = names;
 * settings.columnCount = 1;
 *
 * KorvMask* mask;
 * int32_t status = KorvMaskOpen(&settings, &mask);
 * if (status == KORV_MASK_SUCCESS) {
 *     const char bytes[] = "4556737586899855";
 *     const int32_t offsets[] = {0, 16};
 *     const KorvMaskStrings source = {1, 0, 32, offsets, bytes, NULL};
 *     const KorvMaskResult* result;
 *     status = KorvMaskBatch(mask, 0, 1, &source, NULL, &result);
 * }
 * if (status != KORV_MASK_SUCCESS && mask != NULL && KorvMaskRecordCount(mask) > 0) {
 *     puts(KorvMaskGetRecord(mask, 0)->message);
 * }
 * KorvMaskClose(mask);
 * @endcode
 *
 * A handle is used by one thread at a time. Any number of handles may be open and may work at the
 * same time; each one has provider instances of its own. Nothing is printed, no thread is started,
 * and locale, environment, umask and signal handlers of the process stay as they are. No exception
 * leaves the library.
 *
 * Records are extended at their end only. A caller says in KorvMaskSettings::size which of their
 * members it knows; all other records are made by the library.
 *
 * Providers are not trusted: what they return is checked before it is used. They run in the
 * process, however, so load only modules that you would also run as programs.
 *
 * @since 1.1 */
#ifndef KORV_MASK_H
#define KORV_MASK_H

#include <stddef.h>
#include <stdint.h>

#include "korv/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The version of this interface. It grows when something is appended. */
#define KORV_MASK_VERSION 3

/** KorvMaskRecord::row of a record that is not about a value. */
#define KORV_MASK_NO_ROW UINT64_MAX
/** KorvMaskRecord::column and KorvMaskColumn::related where there is no column. */
#define KORV_MASK_NO_COLUMN UINT32_MAX

/** Results of the functions. */
typedef enum KorvMaskStatus {
    KORV_MASK_SUCCESS = 0,       /**< The call succeeded; every value of the batch is masked. */
    KORV_MASK_VALUES_FAILED = 1, /**< Some values of the batch failed. Each has a record. */
    KORV_MASK_ABORTED = 2,       /**< A value failed whose rule says on-error=abort. */
    KORV_MASK_BAD_ARGUMENT = 3,  /**< An argument is NULL, names a column that does not exist, or
                                  * has offsets that decrease. */
    KORV_MASK_BAD_RULES = 4,     /**< The rules are malformed, or do not fit the columns. */
    KORV_MASK_BAD_PROVIDER = 5,  /**< A provider cannot be loaded, or breaks its interface. */
    KORV_MASK_NO_MEMORY = 6,     /**< There is no memory. */
    KORV_MASK_TOO_LARGE = 7,     /**< A value is above 1 GiB, or 32-bit offsets cannot address the
                                  * result: pass fewer values at once. */
    KORV_MASK_OVERRUN = 8        /**< A provider wrote past its target. The process should end. */
} KorvMaskStatus;

/** Codes of failed values that the engine finds. Codes below 9000 are the provider's. */
typedef enum KorvMaskCode {
    KORV_MASK_CODE_REQUEST = 9000,    /**< The request could not be made or converted. */
    KORV_MASK_CODE_NO_RECORD = 9001,  /**< The provider failed without an error of its own. */
    KORV_MASK_CODE_NO_RESULT = 9002,  /**< The provider set no result, or one elsewhere. */
    KORV_MASK_CODE_BAD_LENGTH = 9003, /**< The length of the result is impossible. */
    KORV_MASK_CODE_BAD_TEXT = 9004,   /**< The result is not valid text. */
    KORV_MASK_CODE_UNCHANGED = 9005,  /**< The masked value equals the value; unchanged=error. */
    KORV_MASK_CODE_SOURCE_WRITTEN = 9006, /**< The provider changed its source. */
    KORV_MASK_CODE_NOT_REPEATED = 9007,   /**< A second call gave another result. */
    KORV_MASK_CODE_BAD_SOURCE = 9008      /**< The value is not UTF-8 or holds a zero byte. */
} KorvMaskCode;

/** Options of KorvMaskSettings::flags. */
typedef enum KorvMaskFlag {
    /** Columns without a rule are kept. Otherwise they are an error. */
    KORV_MASK_KEEP_UNLISTED = 1,
    /** Also checks that a provider leaves its source unchanged and that a second call gives the
     * same result. This takes twice as long. */
    KORV_MASK_VERIFY_PROVIDERS = 2,
    /** Loads every module of the provider folders, for KorvMaskGetProvider. The rules may then be
     * missing. */
    KORV_MASK_ALL_PROVIDERS = 4,
    /** The columns have no names of their own: rules address them as `@1`, `@2`, ... */
    KORV_MASK_UNNAMED_COLUMNS = 8,
    /** Methods without a secret are refused: they can be undone without one. From version 2 on. */
    KORV_MASK_STRICT = 16,
    /** The batches are masked values, and come back in clear. Refused unless all rules are KEEP or
     * promise PRV_PROMISE_REVERSIBLE. From version 2 on. */
    KORV_MASK_UNMASK = 32,
    /** KorvMaskSettings::rules is one rule without its column, such as `CCN, secret=crm`. It
     * belongs to the only column. Includes KORV_MASK_SOME_COLUMNS. From version 3 on. */
    KORV_MASK_ONE_RULE = 64,
    /** The columns are some of those that the rules are for: a rule that fits none of them is not
     * an error, and a rule may also read a column that is not among them. From version 3 on. */
    KORV_MASK_SOME_COLUMNS = 128
} KorvMaskFlag;

/** A secret that rules refer to as `secret=name`. */
typedef struct KorvMaskSecret {
    const char* name;     /**< a lower-case letter, then lower-case letters, digits, underscores; at
                           * most 64 characters, and not 32 or more hexadecimal digits only, which
                           * could be a secret */
    const uint8_t* bytes; /**< the secret */
    uint32_t length;      /**< its bytes, 16 to 64 */
} KorvMaskSecret;

/** What KorvMaskOpen works with. Everything is read during the call only. */
typedef struct KorvMaskSettings {
    size_t size;                /**< sizeof(KorvMaskSettings) */
    uint32_t flags;             /**< KorvMaskFlag, added up */
    uint32_t columnCount;       /**< number of columns */
    const char* const* columns; /**< their names, UTF-8, zero-terminated; may be NULL with
                                 * KORV_MASK_UNNAMED_COLUMNS */
    const char* rules;     /**< the rules as UTF-8 text, zero-terminated; NULL to read rulesFile */
    const char* rulesFile; /**< path of the rules; its folder is where relative file names in rules
                            * begin. With `rules` given it is only that and the name in messages;
                            * NULL stands for the current folder and the name "rules" */
    const char* const* folders; /**< folders of provider modules, searched in order */
    uint32_t folderCount;       /**< number of folders; 0: the folder korv-providers beside the
                                 * engine's library, or where the package has installed it */

    /* Version 2 */

    const KorvMaskSecret* secrets; /**< secrets; the caller wipes its copy when it likes */
    uint32_t secretCount;          /**< number of secrets */
    const char* secretsFile; /**< path of a file with more secrets, or NULL: lines `name = value`,
                              * in hexadecimal digits or base64. A file that others than its owner
                              * may read, or that belongs to another user than this one or root, is
                              * refused, and so is a name that is given twice */

    /* Version 3 */

    const char* const* fileFolders; /**< folders of the files that rules name, such as lookup files;
                                     * searched in order. A file elsewhere is refused, also one that
                                     * a link leads to */
    uint32_t fileFolderCount; /**< number of folders; 0: any file may be named, and relative names
                               * begin in the folder of the rules */
} KorvMaskSettings;

/** An open set of rules. */
typedef struct KorvMask KorvMask;

/** What happens to a column. */
typedef enum KorvMaskAction {
    KORV_MASK_KEEP = 0,    /**< values pass as they are */
    KORV_MASK_DROP = 1,    /**< the column is left out */
    KORV_MASK_NULL = 2,    /**< every value becomes NULL */
    KORV_MASK_CONST = 3,   /**< every value becomes the same text */
    KORV_MASK_PROVIDER = 4 /**< a provider masks the values */
} KorvMaskAction;

/** A column and its rule. It lives until KorvMaskClose. */
typedef struct KorvMaskColumn {
    const char* name;       /**< as given, or "@3" */
    const char* actionName; /**< "KEEP", "DROP", "NULL", "CONST", or the provider's name as the rule
                             * gives it, in capitals */
    int32_t action;         /**< KorvMaskAction */
    uint32_t rulesLine;     /**< line of its rule, from 1; 0 for an unlisted column */
    const char* rulePattern; /**< the column name or pattern as the rule gives it, or NULL */
    uint32_t related;  /**< index of the column that the rule also reads, or KORV_MASK_NO_COLUMN. It
                        * is the number of columns when KORV_MASK_SOME_COLUMNS is given and the
                        * column is not among them */
    uint32_t promises; /**< of the provider: PrvPromise, added up */
    const char* onError;      /**< "empty", "null", "const", "drop-row" or "abort" */
    const char* module;       /**< path of the provider's module, or NULL */
    const char* const* files; /**< paths of the files that the rule names, such as lookup files */
    uint32_t fileCount;       /**< number of files */

    /* Version 2 */

    const char* method;      /**< the method of the provider, or NULL when it has none */
    uint32_t isDisguise;     /**< 1: the method has no secret and can be undone with the program */
    const char* secret;      /**< name of the secret, or NULL */
    const char* fingerprint; /**< 8 hexadecimal digits that tell the secret from others, or NULL */
    const char* scope;       /**< the rule's scope, "" without one */
    const char* mapping; /**< a text of the method and the operands. Columns that have it, module,
                          * secret and scope in common mask equal values equally */

    /* Version 3 */

    const char* relatedName; /**< name of the column that the rule also reads, or NULL */
} KorvMaskColumn;

/** A loaded provider. It lives until KorvMaskClose. */
typedef struct KorvMaskProvider {
    const char* name;             /**< as the module gives it */
    const char* module;           /**< path of the module */
    const struct PrvEntry* entry; /**< the module's record, see korv/provider.h */
} KorvMaskProvider;

/** Texts in the layout of Apache Arrow's string arrays. */
typedef struct KorvMaskStrings {
    uint64_t count;      /**< number of values */
    uint64_t first;      /**< index of the first value in offsets and validity */
    uint32_t offsetBits; /**< 32: offsets are int32_t; 64: they are int64_t */
    const void* offsets; /**< first + count + 1 offsets into bytes, ascending, from 0 on */
    const char* bytes;   /**< UTF-8 text, not terminated; may be NULL when all values are empty */
    const uint8_t* validity; /**< bit i % 8 of byte i / 8 is 0 when value i is NULL; NULL: no value
                              * is */
} KorvMaskStrings;

/** What has become of a value. */
typedef enum KorvMaskValueState {
    KORV_MASK_VALUE_MASKED = 0,  /**< masked, also when it came out unchanged */
    KORV_MASK_VALUE_NULL = 1,    /**< NULL or empty, and passed as it was */
    KORV_MASK_VALUE_FAILED = 2,  /**< failed, and replaced as the rule says */
    KORV_MASK_VALUE_DROP_ROW = 3 /**< failed; the rule wants the row left out */
} KorvMaskValueState;

/** Failures with the same code. */
typedef struct KorvMaskFailures {
    uint32_t code;  /**< the provider's error code, or KorvMaskCode */
    uint64_t count; /**< values whose first error has this code */
} KorvMaskFailures;

/** Counts of a column's values. masked + failed = values. */
typedef struct KorvMaskStatistics {
    uint64_t values;    /**< values that are neither NULL nor empty */
    uint64_t nulls;     /**< values that are NULL or empty */
    uint64_t masked;    /**< values that did not fail */
    uint64_t unchanged; /**< of these, the ones whose result equals the value */
    uint64_t formulas;  /**< of these, the ones that begin with =, +, - or @ as the value did not */
    uint64_t failed;    /**< values that failed */
    const KorvMaskFailures* failures; /**< failed values by code, ascending */
    uint32_t failureCount;            /**< number of codes */
} KorvMaskStatistics;

/** A masked batch. It lives until the next KorvMaskBatch of the same column, or KorvMaskClose. */
typedef struct KorvMaskResult {
    KorvMaskStrings strings; /**< as many values as the source, first = 0, offsets as wide as the
                              * source's. For KORV_MASK_KEEP this is the source itself */
    const uint8_t* states;   /**< KorvMaskValueState of each value */
    KorvMaskStatistics statistics; /**< of this batch */
} KorvMaskResult;

/** A message token of an error. */
typedef struct KorvMaskToken {
    uint32_t id;      /**< KorvTokenId, see korv/tokens.h */
    const char* name; /**< its name, such as "KORV_TOKID_SRCLEN" */
    const char* text; /**< UTF-8. A text that holds the clear value is replaced by "(withheld)" */
} KorvMaskToken;

/** Something that went wrong. It lives until KorvMaskClearRecords or KorvMaskClose. */
typedef struct KorvMaskRecord {
    int32_t status;  /**< KorvMaskStatus; KORV_MASK_VALUES_FAILED for a failed value */
    uint32_t code;   /**< the provider's error code or KorvMaskCode; 0 when not about a value */
    uint64_t row;    /**< row of the value, counted from the call's firstRow, or KORV_MASK_NO_ROW */
    uint32_t column; /**< index of the column, or KORV_MASK_NO_COLUMN */
    uint32_t isFirst;       /**< 1 for the first record of a failed value, 0 for its further ones */
    uint32_t rulesLine;     /**< line in the rules, from 1, or 0 */
    uint32_t rulesPosition; /**< character in that line, from 1, or 0 */
    const char* message;  /**< one line for people, UTF-8, with the place in the rules when there is
                           * one, and with the tokens. It never holds a clear value */
    const char* provider; /**< name of the provider, or NULL */
    const KorvMaskToken* tokens; /**< its tokens */
    uint32_t tokenCount;         /**< number of tokens */
} KorvMaskRecord;

/** KorvMaskVersion returns the version of the interface that the loaded library implements. A
 * caller that needs something of a later version compares it with KORV_MASK_VERSION.
 *
 * @return the version, at least 1 */
KORV_API uint32_t KorvMaskVersion(void);

/** KorvMaskOpen reads rules, loads the providers that they name, and opens an instance for each
 * column that is masked.
 *
 * Every fault of the rules has a record, up to 20 of them. On failure the handle serves only to
 * read the records; it must be closed, too.
 *
 * @param      settings  rules, columns, folders
 * @param[out] mask      the handle; NULL when there is no memory for one, or for
 *                       KORV_MASK_BAD_ARGUMENT
 * @retval KORV_MASK_SUCCESS      open
 * @retval KORV_MASK_BAD_ARGUMENT an argument is NULL, the settings' size is of no version,
 *                                a secret has a name or a length that is not allowed, or
 *                                KORV_MASK_ONE_RULE is given without rules or with another number
 *                                of columns than one
 * @retval KORV_MASK_BAD_RULES    see the records
 * @retval KORV_MASK_BAD_PROVIDER see the records
 * @retval KORV_MASK_NO_MEMORY    out of memory */
KORV_API int32_t KorvMaskOpen(const KorvMaskSettings* settings, KorvMask** mask);

/** KorvMaskClose closes a handle and releases everything that it has handed out.
 *
 * @param mask  the handle, or NULL; invalid after the call */
KORV_API void KorvMaskClose(KorvMask* mask);

/** KorvMaskGetColumn returns a column with what will happen to it.
 *
 * @param mask    the handle
 * @param column  index from 0
 * @return the column; NULL if no column has this index, or the handle failed to open */
KORV_API const KorvMaskColumn* KorvMaskGetColumn(const KorvMask* mask, uint32_t column);

/** KorvMaskGetProvider returns a loaded provider. Providers are sorted by name.
 *
 * @param mask   the handle
 * @param index  index from 0
 * @return the provider; NULL if no provider has this index */
KORV_API const KorvMaskProvider* KorvMaskGetProvider(const KorvMask* mask, uint32_t index);

/** KorvMaskBatch masks values of one column.
 *
 * Source values must be UTF-8 without zero bytes; another value fails. When the call ends early
 * there is no result. After KORV_MASK_OVERRUN every further batch of the handle ends with the same
 * status.
 *
 * @param      mask      the handle
 * @param      column    index of the column; not one that is dropped
 * @param      firstRow  number of the row that the first value belongs to, for records
 * @param      source    the values; not changed, and not referred to after the call, except for
 *                       KORV_MASK_KEEP
 * @param      related   the values of the column KorvMaskColumn::related in the same rows; NULL
 *                       when the rule refers to no other column
 * @param[out] result    the masked values; not written when the call ends early
 * @retval KORV_MASK_SUCCESS       every value is masked
 * @retval KORV_MASK_VALUES_FAILED some values failed, see the records
 * @retval KORV_MASK_ABORTED       ended early, see the records
 * @retval KORV_MASK_BAD_ARGUMENT  ended early: an argument does not fit
 * @retval KORV_MASK_NO_MEMORY     ended early
 * @retval KORV_MASK_TOO_LARGE     ended early
 * @retval KORV_MASK_OVERRUN       ended early: end the process without using its data */
KORV_API int32_t KorvMaskBatch(KorvMask* mask, uint32_t column, uint64_t firstRow,
                               const KorvMaskStrings* source, const KorvMaskStrings* related,
                               const KorvMaskResult** result);

/** KorvMaskGetStatistics returns the counts of all batches of a column.
 *
 * @param mask    the handle
 * @param column  index from 0
 * @return the counts, until the next batch of the column or KorvMaskClose; NULL when there is no
 *         column of this index */
KORV_API const KorvMaskStatistics* KorvMaskGetStatistics(const KorvMask* mask, uint32_t column);

/** KorvMaskRecordCount returns the number of records that are kept.
 *
 * @param mask  the handle
 * @return number of records */
KORV_API uint64_t KorvMaskRecordCount(const KorvMask* mask);

/** KorvMaskGetRecord returns a record. They are kept in the order in which they came up; within a
 * batch that is the order of rows.
 *
 * @param mask   the handle
 * @param index  index from 0
 * @return the record; NULL if no record has this index */
KORV_API const KorvMaskRecord* KorvMaskGetRecord(const KorvMask* mask, uint64_t index);

/** KorvMaskClearRecords drops all records. Call it after each batch, so that they do not pile up.
 *
 * @param mask  the handle */
KORV_API void KorvMaskClearRecords(KorvMask* mask);

#ifdef __cplusplus
}
#endif

#endif
