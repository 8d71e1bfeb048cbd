/* The settings korv.*: where providers, lookup files and secrets are, and who may use which. */
#include "korv.h"

#include "miscadmin.h"
#include "utils/guc.h"
#include "utils/varlena.h"

int korvOnError = KORV_ON_ERROR_RAISE;

static char* providerFolders;
static char* lookupFolders;
static char* secretsFile;
static char* allowedSecrets;

static const struct config_enum_entry onErrorNames[] = {
    {"error", KORV_ON_ERROR_RAISE, false}, {"null", KORV_ON_ERROR_NULL, false}, {NULL, 0, false}};

/* Relative paths would begin in the data directory, which holds nothing for this extension. */
static bool checkFolders(char** value, void** extra, GucSource source) {
    List* folders;
    ListCell* cell;

    if (!SplitDirectoriesString(pstrdup(*value), ',', &folders)) {
        GUC_check_errdetail("List syntax is invalid.");
        return false;
    }
    foreach (cell, folders) {
        if (!is_absolute_path((const char*)lfirst(cell))) {
            GUC_check_errdetail("A folder must be an absolute path.");
            return false;
        }
    }
    return true;
}

static bool checkFile(char** value, void** extra, GucSource source) {
    if (**value == '\0' || is_absolute_path(*value)) return true;
    GUC_check_errdetail("The file must be an absolute path.");
    return false;
}

static bool checkNames(char** value, void** extra, GucSource source) {
    List* names;

    if (SplitGUCList(pstrdup(*value), ',', &names)) return true;
    GUC_check_errdetail("List syntax is invalid.");
    return false;
}

void korvDefineSettings(void) {
    DefineCustomStringVariable("korv.provider_folders", "Folders of provider modules.",
                               "When empty, the folder of the installation.", &providerFolders, "",
                               PGC_SUSET, GUC_LIST_INPUT, checkFolders, NULL, NULL);
    DefineCustomStringVariable("korv.lookup_folders", "Folders of files that rules may name.",
                               "When empty, rules cannot name files.", &lookupFolders, "",
                               PGC_SUSET, GUC_LIST_INPUT, checkFolders, NULL, NULL);
    DefineCustomStringVariable("korv.secrets_file", "The file with the secrets.", NULL,
                               &secretsFile, "", PGC_SUSET, GUC_SUPERUSER_ONLY, checkFile, NULL,
                               NULL);
    DefineCustomStringVariable("korv.allowed_secrets",
                               "Names of the secrets that rules of this role may name, or *.",
                               "Superusers may use every secret.", &allowedSecrets, "", PGC_SUSET,
                               GUC_LIST_INPUT, checkNames, NULL, NULL);
    DefineCustomEnumVariable("korv.on_error", "What a value that cannot be masked becomes.", NULL,
                             &korvOnError, KORV_ON_ERROR_RAISE, onErrorNames, PGC_USERSET, 0, NULL,
                             NULL, NULL);
    MarkGUCPrefixReserved("korv");
}

/* The texts live as long as the current memory context, which is enough for KorvMaskOpen. */
static const char* const* foldersOf(const char* setting, uint32_t* count) {
    List* folders;
    ListCell* cell;
    const char** texts;

    if (!SplitDirectoriesString(pstrdup(setting), ',', &folders)) folders = NIL;
    texts = palloc((list_length(folders) + 1) * sizeof *texts);
    *count = 0;
    foreach (cell, folders) texts[(*count)++] = lfirst(cell);
    return texts;
}

void korvFillSettings(KorvMaskSettings* settings) {
    /* Without a folder the engine would accept every file. Nothing lies below a device. */
    static const char* const noFolders[] = {"/dev/null"};

    settings->folders = foldersOf(providerFolders, &settings->folderCount);
    settings->fileFolders = foldersOf(lookupFolders, &settings->fileFolderCount);
    if (settings->fileFolderCount == 0) {
        settings->fileFolders = noFolders;
        settings->fileFolderCount = 1;
    }
    if (*secretsFile != '\0') settings->secretsFile = secretsFile;
}

bool korvMayUseSecret(const char* name) {
    List* names;
    ListCell* cell;

    if (superuser()) return true;
    if (!SplitGUCList(pstrdup(allowedSecrets), ',', &names)) return false;
    foreach (cell, names) {
        const char* allowed = lfirst(cell);

        if (strcmp(allowed, "*") == 0 || strcmp(allowed, name) == 0) return true;
    }
    return false;
}

/* Whether a message is about the secrets file, whose path only superusers may see. */
bool korvIsSecretsFile(const char* message) {
    return *secretsFile != '\0' && strstr(message, secretsFile) != NULL;
}
