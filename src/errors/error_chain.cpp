// Error chain: opening a record, releasing the chain.
#include "errors/error_chain.h"

#include <algorithm>

#include "common/header.h"
#include "common/heap.h"

namespace korv {

void account(ErrorAnchor& anchor, uint32_t bytes) noexcept {
    anchor.currentSize += bytes;
    anchor.largestSize = std::max(anchor.largestSize, anchor.currentSize);
}

namespace {

constexpr uint32_t kSlotBytes = sizeof(TokenSlot);
constexpr uint16_t kOneSlotRecordBytes = sizeof(ErrorRecord);

int32_t openRecord(ErrorAnchor& anchor, uint32_t firstCode, uint32_t secondCode,
                   int16_t slotCount) noexcept {
    const auto slots = static_cast<uint32_t>(std::max<int16_t>(slotCount, 1));
    anchor.currentSize = kOneSlotRecordBytes + (slots - 1) * kSlotBytes;

    // One slot more than is accounted: a full record accepts one token after its last slot.
    auto* record =
        static_cast<ErrorRecord*>(heap::zeroed(sizeof(ErrorRecord) + slots * sizeof(TokenSlot)));
    (anchor.head ? anchor.tail->next : anchor.head) = record;
    if (!record) return KORV_FAILURE;
    anchor.tail = record;

    writeHeader(record->header, "ECBD", kOneSlotRecordBytes);
    record->firstCode = firstCode;
    record->secondCode = secondCode;
    record->tokenSlotCount = slotCount;

    ++anchor.recordCount;
    account(anchor, static_cast<uint32_t>(slotCount) * kSlotBytes);
    return KORV_SUCCESS;
}

void release(ErrorAnchor* anchor) noexcept {
    while (ErrorRecord* record = anchor->head) {
        for (int16_t i = 0; i < record->tokenSlotCount; ++i) {
            const TokenSlot& slot = record->tokenSlots[i];
            if (slot.tokenId != KORV_TOKID_UNUSED) heap::release(slot.text);
        }
        anchor->head = record->next;
        heap::release(record);
    }
    // Otherwise the compiler leaves out what is written to a block that is freed.
    volatile ErrorAnchor& freed = *anchor;
    freed.recordCount = 0;
    freed.largestSize = 0;
    freed.currentSize = 0;
    heap::release(anchor);
}

}  // namespace
}  // namespace korv

int32_t ErrorCaptureEAB(ErrorAnchor* anchor, uint32_t firstCode, uint32_t secondCode,
                        int16_t slotCount) {
    if (!anchor) return KORV_FAILURE;
    return korv::openRecord(*anchor, firstCode, secondCode, slotCount);
}

int32_t ErrorCapture(const CtrlBlkI* block, uint32_t firstCode, uint32_t secondCode,
                     int16_t slotCount) {
    return ErrorCaptureEAB(block->errorAnchor, firstCode, secondCode, slotCount);
}

int32_t TermErrors(ErrorAnchor* anchor) {
    if (anchor) korv::release(anchor);
    return KORV_SUCCESS;
}
