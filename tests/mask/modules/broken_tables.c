/* A provider that must be refused when it is loaded, for the one fault that DEFECT names. Its
 * functions abort: they are never called. Built as broken_<defect>.so. */
#include <stdlib.h>

#include "answer.h"

enum {
    DEFECT_CODE_TWICE,      /* two operands with one code */
    DEFECT_ENTRY_NULL,      /* no record */
    DEFECT_ERROR_HIGH,      /* an error code of the engine's */
    DEFECT_ERROR_TEXT_NULL, /* an error without text */
    DEFECT_ERROR_TWICE,     /* two texts for one code */
    DEFECT_ERROR_ZERO,      /* error code 0 */
    DEFECT_ERRORS_NULL,     /* a number of errors, and no table */
    DEFECT_KEY_DIGIT,       /* operand keys of the wrong form */
    DEFECT_KEY_EMPTY,
    DEFECT_KEY_HYPHEN,
    DEFECT_KEY_LOWER,
    DEFECT_KEY_METHOD, /* operands that are the engine's own */
    DEFECT_KEY_NULL,
    DEFECT_KEY_TWICE, /* two operands with one key */
    DEFECT_KEY_SCOPE, /* more operands that are the engine's own */
    DEFECT_KEY_SECRET,
    DEFECT_KEY_TYPE,
    DEFECT_KEY_UNCHANGED,
    DEFECT_KEY_UNIQUE,
    DEFECT_KIND, /* an unknown kind of operand */
    DEFECT_KIND_NEGATIVE,
    DEFECT_METHOD_CAPITAL, /* methods' names of the wrong form */
    DEFECT_METHOD_DIGIT,
    DEFECT_METHOD_EMPTY,
    DEFECT_METHOD_HYPHEN,
    DEFECT_METHOD_NULL,
    DEFECT_METHOD_TWICE,                  /* two methods of one name */
    DEFECT_METHODS_NULL,                  /* a number of methods, and no table */
    DEFECT_NAME_NULL,                     /* no name */
    DEFECT_NAME_LOWER,                    /* a name in lower case */
    DEFECT_NAME_OF_32_CHARACTERS_OR_MORE, /* its own name, which is too long */
    DEFECT_NAME_OTHER,                    /* the name of another module */
    DEFECT_NO_CLOSE,                      /* functions that are NULL */
    DEFECT_NO_MASK,
    DEFECT_NO_OPEN,
    DEFECT_NO_SYMBOL,       /* no KorvProviderEntry */
    DEFECT_OPERANDS_NULL,   /* a number of operands, and no table */
    DEFECT_REVERSED_BOUNDS, /* a minimum above the maximum */
    DEFECT_SAMPLES_NULL,    /* a number of sample rules, and no table */
    DEFECT_TWO_COLUMNS,     /* two operands with PRV_OPERAND_COLUMN */
    DEFECT_VERSION_0,       /* interface versions that do not exist */
    DEFECT_VERSION_99
};

static int32_t openNever(const PrvCall* call, void** state) {
    (void)call;
    (void)state;
    abort();
}

static int32_t maskNever(void* state, const PrvCall* call) {
    (void)state;
    (void)call;
    abort();
}

static void closeNever(void* state) {
    (void)state;
    abort();
}

static void spoilOperands(PrvOperand* first, PrvOperand* second) {
    switch (DEFECT) {
        case DEFECT_CODE_TWICE:
            second->code = first->code;
            break;
        case DEFECT_KEY_DIGIT:
            second->key = "1ST";
            break;
        case DEFECT_KEY_EMPTY:
            second->key = "";
            break;
        case DEFECT_KEY_HYPHEN:
            second->key = "A-B";
            break;
        case DEFECT_KEY_LOWER:
            second->key = "second";
            break;
        case DEFECT_KEY_METHOD:
            second->key = "METHOD";
            break;
        case DEFECT_KEY_NULL:
            second->key = NULL;
            break;
        case DEFECT_KEY_TWICE:
            second->key = "FIRST";
            break;
        case DEFECT_KEY_SCOPE:
            second->key = "SCOPE";
            break;
        case DEFECT_KEY_SECRET:
            second->key = "SECRET";
            break;
        case DEFECT_KEY_TYPE:
            second->key = "TYPE";
            break;
        case DEFECT_KEY_UNCHANGED:
            second->key = "UNCHANGED";
            break;
        case DEFECT_KEY_UNIQUE:
            second->key = "UNIQUE";
            break;
        case DEFECT_KIND:
            second->kind = 99;
            break;
        case DEFECT_KIND_NEGATIVE:
            second->kind = -1;
            break;
        case DEFECT_REVERSED_BOUNDS:
            first->minimum = first->maximum + 1;
            break;
        case DEFECT_TWO_COLUMNS:
            first->kind = OPR_VALUE_NARROW;
            first->flags = second->flags = PRV_OPERAND_COLUMN;
            break;
        default:
            break;
    }
}

static void spoilErrors(PrvErrorText* first, PrvErrorText* second) {
    switch (DEFECT) {
        case DEFECT_ERROR_HIGH:
            second->code = PRV_FIRST_ENGINE_CODE;
            break;
        case DEFECT_ERROR_TEXT_NULL:
            second->text = NULL;
            break;
        case DEFECT_ERROR_TWICE:
            second->code = first->code;
            break;
        case DEFECT_ERROR_ZERO:
            second->code = 0;
            break;
        default:
            break;
    }
}

static void spoilMethods(PrvMethod* first, PrvMethod* second) {
    switch (DEFECT) {
        case DEFECT_METHOD_CAPITAL:
            second->name = "Second";
            break;
        case DEFECT_METHOD_DIGIT:
            second->name = "2nd";
            break;
        case DEFECT_METHOD_EMPTY:
            second->name = "";
            break;
        case DEFECT_METHOD_HYPHEN:
            second->name = "sec-ond";
            break;
        case DEFECT_METHOD_NULL:
            second->name = NULL;
            break;
        case DEFECT_METHOD_TWICE:
            second->name = first->name;
            break;
        default:
            break;
    }
}

static void spoilEntry(PrvEntry* entry) {
    switch (DEFECT) {
        case DEFECT_ERRORS_NULL:
            entry->errors = NULL;
            break;
        case DEFECT_METHODS_NULL:
            entry->methods = NULL;
            break;
        case DEFECT_NAME_LOWER:
            entry->name = "broken_name_lower";
            break;
        case DEFECT_NAME_NULL:
            entry->name = NULL;
            break;
        case DEFECT_NAME_OTHER:
            entry->name = "COPY";
            break;
        case DEFECT_NO_CLOSE:
            entry->close = NULL;
            break;
        case DEFECT_NO_MASK:
            entry->mask = NULL;
            break;
        case DEFECT_NO_OPEN:
            entry->open = NULL;
            break;
        case DEFECT_OPERANDS_NULL:
            entry->operands = NULL;
            break;
        case DEFECT_SAMPLES_NULL:
            entry->sampleRuleCount = 1;
            break;
        case DEFECT_VERSION_0:
            entry->interfaceVersion = 0;
            break;
        case DEFECT_VERSION_99:
            entry->interfaceVersion = 99;
            break;
        default:
            break;
    }
}

const PrvEntry* KorvProviderEntry(void) {
    static PrvOperand operands[] = {{"FIRST", 1, 0, OPR_VALUE_INTEGER, 0, 9},
                                    {"SECOND", 2, 0, OPR_VALUE_NARROW, 0, 0}};
    static PrvErrorText errors[] = {{1, "an error"}, {2, "another error"}};
    static PrvMethod methods[] = {{"first", PRV_METHOD_KEYED}, {"second", 0}};
    static PrvEntry entry;
    if (DEFECT == DEFECT_ENTRY_NULL) return NULL;
    entry.interfaceVersion = PRV_INTERFACE_VERSION;
    entry.name = PROVIDER_NAME;
    entry.operands = operands;
    entry.operandCount = 2;
    entry.errors = errors;
    entry.errorCount = 2;
    entry.open = openNever;
    entry.mask = maskNever;
    entry.close = closeNever;
    entry.methods = methods;
    entry.methodCount = 2;
    spoilOperands(&operands[0], &operands[1]);
    spoilErrors(&errors[0], &errors[1]);
    spoilMethods(&methods[0], &methods[1]);
    spoilEntry(&entry);
    return &entry;
}
