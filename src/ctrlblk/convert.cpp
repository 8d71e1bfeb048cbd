// Conversion of request records from the I form to the X form.
#include "common/header.h"
#include "common/heap.h"
#include "common/list.h"
#include "korv/ctrlblk.h"

namespace korv {
namespace {

void convertField(const FieldDefI& source, FieldDefX& target) noexcept {
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

void convertOperand(const OprDefI& source, OprDefX& target) noexcept {
    writeHeader(target.header, "OPRX", sizeof(OprDefX));
    target.oprCode = source.oprCode;
    target.oprText = source.oprText;
    target.oprValue1 = source.oprValue1;
    target.oprFlag = source.oprFlag;
    target.oprValue2 = source.oprValue2;
    target.oprTextLen = source.oprTextLen;
    target.valueKind = source.valueKind;
    target.valueFlag = source.valueFlag;
    target.valueCodePage = source.valueCodePage;
    target.narrowValueLen = source.narrowValueLen;
    target.wideValueLen = source.wideValueLen;
    target.intValue = source.intValue;
    target.wideValue = source.wideValue;
    target.narrowValue = source.narrowValue;
    target.otherValue = source.otherValue;
}

// Appends a converted record to the list at `head` for each of the source's; false: no memory.
template <class Source, class Target>
bool convertList(const Source* source, Target*& head,
                 void (*convert)(const Source&, Target&)) noexcept {
    Target** position = &head;
    for (; source; source = source->link) {
        *position = heap::record<Target>();
        if (!*position) return false;
        convert(*source, **position);
        position = &(*position)->link;
    }
    return true;
}

// Finds the record at a position of a field list. It remembers where it stands, so that ascending
// positions cost one walk over the list together.
class FieldCursor {
  public:
    explicit FieldCursor(FieldDefX* head) noexcept : head_(head), at_(head) {}

    // Zero and negative positions name the first field. Past the end lies the address one record
    // beyond the last: there is nothing to read there, so the walk stays.
    FieldDefX* at(int16_t position) noexcept {
        if (position < steps_) {
            at_ = head_;
            steps_ = 0;
            beyond_ = false;
        }
        while (steps_ < position && at_ && !beyond_) {
            beyond_ = !at_->link;
            at_ = beyond_ ? at_ + 1 : at_->link;
            ++steps_;
        }
        return at_;
    }

  private:
    FieldDefX* head_;
    FieldDefX* at_;
    int16_t steps_ = 0;  // from head_ to at_
    bool beyond_ = false;
};

int32_t convertReferences(const FieldRefI& first, FieldDefX* fields, FieldRefX& target) noexcept {
    FieldCursor cursor(fields);
    FieldRefX* node = &target;
    for (const FieldRefI* source = &first;;) {
        node->fieldPos = static_cast<uint16_t>(source->fieldPos);
        node->fieldDef = cursor.at(source->fieldPos);
        source = source->link;
        if (!source) return KORV_SUCCESS;
        if (!node->link) {
            node->link = heap::record<FieldRefX>();
            if (!node->link) return KORV_NO_MEMORY_REFERENCE;
        }
        node = node->link;
    }
}

int32_t convertBlock(const CtrlBlkI& source, CtrlBlkX& target) noexcept {
    writeHeader(target.header, "BLKX", sizeof(CtrlBlkX));
    target.blkCode = source.blkCode;
    target.blkAttr1 = source.blkAttr1;
    target.blkAttr2 = source.blkAttr2;
    target.blkAttr3 = source.blkAttr3;
    target.blkAttr4 = source.blkAttr4;
    target.blkAttr5 = source.blkAttr5;
    target.blkFlag = source.blkFlag;
    target.blkValue1 = source.blkValue1;
    target.blkValue2 = source.blkValue2;
    target.blkValue3 = source.blkValue3;

    int32_t status = KORV_NO_MEMORY_FIELD;
    if (convertList(source.fieldDefs, target.fieldDefs, convertField)) {
        status = convertReferences(source.fieldRefs, target.fieldDefs, target.fieldRefs);
    }
    if (status != KORV_SUCCESS) {
        freeList(target.fieldDefs);
        freeList(target.fieldRefs.link);
    }
    return status;
}

int32_t convertService(const CtrlBlkX& block, const SvcDefI& source, SvcDefX& target) noexcept {
    writeHeader(target.header, "SVCX", sizeof(SvcDefX));
    target.svcCode1 = source.svcCode1;
    target.svcCode2 = source.svcCode2;
    target.svcAttr1 = source.svcAttr1;
    target.svcAttr2 = source.svcAttr2;
    target.svcFlag = source.svcFlag;
    target.svcValue = source.svcValue;
    target.oprDefs = nullptr;
    target.fieldDefs = block.fieldDefs;

    if (convertList(source.oprDefs, target.oprDefs, convertOperand)) return KORV_SUCCESS;
    freeList(target.oprDefs);
    return KORV_NO_MEMORY_OPERAND;
}

}  // namespace
}  // namespace korv

int32_t KORVCnvCtrlBlkFromIToX(const CtrlBlkI* source, CtrlBlkX* target) {
    if (!source || !target) return KORV_FAILURE;
    return korv::convertBlock(*source, *target);
}

int32_t KORVCnvFieldDefFromIToX(const FieldDefI* source, FieldDefX* target) {
    if (!source || !target) return KORV_FAILURE;
    korv::convertField(*source, *target);
    return KORV_SUCCESS;
}

int32_t KORVCnvOprDefFromIToX(const OprDefI* source, OprDefX* target) {
    if (!source || !target) return KORV_FAILURE;
    korv::convertOperand(*source, *target);
    return KORV_SUCCESS;
}

int32_t KORVCnvSvcDefFromIToX(const CtrlBlkX* block, const SvcDefI* source, SvcDefX* target) {
    if (!source || !target) return KORV_FAILURE;
    return korv::convertService(*block, *source, *target);
}
