/* Rules that are open: handles of the engine, which belong to a memory context. */
#include "korv.h"

#include "lib/stringinfo.h"
#include "mb/pg_wchar.h"
#include "miscadmin.h"
#include "utils/builtins.h"

/* A call with more rules than this, which come from data, opens rules again and again. */
enum { MOST_RULES = 8 };

struct KorvRules {
    MemoryContext context;
    MemoryContextCallback callback;
    int next;
    KorvRule rules[MOST_RULES];
};

bool korvIsDamaged = false;

static void closeRules(void* argument) {
    KorvRules* rules = argument;
    int i;

    if (korvIsDamaged) return;
    for (i = 0; i < MOST_RULES; ++i) {
        KorvMaskClose(rules->rules[i].mask);
        rules->rules[i].mask = NULL;
    }
}

KorvRules* korvMakeRules(MemoryContext context) {
    KorvRules* rules = MemoryContextAllocZero(context, sizeof *rules);

    rules->context = context;
    rules->callback.func = closeRules;
    rules->callback.arg = rules;
    MemoryContextRegisterResetCallback(context, &rules->callback);
    return rules;
}

static bool isSame(const text* left, const text* right) {
    return VARSIZE_ANY_EXHDR(left) == VARSIZE_ANY_EXHDR(right) &&
           memcmp(VARDATA_ANY(left), VARDATA_ANY(right), VARSIZE_ANY_EXHDR(left)) == 0;
}

static text* copyTo(MemoryContext context, const text* source) {
    const Size length = VARSIZE_ANY_EXHDR(source);
    text* copy = MemoryContextAlloc(context, VARHDRSZ + length);

    SET_VARSIZE(copy, VARHDRSZ + length);
    memcpy(VARDATA(copy), VARDATA_ANY(source), length);
    return copy;
}

static const char* utf8Of(const text* source) {
    const char* terminated = text_to_cstring(source);

    return pg_server_to_any(terminated, strlen(terminated), PG_UTF8);
}

/* Why a rule has not been opened, one line for each fault. */
static const char* problemOf(const KorvMask* mask, int32_t status) {
    StringInfoData problem;
    uint64_t i;

    initStringInfo(&problem);
    for (i = 0; i < KorvMaskRecordCount(mask); ++i) {
        const char* message = KorvMaskGetRecord(mask, i)->message;

        if (korvIsSecretsFile(message) && !superuser()) {
            ereport(LOG_SERVER_ONLY, (errmsg("korv: %s", message), errhidestmt(true)));
            message = "the secrets cannot be read; the server's log says why";
        }
        if (i > 0) appendStringInfoChar(&problem, '\n');
        appendStringInfoString(&problem, pg_any_to_server(message, strlen(message), PG_UTF8));
    }
    if (problem.len == 0) {
        appendStringInfo(&problem, "the rule cannot be opened, status %d", (int)status);
    }
    return problem.data;
}

static int sqlStateOf(int32_t status) {
    switch (status) {
        case KORV_MASK_NO_MEMORY:
            return ERRCODE_OUT_OF_MEMORY;
        case KORV_MASK_BAD_PROVIDER:
            return KORV_BAD_PROVIDER;
        default:
            return KORV_BAD_RULE;
    }
}

static void openRule(KorvRule* rule, bool isChecked) {
    const char* columns[1];
    KorvMaskSettings settings = {0};
    int32_t status;

    settings.size = sizeof settings;
    settings.flags = KORV_MASK_ONE_RULE;
    settings.rules = utf8Of(rule->rule);
    settings.columns = columns;
    settings.columnCount = 1;
    columns[0] = utf8Of(rule->name);
    korvFillSettings(&settings);
    status = KorvMaskOpen(&settings, &rule->mask);
    if (status == KORV_MASK_SUCCESS && isChecked) {
        const char* secret = KorvMaskGetColumn(rule->mask, 0)->secret;

        if (secret != NULL && !korvMayUseSecret(secret)) {
            /* Without secrets, the message is that for a secret that does not exist. */
            KorvMaskClose(rule->mask);
            rule->mask = NULL;
            settings.secretsFile = NULL;
            status = KorvMaskOpen(&settings, &rule->mask);
            if (status == KORV_MASK_SUCCESS)
                elog(ERROR, "a rule has been opened without its secret");
        }
    }
    if (status == KORV_MASK_SUCCESS) {
        rule->column = KorvMaskGetColumn(rule->mask, 0);
        return;
    }
    rule->problem = problemOf(rule->mask, status);
    rule->sqlState = sqlStateOf(status);
    KorvMaskClose(rule->mask);
    rule->mask = NULL;
}

/* korvOpenRule returns the rule for a column of this name, from those that are open if possible.
 * isChecked: the current user must be allowed to use the rule's secret. */
KorvRule* korvOpenRule(KorvRules* rules, text* rule, text* name, bool isChecked) {
    const Oid user = isChecked ? GetUserId() : InvalidOid;
    KorvRule* place;
    int i;

    for (i = 0; i < MOST_RULES; ++i) {
        place = &rules->rules[i];
        if (place->column != NULL && place->user == user && isSame(place->rule, rule) &&
            isSame(place->name, name)) {
            return place;
        }
    }
    place = &rules->rules[rules->next];
    rules->next = (rules->next + 1) % MOST_RULES;
    place->column = NULL;
    KorvMaskClose(place->mask);
    place->mask = NULL;
    if (place->rule != NULL) pfree(place->rule);
    place->rule = NULL;
    if (place->name != NULL) pfree(place->name);
    place->name = NULL;
    place->problem = NULL;
    place->rule = copyTo(rules->context, rule);
    place->name = copyTo(rules->context, name);
    place->user = user;
    openRule(place, isChecked);
    return place;
}
