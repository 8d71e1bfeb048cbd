/* The engine's interface from C, by the example in its header, and the provider interface. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "korv/mask.h"
#include "korv/provider.h"

#define CHECK(condition)                                                    \
    do {                                                                    \
        if (!(condition)) {                                                 \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
            exit(1);                                                        \
        }                                                                   \
    } while (0)

/* Fills the settings as the header's example does. */
static KorvMaskSettings settingsFor(const char* rules) {
    static const char* names[] = {"CARD"};
    KorvMaskSettings settings;
    memset(&settings, 0, sizeof settings);
    settings.size = sizeof settings;
    settings.rules = rules;
    settings.columns = names;
    settings.columnCount = 1;
    return settings;
}

static void maskACard(void) {
    const KorvMaskSettings settings = settingsFor("CARD = CCN, method=transpose, key=17");
    const char bytes[] = "4556737586899855";
    const int32_t offsets[] = {0, 16};
    const KorvMaskStrings source = {1, 0, 32, offsets, bytes, NULL};
    const KorvMaskResult* result = NULL;
    const int32_t* masked;
    KorvMask* mask;
    CHECK(KorvMaskOpen(&settings, &mask) == KORV_MASK_SUCCESS);
    CHECK(KorvMaskGetColumn(mask, 0)->action == KORV_MASK_PROVIDER);
    CHECK(strcmp(KorvMaskGetColumn(mask, 0)->actionName, "CCN") == 0);
    CHECK(KorvMaskBatch(mask, 0, 1, &source, NULL, &result) == KORV_MASK_SUCCESS);
    CHECK(result->strings.count == 1 && result->strings.offsetBits == 32);
    masked = (const int32_t*)result->strings.offsets;
    CHECK(masked[0] == 0 && masked[1] == 16);
    CHECK(memcmp(result->strings.bytes, bytes, 6) == 0);
    CHECK(memcmp(result->strings.bytes, bytes, 16) != 0);
    CHECK(result->states[0] == KORV_MASK_VALUE_MASKED && result->statistics.masked == 1);
    CHECK(KorvMaskGetStatistics(mask, 0)->values == 1);
    CHECK(KorvMaskRecordCount(mask) == 0);
    KorvMaskClose(mask);
}

static void failWithARecord(void) {
    const KorvMaskSettings settings = settingsFor("CARD = CCN, key=17");
    KorvMask* mask;
    CHECK(KorvMaskOpen(&settings, &mask) == KORV_MASK_BAD_RULES);
    CHECK(mask != NULL && KorvMaskRecordCount(mask) == 1);
    CHECK(strncmp(KorvMaskGetRecord(mask, 0)->message, "rules:1:8: CCN needs a secret", 29) == 0);
    KorvMaskClearRecords(mask);
    CHECK(KorvMaskGetRecord(mask, 0) == NULL);
    KorvMaskClose(mask);
}

static void listAProvider(void) {
    KorvMaskSettings settings = settingsFor(NULL);
    const KorvMaskProvider* provider;
    KorvMask* mask;
    settings.flags = KORV_MASK_ALL_PROVIDERS;
    settings.columnCount = 0;
    CHECK(KorvMaskOpen(&settings, &mask) == KORV_MASK_SUCCESS);
    provider = KorvMaskGetProvider(mask, 0);
    CHECK(provider != NULL && strcmp(provider->entry->name, provider->name) == 0);
    CHECK(provider->entry->interfaceVersion == PRV_INTERFACE_VERSION);
    KorvMaskClose(mask);
}

int main(void) {
    CHECK(KorvMaskVersion() == KORV_MASK_VERSION);
    maskACard();
    failWithARecord();
    listAProvider();
    return 0;
}
