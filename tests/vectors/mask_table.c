/* Masks a table through the engine's C interface.
 *
 *     mask_table COLUMNS RULES SECRETS <table.fields >masked.fields
 *
 * The table is a row of COLUMNS names and rows of values. Every field ends with a zero byte; one
 * byte 0xFF stands for NULL. Faults go to standard error, one a line: row, column, code and message
 * between tabs. */
#include <korv/mask.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

typedef struct Column {
    int32_t* offsets;
    uint8_t* validity;
    char* bytes;
    KorvMaskStrings strings;
} Column;

static char* readAll(size_t* size) {
    size_t room = 1 << 24;
    char* text = malloc(room);
    if (text == NULL) abort();
    *size = fread(text, 1, room - 1, stdin);
    text[*size] = '\0';
    return text;
}

/* Every `step`th field from `field` on, in the layout of a batch. */
static Column columnOf(char* const* fields, size_t count, size_t step) {
    Column column;
    size_t bytes = 0;
    size_t i;
    for (i = 0; i < count; ++i) bytes += strlen(fields[i * step]);
    column.offsets = calloc(count + 1, sizeof *column.offsets);
    column.validity = calloc(count / 8 + 1, 1);
    column.bytes = malloc(bytes + 1);
    if (column.offsets == NULL || column.validity == NULL || column.bytes == NULL) abort();
    for (i = 0; i < count; ++i) {
        const char* const field = fields[i * step];
        const int isNull = strcmp(field, "\xFF") == 0;
        const size_t length = isNull ? 0 : strlen(field);
        memcpy(column.bytes + column.offsets[i], field, length);
        column.offsets[i + 1] = column.offsets[i] + (int32_t)length;
        if (!isNull) column.validity[i / 8] |= (uint8_t)(1u << i % 8);
    }
    column.strings.count = count;
    column.strings.first = 0;
    column.strings.offsetBits = 32;
    column.strings.offsets = column.offsets;
    column.strings.bytes = column.bytes;
    column.strings.validity = column.validity;
    return column;
}

static void writeField(const KorvMaskStrings* strings, uint64_t row) {
    const int32_t* const offsets = (const int32_t*)strings->offsets + strings->first + row;
    const uint64_t bit = strings->first + row;
    if (strings->validity != NULL && (strings->validity[bit / 8] >> bit % 8 & 1) == 0) {
        putchar(0xFF);
    } else {
        fwrite(strings->bytes + offsets[0], 1, (size_t)(offsets[1] - offsets[0]), stdout);
    }
    putchar('\0');
}

static void writeFaults(const KorvMask* mask) {
    const KorvMaskRecord* record;
    uint64_t i;
    for (i = 0; (record = KorvMaskGetRecord(mask, i)) != NULL; ++i) {
        const KorvMaskColumn* const column = KorvMaskGetColumn(mask, record->column);
        fprintf(stderr, "%lu\t%s\t%lu\t%s\n", (unsigned long)record->row,
                column == NULL ? "" : column->name, (unsigned long)record->code, record->message);
    }
}

int main(int argc, char** argv) {
    const size_t count = argc == 4 ? strtoul(argv[1], NULL, 10) : 0;
    size_t size, at, fields = 0, rows, i, row;
    char* text;
    char** all;
    Column* columns;
    const KorvMaskResult** results;
    KorvMaskSettings settings = {0};
    KorvMask* mask;
    if (count == 0) return 2;
    text = readAll(&size);
    for (at = 0; at < size; ++at) fields += text[at] == '\0';
    rows = fields / count - 1;
    all = malloc(fields * sizeof *all);
    columns = malloc(count * sizeof *columns);
    results = malloc(count * sizeof *results);
    if (all == NULL || columns == NULL || results == NULL) abort();
    for (at = 0, i = 0; i < fields; at += strlen(text + at) + 1) all[i++] = text + at;

    settings.size = sizeof settings;
    settings.rulesFile = argv[2];
    settings.secretsFile = argv[3];
    settings.columns = (const char* const*)all;
    settings.columnCount = (uint32_t)count;
    if (KorvMaskOpen(&settings, &mask) != KORV_MASK_SUCCESS) {
        writeFaults(mask);
        return 2;
    }
    for (i = 0; i < count; ++i) columns[i] = columnOf(all + count + i, rows, count);
    for (i = 0; i < count; ++i) {
        const uint32_t related = KorvMaskGetColumn(mask, (uint32_t)i)->related;
        const int32_t status = KorvMaskBatch(
            mask, (uint32_t)i, 1, &columns[i].strings,
            related == KORV_MASK_NO_COLUMN ? NULL : &columns[related].strings, &results[i]);
        if (status != KORV_MASK_SUCCESS && status != KORV_MASK_VALUES_FAILED) return 2;
    }
    for (row = 0; row < rows; ++row) {
        for (i = 0; i < count; ++i) writeField(&results[i]->strings, row);
    }
    writeFaults(mask);
    KorvMaskClose(mask);
    for (i = 0; i < count; ++i) {
        free(columns[i].offsets);
        free(columns[i].validity);
        free(columns[i].bytes);
    }
    free(results);
    free(columns);
    free(all);
    free(text);
    return 0;
}
