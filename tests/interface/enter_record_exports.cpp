// Enters the functions that work on records, values and buffers.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cwchar>

#include "interface/every_export.h"
#include "korv/korv.h"

namespace {

template <class T>
T* zeroed() {
    return static_cast<T*>(std::calloc(1, sizeof(T)));
}

using Case = void (*)(const Entry& call);
const Case kCases[] = {
    [](const Entry& call) {
        FieldDefI fields[2] = {};
        fields[0].link = &fields[1];
        CtrlBlkI block = {};
        block.fieldDefs = fields;
        block.fieldRefs.fieldPos = 1;
        OprDefI operand = {};
        SvcDefI service = {};
        service.oprDefs = &operand;
        auto* blockX = zeroed<CtrlBlkX>();
        auto* serviceX = zeroed<SvcDefX>();
        FieldDefX field = {};
        OprDefX operandX = {};
        EXPECT_EQ(0, CALL(KORVCnvCtrlBlkFromIToX, &block, blockX));
        EXPECT_EQ(blockX->fieldDefs->link, blockX->fieldRefs.fieldDef);
        EXPECT_EQ(0, CALL(KORVCnvSvcDefFromIToX, blockX, &service, serviceX));
        EXPECT_EQ(0, CALL(KORVCnvFieldDefFromIToX, &fields[0], &field));
        EXPECT_EQ(0, CALL(KORVCnvOprDefFromIToX, &operand, &operandX));
        EXPECT_EQ(0, CALL(CleanParamsX, serviceX->oprDefs));
        serviceX->oprDefs = nullptr;
        EXPECT_EQ(0, CALL(CleanSvcDefX, serviceX));
        EXPECT_EQ(0, CALL(CleanCtrlBlkX, blockX));
    },
    [](const Entry& call) {
        TextDesc text = {};
        text.codePage = 1252;
        text.narrowText = kLongText;
        FieldDesc field = {};
        field.textMode = KORV_TEXT_NARROW;
        field.textLen = static_cast<int32_t>(kLongTextLen);
        field.text = &text;
        FieldDefI first = {}, second = {};
        EXPECT_EQ(0, CALL(CopyFieldStruct, &field, &first, 1208, 0));
        EXPECT_EQ(0, CALL(DuplicateFieldDefI, &second, &first));
        EXPECT_EQ(0, std::wcscmp(first.wideText, second.wideText));
        ParamDesc parameter = {};
        parameter.valueKind = OPR_VALUE_NARROW;
        parameter.valueLen = field.textLen;
        parameter.value.text = &text;
        OprDefI operand = {};
        EXPECT_EQ(0, CALL(CopyParamsStruct, &parameter, &operand, 1208, 0));
        EXPECT_EQ(0, std::wcscmp(first.wideText, operand.wideValue));
        PrvDesc provider = {};
        provider.text1 = provider.text2 = first.wideText;
        char buffers[2][80];
        void* texts[] = {buffers[0], buffers[1]};
        PrvRecord record = {};
        record.text1Cap = record.text2Cap = 80;
        record.texts = texts;
        EXPECT_EQ(0, CALL(CopyPrvStruct, &record, &provider, 1252, 0, KORV_TEXT_NARROW));
        EXPECT_STREQ(kLongText, buffers[1]);
        EXPECT_EQ(0, CALL(CopyPrvStruct, &record, &provider, 0, 0, KORV_TEXT_WIDE));
        EXPECT_EQ(10, CALL(GetProviderID, "cdswap"));
        for (void* block :
             {static_cast<void*>(first.wideText), static_cast<void*>(first.narrowText),
              static_cast<void*>(second.wideText), static_cast<void*>(second.narrowText),
              static_cast<void*>(operand.wideValue), static_cast<void*>(operand.narrowValue)}) {
            std::free(block);
        }
    },
    [](const Entry& call) {
        auto* anchor = zeroed<ErrorAnchor>();
        CtrlBlkI block = {};
        block.errorAnchor = anchor;
        const int32_t number = -12345;
        EXPECT_EQ(0, CALL(ErrorCapture, &block, 1, 2, 3));
        EXPECT_EQ(0, CALL(ErrorCaptureEAB, anchor, 1, 2, 4));
        EXPECT_EQ(0, CALL(TokenCapture, &block, kLongText, VARCHAR_SZ, 5, 0));
        EXPECT_EQ(0, CALL(TokenCaptureEAB, anchor, &number, INTEGER, 6, 0));
        const TokenSlot* slots = anchor->tail->tokenSlots;
        EXPECT_STREQ(L"-12345", slots[1].text);
        EXPECT_EQ(0, CALL(TermErrors, anchor));
    },
    [](const Entry& call) {
        FieldDefI field = {};
        field.dataType = INTEGER;
        uint32_t unsignedLength = 0;
        int32_t length = 0;
        char data[] = "abc", target[8] = {};
        ValueRecord value = {}, result = {};
        value.data = data;
        value.target = target;
        value.capacity = 8;
        CtrlBlkI block = {};
        block.blkCode = 1;
        block.fieldRefs.fieldDef = &field;
        EXPECT_EQ(0, CALL(GetDataTypeBytes, &field, &unsignedLength));
        EXPECT_EQ(4u, unsignedLength);
        EXPECT_EQ(0, CALL(GetDataTypeLengths, &field, &unsignedLength));
        EXPECT_STREQ("INTEGER", reinterpret_cast<const char*>(CALL(KORVGetDataTypeName, INTEGER)));
        EXPECT_EQ(0, CALL(KORV_IsCharacterDatatype, CHAR));
        EXPECT_EQ(0, CALL(KORV_IsWideCharacterDatatype, WCHAR));
        EXPECT_EQ(0, CALL(GetSrcBufLen, &value, VARCHAR_SZ));
        field.dataType = VARCHAR_SZ;
        EXPECT_EQ(0, CALL(KORVGetSourceDataLen, &value, &field, &length));
        EXPECT_EQ(3, length);
        EXPECT_EQ(KORV_CLASS_TEXT, CALL(KORV_IsZeroOrZeroLength, &block, &value, &result));
        EXPECT_STREQ("abc", target);
    },
    [](const Entry& call) {
        void* buffer = nullptr;
        uint32_t size = 0, digits = 0;
        EXPECT_EQ(0, CALL(KORVAllocateBuffer, &buffer, &size, 100));
        EXPECT_EQ(0, CALL(KORVAllocateBuffer1, &buffer, &size, 200, 1));
        EXPECT_EQ(200u, size);
        std::free(buffer);
        EXPECT_EQ(0, CALL(KORVGetLongLongDigitCount, 0x89ABCDEFu, 0x01234567u, &digits));
        EXPECT_EQ(17u, digits);
        EXPECT_EQ(0, CALL(KORVGetIntDigitCount, -120, &digits));
        EXPECT_EQ(20u, digits);
        int32_t day = 0;
        OdbcDate date = {};
        CALL(KORVIntSYBToODBC, &day, &date);
        EXPECT_EQ(1900, date.year);
        CALL(KORVIntODBCToSYB, &date, &day);
        EXPECT_EQ(0, day);
    },
};

}  // namespace

void enterRecordExports(const Entry& call) {
    for (Case run : kCases) run(call);
}
