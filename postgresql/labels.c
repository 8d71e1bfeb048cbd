/* Rules as security labels of columns, and what they will do. */
#include "korv.h"

#include "access/htup_details.h"
#include "access/relation.h"
#include "catalog/dependency.h"
#include "catalog/pg_class.h"
#include "catalog/pg_type.h"
#include "commands/seclabel.h"
#include "funcapi.h"
#include "mb/pg_wchar.h"
#include "utils/builtins.h"
#include "utils/lsyscache.h"
#include "utils/rel.h"

PG_FUNCTION_INFO_V1(korv_describe);

/* Types whose text is the same in every session. That of a float, an interval or a byte string
 * depends on settings, and casts of other types may run functions of the type's owner. */
static bool isMaskable(Oid type) {
    static const Oid types[] = {TEXTOID, VARCHAROID,   BPCHAROID,     INT2OID,
                                INT4OID, INT8OID,      NUMERICOID,    UUIDOID,
                                DATEOID, TIMESTAMPOID, TIMESTAMPTZOID};
    int i;

    type = getBaseType(type);
    for (i = 0; i < (int)lengthof(types); ++i) {
        if (types[i] == type) return true;
    }
    return false;
}

/* findColumn returns the only column that has the name, without regard to letter case. */
static AttrNumber findColumn(Oid relation, const char* name) {
    const Relation open = relation_open(relation, AccessShareLock);
    const TupleDesc columns = RelationGetDescr(open);
    AttrNumber found = InvalidAttrNumber;
    int matches = 0;
    int i;

    for (i = 0; i < columns->natts; ++i) {
        const Form_pg_attribute column = TupleDescAttr(columns, i);

        if (!column->attisdropped && pg_strcasecmp(NameStr(column->attname), name) == 0) {
            found = column->attnum;
            ++matches;
        }
    }
    relation_close(open, NoLock);
    return matches == 1 ? found : InvalidAttrNumber;
}

/* openLabel opens the rule for a column of a table. It sets the column that the rule also reads,
 * and rule->problem also where the rule does not fit the table. */
static KorvRule* openLabel(Oid relation, AttrNumber column, const char* label,
                           AttrNumber* related) {
    KorvRule* rule = korvOpenRule(korvMakeRules(CurrentMemoryContext), cstring_to_text(label),
                                  cstring_to_text(get_attname(relation, column, false)), true);
    const Oid type = get_atttype(relation, column);

    *related = InvalidAttrNumber;
    if (rule->problem != NULL) return rule;
    rule->sqlState = KORV_BAD_RULE;
    if ((rule->column->action == KORV_MASK_PROVIDER || rule->column->action == KORV_MASK_CONST) &&
        !isMaskable(type)) {
        rule->problem = psprintf("values of type %s cannot be masked; use KEEP, NULL or DROP",
                                 format_type_be(type));
    } else if (rule->column->relatedName != NULL) {
        const char* name = pg_any_to_server(pstrdup(rule->column->relatedName),
                                            strlen(rule->column->relatedName), PG_UTF8);

        *related = findColumn(relation, name);
        if (*related == InvalidAttrNumber) {
            rule->problem = psprintf(
                "the rule reads column \"%s\", and the table has none or several "
                "of that name",
                name);
        } else if (!isMaskable(get_atttype(relation, *related))) {
            rule->problem =
                psprintf("the rule reads column \"%s\", whose type %s has no fixed text", name,
                         format_type_be(get_atttype(relation, *related)));
        }
    }
    return rule;
}

static void checkLabel(const ObjectAddress* object, const char* label) {
    const char kind =
        object->classId == RelationRelationId ? get_rel_relkind(object->objectId) : '\0';
    AttrNumber related;
    KorvRule* rule;

    if (label == NULL) return;
    if (object->objectSubId == 0 ||
        (kind != RELKIND_RELATION && kind != RELKIND_PARTITIONED_TABLE)) {
        ereport(ERROR, (errcode(ERRCODE_WRONG_OBJECT_TYPE),
                        errmsg("rules are labels of the columns of tables")));
    }
    rule = openLabel(object->objectId, object->objectSubId, label, &related);
    if (rule->problem != NULL) {
        ereport(ERROR, (errcode(rule->sqlState), errmsg("%s", rule->problem)));
    }
}

void korvRegisterLabels(void) {
    register_label_provider("korv", checkLabel);
}

/* korv.describe(relation, column, rule): what the rule will do, and why it cannot be used. */
Datum korv_describe(PG_FUNCTION_ARGS) {
    const Oid relation = PG_GETARG_OID(0);
    char* label = text_to_cstring(PG_GETARG_TEXT_PP(2));
    AttrNumber related;
    const KorvRule* rule = openLabel(relation, PG_GETARG_INT16(1), label, &related);
    const KorvMaskColumn* column = rule->column;
    char* values[8] = {NULL};
    TupleDesc row;

    if (get_call_result_type(fcinfo, NULL, &row) != TYPEFUNC_COMPOSITE) {
        elog(ERROR, "the result must be a record");
    }
    if (column != NULL) {
        values[0] = (char*)column->actionName;
        values[1] = (char*)column->method;
        values[2] = (char*)column->secret;
        values[3] = (char*)column->fingerprint;
        values[4] = column->action == KORV_MASK_KEEP       ? "clear"
                    : column->action != KORV_MASK_PROVIDER ? "removed"
                    : column->isDisguise                   ? "disguise"
                    : column->secret != NULL               ? "protects"
                                                           : NULL;
    }
    if (related != InvalidAttrNumber) values[5] = get_attname(relation, related, false);
    values[6] = psprintf("%u", getBaseType(get_atttype(relation, PG_GETARG_INT16(1))));
    values[7] = (char*)rule->problem;
    PG_RETURN_DATUM(
        HeapTupleGetDatum(BuildTupleFromCStrings(TupleDescGetAttInMetadata(row), values)));
}
