// Control blocks, copies of descriptions and error chains, each thread with its own.
#include "concurrency/run.h"

void convertRecords(Run& run) {
    constexpr uint32_t count = 5;
    FieldDefI fields[count] = {};
    for (uint32_t i = 0; i < count; ++i) {
        fields[i].link = i + 1 < count ? &fields[i + 1] : nullptr;
        fields[i].length = run.number() + i;
    }
    FieldRefI second = {};
    second.fieldPos = static_cast<int16_t>(run.number() % count);
    CtrlBlkI block = {};
    block.blkValue3 = run.number();
    block.fieldDefs = fields;
    block.fieldRefs.link = &second;
    OprDefI operand = {};
    operand.intValue = run.number();
    SvcDefI service = {};
    service.svcValue = run.number();
    service.oprDefs = &operand;

    auto* blockX = zeroed<CtrlBlkX>();
    auto* serviceX = zeroed<SvcDefX>();
    CHECK(CALL(KORVCnvCtrlBlkFromIToX, &block, blockX) == 0);
    CHECK(CALL(KORVCnvSvcDefFromIToX, blockX, &service, serviceX) == 0);
    uint32_t converted = 0;
    for (const FieldDefX* field = blockX->fieldDefs; field; field = field->link) {
        CHECK(field->length == run.number() + converted++);
        CHECK(field->header.length == sizeof *field);
    }
    CHECK(converted == count);
    CHECK(blockX->fieldRefs.link->fieldDef->length == run.number() + run.number() % count);
    CHECK(blockX->header.version == KORV_BLOCK_VERSION && blockX->blkValue3 == run.number());
    CHECK(serviceX->svcValue == run.number() && serviceX->oprDefs->intValue == run.number());

    FieldDefX field = {};
    OprDefX operandX = {};
    CHECK(CALL(KORVCnvFieldDefFromIToX, &fields[1], &field) == 0);
    CHECK(field.length == run.number() + 1);
    CHECK(CALL(KORVCnvOprDefFromIToX, &operand, &operandX) == 0);
    CHECK(operandX.intValue == run.number());
    CHECK(CALL(CleanParamsX, serviceX->oprDefs) == 0);
    serviceX->oprDefs = nullptr;
    CHECK(CALL(CleanSvcDefX, serviceX) == 0);
    CHECK(CALL(CleanCtrlBlkX, blockX) == 0);
}

namespace {

void copyProvider(Run& run, const wchar_t* text, const char* narrow) {
    PrvDesc provider = {};
    provider.prvAttr1 = static_cast<uint16_t>(run.number());
    provider.text1 = provider.text2 = text;
    char buffers[2][80];
    wchar_t wideBuffers[2][80];
    void* texts[] = {buffers[0], buffers[1]};
    void* wideTexts[] = {wideBuffers[0], wideBuffers[1]};
    PrvRecord record = {};
    record.text1Cap = record.text2Cap = sizeof buffers[0];
    record.texts = texts;
    CHECK(CALL(CopyPrvStruct, &record, &provider, 1252, 0, KORV_TEXT_NARROW) == 0);
    CHECK(equal(buffers[0], narrow) && equal(buffers[1], narrow));
    CHECK(record.prvAttr1 == static_cast<uint16_t>(run.number()));
    record.text1Cap = record.text2Cap = sizeof wideBuffers[0];
    record.texts = wideTexts;
    CHECK(CALL(CopyPrvStruct, &record, &provider, 0, 0, KORV_TEXT_WIDE) == 0);
    CHECK(equal(wideBuffers[0], text) && equal(wideBuffers[1], text));
}

}  // namespace

void copyDescriptions(Run& run) {
    const Text<char> narrow(run.number());
    const Text<wchar_t> wide(run.number());
    TextDesc text = {};
    text.codePage = run.thread % 2 ? 1252 : 1208;
    text.narrowText = narrow.characters;
    FieldDesc description = {};
    description.textMode = KORV_TEXT_NARROW;
    description.textLen = narrow.length;
    description.text = &text;
    FieldDefI field = {}, copy = {};
    CHECK(CALL(CopyFieldStruct, &description, &field, 850, 0) == 0);
    CHECK(CALL(DuplicateFieldDefI, &copy, &field) == 0);
    CHECK(equal(copy.wideText, wide.characters) && equal(copy.narrowText, narrow.characters));

    ParamDesc parameter = {};
    parameter.valueKind = OPR_VALUE_NARROW;
    parameter.valueLen = narrow.length;
    parameter.value.text = &text;
    OprDefI operand = {};
    CHECK(CALL(CopyParamsStruct, &parameter, &operand, 850, 0) == 0);
    CHECK(equal(operand.wideValue, wide.characters));
    copyProvider(run, operand.wideValue, narrow.characters);

    static constexpr struct {
        const char* name;
        int32_t number;
    } providers[] = {{"ccn", 1}, {"Eml", 3}, {"HASH", 5}, {"cdSwap", 10}, {"none", 11}};
    const auto& provider = providers[run.number() % 5];
    CHECK(CALL(GetProviderID, provider.name) == provider.number);

    void* const blocks[] = {field.wideText,  field.narrowText,  copy.wideText,
                            copy.narrowText, operand.wideValue, operand.narrowValue};
    for (void* block : blocks) std::free(block);
}

void captureErrors(Run& run) {
    const Text<char> narrow(run.number());
    const Text<wchar_t> wide(run.number());
    auto* anchor = zeroed<ErrorAnchor>();
    CtrlBlkI block = {};
    block.errorAnchor = anchor;
    for (uint32_t i = 0; i < 10; ++i) {
        CHECK(CALL(ErrorCapture, &block, run.number(), i, 3) == 0);
        CHECK(CALL(TokenCapture, &block, narrow.characters, VARCHAR_SZ, 5, 0) == 0);
        CHECK(CALL(ErrorCaptureEAB, anchor, i, run.number(), 1) == 0);
        CHECK(CALL(TokenCaptureEAB, anchor, wide.characters, WVARCHAR_SZ, 6, 0) == 0);
        CHECK(anchor->currentSize == sizeof(ErrorRecord) + sizeof(TokenSlot) + wide.length * 4 + 4);
    }
    uint32_t records = 0;
    for (const ErrorRecord* record = anchor->head; record; record = record->next, ++records) {
        CHECK((records % 2 ? record->secondCode : record->firstCode) == run.number());
        CHECK(equal(record->tokenSlots[0].text, wide.characters));
    }
    CHECK(records == 20 && anchor->recordCount == 20);
    CHECK(CALL(TermErrors, anchor) == 0);
}
