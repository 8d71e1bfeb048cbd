/* Masks the values of one column with the engine. The first argument is a rule, such as
 * "CCN, secret=crm", and the second one the file with the secrets, if the rule needs one; each line
 * of standard input is a value. An empty line is NULL. */
#include <korv/mask.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { MOST_VALUES = 1000, MOST_BYTES = 100000 };

/* 1. A batch: all values in one block of bytes, and the offset of each of them. */
static char bytes[MOST_BYTES];
static int32_t offsets[MOST_VALUES + 1];
static uint8_t validity[MOST_VALUES / 8 + 1];

static uint64_t readValues(void) {
    char line[1000];
    uint64_t count = 0;
    while (count < MOST_VALUES && fgets(line, sizeof line, stdin)) {
        const size_t length = strcspn(line, "\n");
        const int32_t begin = offsets[count];
        if ((size_t)begin + length > sizeof bytes) break;
        memcpy(bytes + begin, line, length);
        offsets[count + 1] = begin + (int32_t)length;
        if (length > 0) validity[count / 8] |= (uint8_t)(1u << count % 8);
        ++count;
    }
    return count;
}

static void printRecords(const KorvMask* mask) {
    const KorvMaskRecord* record;
    uint64_t i;
    for (i = 0; (record = KorvMaskGetRecord(mask, i)) != NULL; ++i) {
        if (record->row != KORV_MASK_NO_ROW)
            fprintf(stderr, "row %lu: ", (unsigned long)record->row);
        fprintf(stderr, "%s\n", record->message);
    }
}

/* 3. The masked values, in the same layout. */
static void printValues(const KorvMaskResult* result) {
    const int32_t* ends = result->strings.offsets;
    uint64_t i;
    for (i = 0; i < result->strings.count; ++i) {
        printf("%.*s\n", (int)(ends[i + 1] - ends[i]), result->strings.bytes + ends[i]);
    }
}

int main(int argc, char** argv) {
    const char* columns[] = {"VALUE"};
    KorvMaskSettings settings = {0};
    KorvMask* mask;
    int32_t status;
    if (argc < 2 || argc > 3) {
        fprintf(stderr, "usage: mask_column RULE [SECRETS]\n");
        return 2;
    }

    /* 2. One rule, for one column. */
    settings.size = sizeof settings;
    settings.flags = KORV_MASK_ONE_RULE;
    settings.rules = argv[1];
    settings.columns = columns;
    settings.columnCount = 1;
    settings.secretsFile = argc == 3 ? argv[2] : NULL;
    status = KorvMaskOpen(&settings, &mask);
    if (status == KORV_MASK_SUCCESS) {
        const KorvMaskStrings source = {readValues(), 0, 32, offsets, bytes, validity};
        const KorvMaskResult* result;
        status = KorvMaskBatch(mask, 0, 1, &source, NULL, &result);
        if (status == KORV_MASK_SUCCESS || status == KORV_MASK_VALUES_FAILED) printValues(result);
    }
    printRecords(mask);
    KorvMaskClose(mask);
    return status == KORV_MASK_SUCCESS ? 0 : status == KORV_MASK_VALUES_FAILED ? 1 : 2;
}
