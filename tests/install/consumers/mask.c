/* A consumer of the installed masking engine: masks a column of two values by a rule for a provider
 * that is installed with the engine. */
#include <korv/mask.h>
#include <stdio.h>
#include <string.h>

static int failed(const KorvMask* mask, int32_t status) {
    const KorvMaskRecord* record = KorvMaskGetRecord(mask, 0);
    printf("status %d: %s\n", (int)status, record ? record->message : "no record");
    return 1;
}

int main(void) {
    const char* names[] = {"CARD", "NOTE"};
    const char bytes[] = "45567375868998554000001234567899";
    const int32_t offsets[] = {0, 16, 32};
    KorvMaskStrings source;
    KorvMaskSettings settings;
    const KorvMaskColumn* column;
    const KorvMaskResult* result;
    KorvMask* mask = NULL;
    int32_t status;

    memset(&source, 0, sizeof source);
    source.count = 2;
    source.offsetBits = 32;
    source.offsets = offsets;
    source.bytes = bytes;
    memset(&settings, 0, sizeof settings);
    settings.size = sizeof settings;
    settings.rules = "CARD = CCN, method=transpose, key=17\nNOTE = KEEP";
    settings.columns = names;
    settings.columnCount = 2;

    status = KorvMaskOpen(&settings, &mask);
    if (!mask) return 1;
    if (status == KORV_MASK_SUCCESS) status = KorvMaskBatch(mask, 0, 1, &source, NULL, &result);
    if (status != KORV_MASK_SUCCESS) return failed(mask, status);
    column = KorvMaskGetColumn(mask, 0);
    printf("%u values masked by %s, %s, pointers of %u bytes\n",
           (unsigned)result->statistics.masked, column->actionName,
           memcmp(result->strings.bytes, bytes, 32) != 0 ? "changed" : "unchanged",
           (unsigned)sizeof(void*));
    KorvMaskClose(mask);
    return 0;
}
