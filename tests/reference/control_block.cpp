// Conversion and release of a control block, step by step: each reference walks the field list
// anew.
#include "reference/control_block.h"

#include <cstdlib>
#include <cstring>

namespace reference {

namespace {

void writeHeader(BlockHeader& header, const char* eyeCatcher, uint16_t length) {
    header.version = KORV_BLOCK_VERSION;
    header.length = length;
    std::memcpy(header.eyeCatcher, eyeCatcher, 4);
}

void convertField(const FieldDefI& source, FieldDefX& target) {
    writeHeader(target.header, "FLDX", sizeof(FieldDefX));
    target.dataType = source.dataType;
    target.length = source.length;
    target.fldValue1 = source.fldValue1;
    target.fldValue2 = source.fldValue2;
    target.fldValue3 = source.fldValue3;
    target.fldFlag = source.fldFlag;
    target.wideText = source.wideText;
    target.narrowText = source.narrowText;
    target.wideTextLen = source.wideTextLen;
    target.narrowTextLen = source.narrowTextLen;
    target.link = nullptr;
}

int32_t convertFields(const FieldDefI* source, FieldDefX** place) {
    for (; source; source = source->link) {
        auto* field = static_cast<FieldDefX*>(std::malloc(sizeof(FieldDefX)));
        *place = field;
        if (!field) return KORV_NO_MEMORY_FIELD;
        std::memset(field, 0, sizeof *field);
        convertField(*source, *field);
        place = &field->link;
    }
    return KORV_SUCCESS;
}

int32_t convertReferences(const FieldRefI* source, FieldRefX* target, FieldDefX* fields) {
    for (;;) {
        FieldDefX* field = fields;
        for (int16_t step = 0; step < source->fieldPos; ++step) {
            if (field) field = field->link ? field->link : field + 1;
        }
        target->fieldPos = static_cast<uint16_t>(source->fieldPos);
        target->fieldDef = field;
        source = source->link;
        if (!source) return KORV_SUCCESS;
        if (!target->link) {
            target->link = static_cast<FieldRefX*>(std::malloc(sizeof(FieldRefX)));
            if (!target->link) return KORV_NO_MEMORY_REFERENCE;
            std::memset(target->link, 0, sizeof(FieldRefX));
        }
        target = target->link;
    }
}

template <class Record>
void freeList(Record*& head) {
    while (head) {
        Record* next = head->link;
        std::free(head);
        head = next;
    }
}

}  // namespace

int32_t cnvCtrlBlkFromIToX(const CtrlBlkI* source, CtrlBlkX* target) {
    if (!source || !target) return KORV_FAILURE;
    writeHeader(target->header, "BLKX", sizeof(CtrlBlkX));
    target->blkCode = source->blkCode;
    target->blkAttr1 = source->blkAttr1;
    target->blkAttr2 = source->blkAttr2;
    target->blkAttr3 = source->blkAttr3;
    target->blkAttr4 = source->blkAttr4;
    target->blkAttr5 = source->blkAttr5;
    target->blkFlag = source->blkFlag;
    target->blkValue1 = source->blkValue1;
    target->blkValue2 = source->blkValue2;
    target->blkValue3 = source->blkValue3;
    int32_t status = convertFields(source->fieldDefs, &target->fieldDefs);
    if (!status) {
        status = convertReferences(&source->fieldRefs, &target->fieldRefs, target->fieldDefs);
    }
    if (status) {
        freeList(target->fieldDefs);
        freeList(target->fieldRefs.link);
    }
    return status;
}

int32_t cleanCtrlBlkX(CtrlBlkX* block) {
    if (!block) return KORV_SUCCESS;
    freeList(block->fieldDefs);
    freeList(block->fieldRefs.link);
    std::free(block);
    return KORV_SUCCESS;
}

}  // namespace reference
