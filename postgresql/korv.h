/* What the files of the PostgreSQL extension share: settings, and rules that are open. */
#ifndef KORV_POSTGRESQL_H
#define KORV_POSTGRESQL_H

#include "postgres.h"

#include "fmgr.h"
#include "korv/mask.h"

#define KORV_BAD_RULE MAKE_SQLSTATE('K', 'V', '0', '0', '1')
#define KORV_BAD_VALUE MAKE_SQLSTATE('K', 'V', '0', '0', '2')
#define KORV_BAD_PROVIDER MAKE_SQLSTATE('K', 'V', '0', '0', '3')

typedef enum KorvOnError { KORV_ON_ERROR_RAISE, KORV_ON_ERROR_NULL } KorvOnError;

extern int korvOnError;

/* Defines the settings korv.*, and fills in what a superuser has set. */
extern void korvDefineSettings(void);
extern void korvFillSettings(KorvMaskSettings* settings);
extern bool korvMayUseSecret(const char* name);
extern bool korvIsSecretsFile(const char* message);

/* A rule that is open for a column. `problem` says why it cannot be used, or is NULL. */
typedef struct KorvRule {
    KorvMask* mask;
    const KorvMaskColumn* column;
    text* rule;
    text* name;
    Oid user;
    const char* problem;
    int sqlState;
} KorvRule;

/* The rules of one place. They are closed when the memory context is reset. */
typedef struct KorvRules KorvRules;

/* Set when a provider has damaged the process: nothing is released any more. */
extern bool korvIsDamaged;

extern KorvRules* korvMakeRules(MemoryContext context);
extern KorvRule* korvOpenRule(KorvRules* rules, text* rule, text* name, bool isChecked);

extern void korvRegisterLabels(void);
extern void korvGuardViews(void);

#endif
