/* The functions that mask a value: korv.mask, korv.mask_column and korv_views.mask_column. */
#include "korv.h"

#include "catalog/namespace.h"
#include "lib/stringinfo.h"
#include "mb/pg_wchar.h"
#include "utils/builtins.h"

PG_MODULE_MAGIC;
PG_FUNCTION_INFO_V1(korv_mask);
PG_FUNCTION_INFO_V1(korv_mask_in_view);

void _PG_init(void);

void _PG_init(void) {
    if (KorvMaskVersion() < KORV_MASK_VERSION) {
        ereport(ERROR, (errcode(ERRCODE_FEATURE_NOT_SUPPORTED),
                        errmsg("libkorvmask is too old for the extension korv"),
                        errdetail("Its interface has version %u instead of %u.",
                                  (unsigned)KorvMaskVersion(), KORV_MASK_VERSION)));
    }
    korvDefineSettings();
    korvRegisterLabels();
    korvGuardViews();
}

/* A value in the layout of the engine. It refers to the text, or to a copy in UTF-8. */
typedef struct OneValue {
    int32_t offsets[2];
    uint8_t validity;
    KorvMaskStrings strings;
} OneValue;

/* utf8Value returns a value in UTF-8. The usual functions show the bytes that they cannot convert,
 * which must not happen here, so that such a value becomes one that the engine does not accept. */
static const char* utf8Value(const char* bytes, int* length) {
    const int encoding = GetDatabaseEncoding();
    const Size capacity = (Size)*length * MAX_CONVERSION_GROWTH + 1;
    unsigned char* converted;
    Oid conversion;

    if (encoding == PG_UTF8 || encoding == PG_SQL_ASCII) return bytes;
    conversion = FindDefaultConversionProc(encoding, PG_UTF8);
    converted = palloc(capacity);
    if (!OidIsValid(conversion) ||
        pg_do_encoding_conversion_buf(conversion, encoding, PG_UTF8, (unsigned char*)bytes, *length,
                                      converted, (int)capacity, true) < *length) {
        *length = 1;
        return "\xff";
    }
    *length = strlen((char*)converted);
    return (char*)converted;
}

static void setValue(OneValue* one, const text* value) {
    int length = value == NULL ? 0 : VARSIZE_ANY_EXHDR(value);

    one->strings = (KorvMaskStrings){1, 0, 32, one->offsets, NULL, &one->validity};
    if (value != NULL) one->strings.bytes = utf8Value(VARDATA_ANY(value), &length);
    one->validity = value != NULL;
    one->offsets[0] = 0;
    one->offsets[1] = length;
}

static const char* serverText(const char* utf8) {
    return pg_any_to_server(pstrdup(utf8), strlen(utf8), PG_UTF8);
}

/* raiseFailure reports a value that has failed: with its column, code and tokens, without itself.
 * All texts are copied before the error leaves, because it closes the rule. */
static void pg_attribute_noreturn() raiseFailure(KorvRule* rule) {
    const KorvMaskRecord* record = KorvMaskGetRecord(rule->mask, 0);
    const char* name = text_to_cstring(rule->name);
    const char* message = "the value cannot be masked";
    uint32_t code = 0;
    StringInfoData tokens;
    uint32_t i;

    initStringInfo(&tokens);
    if (record != NULL) {
        code = record->code;
        message = serverText(record->message);
        for (i = 0; i < record->tokenCount; ++i) {
            appendStringInfo(&tokens, " %s=%s", record->tokens[i].name,
                             serverText(record->tokens[i].text));
        }
    }
    KorvMaskClearRecords(rule->mask);
    ereport(ERROR, (errcode(KORV_BAD_VALUE), errmsg("column \"%s\": %s", name, message),
                    errdetail("code=%u%s", (unsigned)code, tokens.data),
                    err_generic_string(PG_DIAG_COLUMN_NAME, name)));
}

/* raiseEnd reports a call that ended early for another reason than the value. */
static void pg_attribute_noreturn() raiseEnd(KorvRule* rule, int32_t status) {
    const KorvMaskRecord* record = KorvMaskGetRecord(rule->mask, 0);
    const char* message = record == NULL ? "the value cannot be masked" : record->message;
    /* Other processes share none of the memory that providers are given, so that there is no reason
     * for a PANIC. This process must not go on, and releasing memory could crash it. */
    const int level = status == KORV_MASK_OVERRUN ? FATAL : ERROR;

    korvIsDamaged = status == KORV_MASK_OVERRUN;
    message = psprintf("column \"%s\": %s", text_to_cstring(rule->name), serverText(message));
    if (!korvIsDamaged) KorvMaskClearRecords(rule->mask);
    ereport(level, (errcode(status == KORV_MASK_NO_MEMORY   ? ERRCODE_OUT_OF_MEMORY
                            : status == KORV_MASK_TOO_LARGE ? ERRCODE_PROGRAM_LIMIT_EXCEEDED
                            : status == KORV_MASK_OVERRUN || status == KORV_MASK_BAD_PROVIDER
                                ? KORV_BAD_PROVIDER
                                : KORV_BAD_RULE),
                    errmsg("%s", message)));
    pg_unreachable();
}

static KorvRule* ruleOf(FunctionCallInfo fcinfo, bool isChecked) {
    KorvRule* rule;
    text* name;

    if (PG_ARGISNULL(1) || (PG_NARGS() > 3 && PG_ARGISNULL(3))) {
        ereport(ERROR, (errcode(ERRCODE_NULL_VALUE_NOT_ALLOWED),
                        errmsg("the rule and the name of the column must not be NULL")));
    }
    if (fcinfo->flinfo->fn_extra == NULL) {
        fcinfo->flinfo->fn_extra = korvMakeRules(fcinfo->flinfo->fn_mcxt);
    }
    name = PG_NARGS() > 3 ? PG_GETARG_TEXT_PP(3) : cstring_to_text("value");
    rule = korvOpenRule(fcinfo->flinfo->fn_extra, PG_GETARG_TEXT_PP(1), name, isChecked);
    if (rule->problem != NULL) {
        ereport(ERROR, (errcode(rule->sqlState), errmsg("%s", rule->problem)));
    }
    if (rule->column->action == KORV_MASK_DROP) {
        ereport(ERROR, (errcode(KORV_BAD_RULE),
                        errmsg("the rule DROP leaves a column out and cannot mask a value")));
    }
    return rule;
}

static Datum maskValue(FunctionCallInfo fcinfo, bool isChecked) {
    KorvRule* rule;
    OneValue value;
    OneValue related;
    const KorvMaskResult* result;
    int32_t status;
    const int32_t* offsets;
    char* bytes;
    char* converted;
    int length;

    if (PG_ARGISNULL(0)) PG_RETURN_NULL();
    rule = ruleOf(fcinfo, isChecked);
    setValue(&value, PG_GETARG_TEXT_PP(0));
    if (rule->column->related != KORV_MASK_NO_COLUMN) {
        setValue(&related, PG_ARGISNULL(2) ? NULL : PG_GETARG_TEXT_PP(2));
    }
    status = KorvMaskBatch(rule->mask, 0, 0, &value.strings,
                           rule->column->related == KORV_MASK_NO_COLUMN ? NULL : &related.strings,
                           &result);
    if (status == KORV_MASK_VALUES_FAILED || status == KORV_MASK_ABORTED) {
        if (korvOnError == KORV_ON_ERROR_RAISE) raiseFailure(rule);
        KorvMaskClearRecords(rule->mask);
        PG_RETURN_NULL();
    }
    if (status != KORV_MASK_SUCCESS) raiseEnd(rule, status);
    if (result->strings.validity != NULL && (result->strings.validity[0] & 1) == 0) {
        PG_RETURN_NULL();
    }
    offsets = (const int32_t*)result->strings.offsets + result->strings.first;
    length = offsets[1] - offsets[0];
    if (length == 0) PG_RETURN_TEXT_P(cstring_to_text_with_len("", 0));
    bytes = (char*)result->strings.bytes + offsets[0];
    converted = pg_any_to_server(bytes, length, PG_UTF8);
    if (converted != bytes) length = strlen(converted);
    PG_RETURN_TEXT_P(cstring_to_text_with_len(converted, length));
}

/* korv_mask checks that the current user may use the secret. */
Datum korv_mask(PG_FUNCTION_ARGS) {
    return maskValue(fcinfo, true);
}

/* korv_mask_in_view does not: that was checked for the role that created the view. */
Datum korv_mask_in_view(PG_FUNCTION_ARGS) {
    return maskValue(fcinfo, false);
}
