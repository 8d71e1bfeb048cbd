/** @file
 * The interface between a masking engine and its masking providers.
 *
 * A provider is a shared object, `libkorvprv_<name>.so` or `<name>.so` with the provider's name in
 * lower case, that exports one function, KorvProviderEntry. It returns the provider's PrvEntry. The
 * engine calls open once for each column that a rule gives to the provider, mask or maskBatch for
 * the column's values, and close at the end. All calls for one state come from one thread. Another
 * thread opens a state of its own, so functions of a provider may run at the same time with
 * different states.
 *
 * open, mask and unmask return 0 for success. For any other value they must first capture at least
 * one error in the chain of call->context: ErrorCapture, then TokenCapture for each token. Tokens
 * hold lengths, positions and names, never the value. No exception may leave a provider.
 *
 * The same rule and value must give the same result in every run: a provider uses no random
 * numbers, no time and no addresses. It runs under the thread locale C.UTF-8 and changes neither
 * locale, environment, signal handlers nor file descriptors of the process.
 *
 * Versions 2 and 3 append members to PrvCall and PrvEntry. Modules built for an earlier version are
 * loaded as before: what they know of the records is unchanged.
 *
 * @since 1.1 */
#ifndef KORV_PROVIDER_H
#define KORV_PROVIDER_H

#include "korv/korv.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The version of this interface. */
#define PRV_INTERFACE_VERSION 3

/** Code of a provider's errors must stay below this number: the engine's own begin here. */
#define PRV_FIRST_ENGINE_CODE 9000

/** One request.
 *
 * The column's name is the text of block->fieldRefs.fieldDef, the operands hang from service.
 * context->blkCode is 1, so KORV_IsZeroOrZeroLength copies the value to its target.
 *
 * open sees no value: value, result and related are NULL there.
 *
 * mask finds a zero-terminated value in value->data. It holds ASCII characters only when the type
 * of the field is VARCHAR_SZ; it is wide text when the type is WVARCHAR_SZ. value->length is 0 and
 * is completed by GetSrcBufLen. For NULL and for an empty value, which are handed to modules of
 * version 1 only, value->nullIndicator is 1 and value->data is NULL.
 *
 * mask leaves the masked text (UTF-8, or wide text) in value->target, which has value->capacity
 * bytes: room for at least 1024 characters more than the value has. It stores the length in bytes,
 * terminator not counted, in result->length; or it sets result->nullIndicator to 1. result->data is
 * either left alone or set to value->target. The engine checks all of this, and empties the field
 * when it does not hold. */
typedef struct PrvCall {
    const CtrlBlkI* context; /**< the request as the engine built it; errors are captured here */
    const CtrlBlkX* block;   /**< the converted request */
    const SvcDefX* service;  /**< the converted service definition with the rule's operands */
    ValueRecord* value;      /**< the value; in maskBatch the first of several */
    ValueRecord* result;     /**< the result; in maskBatch the first of several */

    /* Version 2 */

    /** The key that belongs to the rule's secret, this provider and its method, or NULL. It is
     * derived by the engine and lives until close; a provider never sees a secret. */
    const uint8_t* key;
    uint32_t keyLength; /**< bytes of key: 0 or 32 */
    uint32_t reserved1; /**< 0 */
    /** The value that the same row has in the column named by an operand with PRV_OPERAND_COLUMN:
     * UTF-8 text in data, zero-terminated, with its bytes in length; or nullIndicator 1. NULL when
     * the rule has no such operand. In maskBatch it is the first of several, one for each value.
     * The column is the last field of the block and the second field reference. */
    const ValueRecord* related;

    /* Version 3 */

    /** The method of the rule: PrvMethod::name of one of the provider's methods, or NULL when the
     * provider has none. */
    const char* method;
} PrvCall;

/** Properties of an operand. */
enum PrvOperandFlag {
    PRV_OPERAND_REQUIRED = 1, /**< a rule without it is refused */
    PRV_OPERAND_PATH = 2,     /**< a file name; the engine resolves it against the rules' folder */
    PRV_OPERAND_COLUMN = 4,   /**< a column of the same row, see PrvCall::related; version 2 */
    PRV_OPERAND_CHECK = 8,    /**< it only refuses values; the results of the others do not depend
                               * on it; version 3 */
    PRV_OPERAND_OPTIONAL_VALUE = 16 /**< the key may also stand alone, and the operand then has the
                                     * kind OPR_VALUE_NONE; version 3 */
};

/** An operand that the provider takes: `key=value` in a rule, or `key` alone for OPR_VALUE_NONE.
 *
 * The engine passes it with oprCode = code, the key as operand text, and a value of the given kind.
 * It checks the bounds of a number. At most one operand of a provider may have
 * PRV_OPERAND_COLUMN. */
typedef struct PrvOperand {
    const char* key; /**< capital letters, digits and underscores, a letter first; unique. The
                      * engine's own keys are refused: TYPE, ON-ERROR, UNCHANGED; from version 3
                      * on also METHOD, SCOPE, SECRET, UNIQUE */
    uint16_t code;   /**< unique among the provider's operands */
    uint16_t flags;  /**< PrvOperandFlag, added up */
    int32_t kind;    /**< OprValueKind */
    int32_t minimum; /**< of an OPR_VALUE_INTEGER */
    int32_t maximum; /**< of an OPR_VALUE_INTEGER; not below minimum */
} PrvOperand;

/** The meaning of an error's first code, for the engine's reports. */
typedef struct PrvErrorText {
    uint32_t code;    /**< not 0, below PRV_FIRST_ENGINE_CODE; unique */
    const char* text; /**< what is wrong with the value or the rule, without a full stop */
} PrvErrorText;

/** Properties of a method. */
enum PrvMethodFlag {
    PRV_METHOD_KEYED = 1 /**< a rule with this method needs a secret, any other must have none */
};

/** A way in which a provider masks. */
typedef struct PrvMethod {
    const char* name; /**< in rules `method=name`: lower-case letters, digits and underscores, a
                       * letter first; unique */
    uint32_t flags;   /**< PrvMethodFlag, added up */
} PrvMethod;

/** What a provider promises for an opened rule. */
enum PrvPromise {
    PRV_PROMISE_ONE_TO_ONE = 1,  /**< different values have different results; with a method that
                                  * keeps no form, up to a chance that its documents state */
    PRV_PROMISE_LENGTH_KEPT = 2, /**< the result has as many characters as the value */
    PRV_PROMISE_FORMAT_KEPT = 4, /**< the result is of the form that the provider accepts */
    PRV_PROMISE_REVERSIBLE = 8   /**< unmask gives the value back */
};

/** A provider. The record and what it points to are constant and live as long as the module. */
typedef struct PrvEntry {
    uint32_t interfaceVersion; /**< PRV_INTERFACE_VERSION, or 1: the members of version 2 are then
                                * not read */
    const char* name; /**< the name in rules: capital letters, digits and underscores, a letter
                       * first, at most 31 characters; the `<name>` of the file in capitals */
    const PrvOperand* operands; /**< operandCount operands; may be NULL when there are none */
    uint32_t operandCount;      /**< number of operands */
    const PrvErrorText* errors; /**< errorCount texts; may be NULL when there are none */
    uint32_t errorCount;        /**< number of error texts */

    /** Reads the operands of a rule and makes the state that the other functions get.
     *
     * @param      call   context, block, service; from version 2 on key and keyLength, from version
     *                    3 on method
     * @param[out] state  the provider's; passed to close once, unless open has failed
     * @return 0, or another value after an error has been captured */
    int32_t (*open)(const PrvCall* call, void** state);
    /** Masks one value, see PrvCall.
     *
     * @param state  from open
     * @param call   the request
     * @return 0, or another value after an error has been captured */
    int32_t (*mask)(void* state, const PrvCall* call);
    /** Releases a state.
     *
     * @param state  from open */
    void (*close)(void* state);

    /* Version 2. Every member may be NULL or 0. */

    /** Masks several values of one form, which mask would mask to the same results.
     *
     * value, result and related of the call point to arrays. The engine hands what this function
     * leaves to mask, so no error is captured here.
     *
     * @param         state     from open
     * @param         call      the request; all values are VARCHAR_SZ, or all are WVARCHAR_SZ
     * @param         count     number of values, at least 1
     * @param[in,out] statuses  one for each value, 0 at first; set to another value for each one
     *                          that is left to mask
     * @return 0; another value leaves all of them to mask */
    int32_t (*maskBatch)(void* state, const PrvCall* call, uint32_t count, int32_t* statuses);
    /** The reverse of mask, for a state that promises PRV_PROMISE_REVERSIBLE.
     *
     * @param state  from open
     * @param call   the request, with a masked value
     * @return 0, or another value after an error has been captured */
    int32_t (*unmask)(void* state, const PrvCall* call);
    /** What the opened rule promises.
     *
     * @param state  from open
     * @return PrvPromise, added up */
    uint32_t (*promises)(const void* state);
    /** Rules to try the provider with: the text after `COLUMN =`. */
    const char* const* sampleRules;
    uint32_t sampleRuleCount; /**< number of sample rules */

    /* Version 3. Every member may be NULL or 0. */

    /** The provider's methods. A rule picks one with `method=`, or with `secret=` the first keyed
     * one; a rule that does neither is refused. Without methods, a provider gets no key. */
    const PrvMethod* methods;
    uint32_t methodCount; /**< number of methods */
} PrvEntry;

/** The name of the function that a provider exports. */
#define PRV_ENTRY_SYMBOL "KorvProviderEntry"

/** The type of the function that a provider exports.
 *
 * @return the provider's record, the same in every call */
typedef const PrvEntry* (*PrvEntryFunction)(void);

#ifdef __cplusplus
}
#endif

#endif
