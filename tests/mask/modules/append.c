/* APPEND: the value, the value of a related column, and that column's name: `value|[related]|NAME`,
 * or `value|NULL|NAME`. */
#include <stdio.h>
#include <stdlib.h>

#include "answer.h"

static void append(const PrvCall* call, ValueRecord* value, const ValueRecord* related,
                   ValueRecord* result) {
    const FieldDefX* field = call->block->fieldRefs.link->fieldDef;
    const char* text = related->nullIndicator == 1 ? "" : (const char*)related->data;
    const char* format = related->nullIndicator == 1 ? "|NULL%s|%ls" : "|[%s]|%ls";
    const size_t room = (size_t)value->capacity / (isWide(call) ? sizeof(wchar_t) : 1);

    copyValue(call, value, result);
    if (field->link || (size_t)related->length != strlen(text)) {
        format = "|the related column is not as promised%s%ls";
    }
    if (isWide(call)) {
        wchar_t* target = (wchar_t*)value->target;
        const size_t length = wcslen((const wchar_t*)value->data);
        wchar_t wideFormat[64];
        swprintf(wideFormat, 64, L"%s", format);
        result->length += (int32_t)sizeof(wchar_t) * swprintf(target + length, room - length,
                                                              wideFormat, text, field->wideText);
    } else {
        char* target = (char*)value->target + result->length;
        result->length +=
            snprintf(target, room - (size_t)result->length, format, text, field->wideText);
    }
}

static int32_t mask(void* state, const PrvCall* call) {
    (void)state;
    append(call, call->value, call->related, call->result);
    return 0;
}

/* Every second value is left to mask. */
static int32_t maskBatch(void* state, const PrvCall* call, uint32_t count, int32_t* statuses) {
    uint32_t i;
    (void)state;
    for (i = 0; i < count; ++i) {
        if (i % 2 == 1) {
            statuses[i] = 1;
        } else {
            append(call, &call->value[i], &call->related[i], &call->result[i]);
        }
    }
    return 0;
}

const PrvEntry* KorvProviderEntry(void) {
    static const PrvOperand operands[] = {
        {"WITH", 1, PRV_OPERAND_REQUIRED | PRV_OPERAND_COLUMN, OPR_VALUE_NARROW, 0, 0}};
    static const PrvEntry entry = {
        .interfaceVersion = PRV_INTERFACE_VERSION,
        .name = "APPEND",
        .operands = operands,
        .operandCount = 1,
        .open = openNothing,
        .mask = mask,
        .close = closeNothing,
        .maskBatch = maskBatch,
    };
    return &entry;
}
