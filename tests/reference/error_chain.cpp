// Error records and the capture of three kinds of token, step by step.
#include "reference/error_chain.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "korv/datacnv.h"

namespace reference {

namespace {

void account(ErrorAnchor& anchor, uint32_t bytes) {
    anchor.currentSize += bytes;
    anchor.largestSize = static_cast<uint32_t>(std::fmax(static_cast<double>(anchor.largestSize),
                                                         static_cast<double>(anchor.currentSize)));
}

wchar_t* room(TokenSlot& slot, std::size_t bytes) {
    slot.text = static_cast<wchar_t*>(std::malloc(bytes));
    return slot.text;
}

}  // namespace

int32_t errorCapture(ErrorAnchor* anchor, uint32_t firstCode, uint32_t secondCode,
                     int16_t slotCount) {
    if (!anchor) return KORV_FAILURE;
    const auto size = static_cast<uint32_t>((std::fmax(slotCount, 1) - 1) * 8 + 32);
    anchor->currentSize = size;
    // One slot more than is told, for the token that comes when all are taken.
    auto* record = static_cast<ErrorRecord*>(std::malloc(size + sizeof(TokenSlot)));
    (anchor->head ? anchor->tail->next : anchor->head) = record;
    if (!record) return KORV_FAILURE;
    anchor->tail = record;
    std::memset(record, 0, size + sizeof(TokenSlot));
    record->header.version = KORV_BLOCK_VERSION;
    record->header.length = 32;
    std::memcpy(record->header.eyeCatcher, "ECBD", 4);
    record->firstCode = firstCode;
    record->secondCode = secondCode;
    record->tokenSlotCount = slotCount;
    ++anchor->recordCount;
    account(*anchor, static_cast<uint32_t>(slotCount * 8));
    return KORV_SUCCESS;
}

int32_t tokenCapture(ErrorAnchor* anchor, const void* value, int16_t dataType, uint32_t tokenId) {
    if (!anchor) return KORV_FAILURE;
    if (tokenId > 90) return KORV_TOKEN_BAD_ID;
    ErrorRecord& record = *anchor->tail;
    int16_t index = 0;
    while (index < record.tokenSlotCount && record.tokenSlots[index].tokenId != 0) ++index;
    if (record.tokenSlotCount < index) return KORV_TOKEN_NO_SLOT;
    TokenSlot& slot = record.tokenSlots[index];
    slot.tokenId = tokenId;
    const uint32_t sourceLength = 0;
    uint32_t length = 0;
    if (dataType == VARCHAR_SZ) {
        const auto* text = static_cast<const char*>(value);
        length = static_cast<uint32_t>(std::strlen(text));
        const uint32_t bytes = length * 4 + 4;
        if (!room(slot, bytes)) return KORV_FAILURE;
        KORVCnvVarcharSzToWVarcharSz(text, &sourceLength, slot.text, bytes, &length, nullptr);
    } else if (dataType == WVARCHAR_SZ) {
        const auto* text = static_cast<const wchar_t*>(value);
        length = static_cast<uint32_t>(std::wcslen(text));
        if (!room(slot, length * 4 + 4)) return KORV_FAILURE;
        std::memcpy(slot.text, text, length * 4 + 4);
    } else if (dataType == INTEGER) {
        const auto* number = static_cast<const int32_t*>(value);
        if (!room(slot, 48)) return KORV_FAILURE;
        if (*number == 0) {
            std::memcpy(slot.text, L"0", 8);
        } else {
            KORVCnvIntToWVarcharSz1(number, &sourceLength, slot.text, 48, &length, nullptr);
        }
    } else {
        return KORV_TOKEN_BAD_TYPE;
    }
    account(*anchor, length * 4 + 4);
    return KORV_SUCCESS;
}

int32_t termErrors(ErrorAnchor* anchor) {
    if (!anchor) return KORV_SUCCESS;
    while (anchor->head) {
        ErrorRecord* record = anchor->head;
        for (int i = 0; i < record->tokenSlotCount; ++i) {
            if (record->tokenSlots[i].tokenId != 0) std::free(record->tokenSlots[i].text);
        }
        anchor->head = record->next;
        std::free(record);
    }
    anchor->recordCount = anchor->largestSize = anchor->currentSize = 0;
    std::free(anchor);
    return KORV_SUCCESS;
}

}  // namespace reference
