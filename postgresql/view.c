/* korv.create_masked_view: a view that masks the columns of a table by their labels. */
#include "korv.h"

#include "access/relation.h"
#include "catalog/namespace.h"
#include "catalog/pg_authid.h"
#include "catalog/pg_type.h"
#include "executor/spi.h"
#include "miscadmin.h"
#include "utils/acl.h"
#include "utils/builtins.h"
#include "utils/guc.h"
#include "utils/lsyscache.h"
#include "utils/rel.h"

PG_FUNCTION_INFO_V1(korv_create_masked_view);

static char* selectText(Oid relation) {
    Oid types[] = {REGCLASSOID, BOOLOID};
    Datum values[] = {ObjectIdGetDatum(relation), BoolGetDatum(true)};

    if (SPI_execute_with_args("SELECT korv.select_text($1, $2)", 2, types, values, NULL, true, 1) !=
            SPI_OK_SELECT ||
        SPI_processed != 1) {
        elog(ERROR, "korv.select_text has failed");
    }
    return SPI_getvalue(SPI_tuptable->vals[0], SPI_tuptable->tupdesc, 1);
}

/* The statements name a function in a schema that the caller has no right to use, so that it can
 * be called through a view only. Hence they run as the superuser, and the view is handed over. All
 * else has been checked with the caller's own rights. */
static void runAsSuperuser(const char* statements) {
    const int nesting = NewGUCNestLevel();
    Oid user;
    int context;

    GetUserIdAndSecContext(&user, &context);
    set_config_option("search_path", "pg_catalog, pg_temp", PGC_USERSET, PGC_S_SESSION,
                      GUC_ACTION_SAVE, true, 0, false);
    SetUserIdAndSecContext(BOOTSTRAP_SUPERUSERID, context | SECURITY_LOCAL_USERID_CHANGE);
    SPI_execute(statements, false, 0);
    SetUserIdAndSecContext(user, context);
    AtEOXact_GUC(true, nesting);
}

Datum korv_create_masked_view(PG_FUNCTION_ARGS) {
    const Oid relation = PG_GETARG_OID(0);
    Relation table;
    Oid schema;
    const char* view;
    AclResult mayCreate;

    if (!pg_class_ownercheck(relation, GetUserId())) {
        aclcheck_error(ACLCHECK_NOT_OWNER, OBJECT_TABLE, get_rel_name(relation));
    }
    /* Keeps the name and the labels of the table as they are. */
    table = relation_open(relation, ShareUpdateExclusiveLock);
    schema = RelationGetNamespace(table);
    view = quote_qualified_identifier(get_namespace_name(schema),
                                      psprintf("%s_masked", RelationGetRelationName(table)));
    mayCreate = pg_namespace_aclcheck(schema, GetUserId(), ACL_CREATE);
    if (mayCreate != ACLCHECK_OK) {
        aclcheck_error(mayCreate, OBJECT_SCHEMA, get_namespace_name(schema));
    }
    SPI_connect();
    runAsSuperuser(
        psprintf("CREATE VIEW %s WITH (security_barrier) AS %s;"
                 "ALTER VIEW %s OWNER TO %s",
                 view, selectText(relation), view,
                 quote_identifier(GetUserNameFromId(table->rd_rel->relowner, false))));
    SPI_finish();
    relation_close(table, NoLock);
    PG_RETURN_VOID();
}
