/* Keeps the schema korv_views from everybody but superusers, whatever has been granted.
 *
 * Members of pg_read_all_data and pg_write_all_data may use every schema. They could call the
 * function of masked views, for any value and secret, if this did not stop them from looking it up.
 */
#include "korv.h"

#include "catalog/objectaccess.h"
#include "catalog/pg_namespace.h"
#include "miscadmin.h"
#include "utils/lsyscache.h"

static object_access_hook_type nextHook;

static void guardNamespace(ObjectAccessType access, Oid classId, Oid objectId, int subId,
                           void* argument) {
    if (nextHook != NULL) nextHook(access, classId, objectId, subId, argument);
    if (access == OAT_NAMESPACE_SEARCH && !superuser()) {
        ObjectAccessNamespaceSearch* search = argument;
        const char* name = get_namespace_name(objectId);

        if (name != NULL && strcmp(name, "korv_views") == 0) {
            search->result = false;
            if (search->ereport_on_violation) {
                ereport(ERROR, (errcode(ERRCODE_INSUFFICIENT_PRIVILEGE),
                                errmsg("permission denied for schema %s", name)));
            }
        }
    }
}

void korvGuardViews(void) {
    nextHook = object_access_hook;
    object_access_hook = guardNamespace;
}
