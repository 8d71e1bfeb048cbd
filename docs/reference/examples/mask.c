/* Examples of the masking engine for its reference. What a line prints is in its comment. */
#include <korv/mask.h>
#include <stdio.h>

static void maskColumn(void) {
    const char* names[] = {"CARD"};
    KorvMaskSettings settings = {0};
    settings.size = sizeof settings;
    settings.rules = "CARD = CCN, method=transpose, key=17";
    settings.columns = names;
    settings.columnCount = 1;

    KorvMask* mask;
    int32_t status = KorvMaskOpen(&settings, &mask);
    if (status == KORV_MASK_SUCCESS) {
        const char bytes[] = "4556737586899855";
        const int32_t offsets[] = {0, 16};
        const KorvMaskStrings source = {1, 0, 32, offsets, bytes, NULL};
        const KorvMaskResult* result;
        status = KorvMaskBatch(mask, 0, 1, &source, NULL, &result);
        if (status == KORV_MASK_SUCCESS)
            printf("%.16s\n", result->strings.bytes);  // 4556739032738216
    }
    if (status != KORV_MASK_SUCCESS && mask != NULL && KorvMaskRecordCount(mask) > 0)
        puts(KorvMaskGetRecord(mask, 0)->message);
    KorvMaskClose(mask);
}

static void lookAtRules(void) {
    const char* names[] = {"CARD", "CITY"};
    KorvMaskSettings settings = {0};
    settings.size = sizeof settings;
    settings.flags = KORV_MASK_KEEP_UNLISTED;
    settings.rules = "CARD = CCN, method=transpose, key=17";
    settings.columns = names;
    settings.columnCount = 2;

    printf("%d\n", KorvMaskVersion() >= KORV_MASK_VERSION);  // 1
    KorvMask* mask;
    if (KorvMaskOpen(&settings, &mask) == KORV_MASK_SUCCESS) {
        printf("%s\n", KorvMaskGetColumn(mask, 1)->actionName);  // KEEP
        printf("%s\n", KorvMaskGetProvider(mask, 0)->name);      // CCN
        printf("%d\n", KorvMaskGetProvider(mask, 1) == NULL);    // 1
    }
    KorvMaskClose(mask);
}

static void failedValues(void) {
    const char* names[] = {"CARD"};
    KorvMaskSettings settings = {0};
    settings.size = sizeof settings;
    settings.rules = "CARD = CCN, method=transpose, key=17";
    settings.columns = names;
    settings.columnCount = 1;

    KorvMask* mask;
    if (KorvMaskOpen(&settings, &mask) == KORV_MASK_SUCCESS) {
        const char bytes[] = "none";
        const int32_t offsets[] = {0, 4};
        const KorvMaskStrings source = {1, 0, 32, offsets, bytes, NULL};
        const KorvMaskResult* result;
        if (KorvMaskBatch(mask, 0, 1, &source, NULL, &result) == KORV_MASK_VALUES_FAILED) {
            printf("%d\n", KorvMaskRecordCount(mask) > 0);                       // 1
            printf("row %d\n", (int)KorvMaskGetRecord(mask, 0)->row);            // row 1
            printf("%d failed\n", (int)KorvMaskGetStatistics(mask, 0)->failed);  // 1 failed
            KorvMaskClearRecords(mask);
        }
    }
    KorvMaskClose(mask);
}

int main(void) {
    maskColumn();
    lookAtRules();
    failedValues();
    return 0;
}
