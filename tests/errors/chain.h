// An error chain of a test: its anchor on the library's heap, released like a request's at the end.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "korv/korv.h"
#include "support/heap.h"

class ChainTest : public HeapTest {
  protected:
    void SetUp() override {
        HeapTest::SetUp();
        anchor = newAnchor();
    }
    void TearDown() override {
        heap::failAt(0);
        EXPECT_EQ(0, TermErrors(anchor));
        HeapTest::TearDown();
    }

    // A zeroed anchor that counts as a block of the library, so that the test sees whether it is
    // freed.
    static ErrorAnchor* newAnchor() {
        void* block = nullptr;
        std::uint32_t size = 0;
        EXPECT_EQ(0, KORVAllocateBuffer(&block, &size, sizeof(ErrorAnchor)));
        return static_cast<ErrorAnchor*>(block);
    }

    ErrorRecord* open(std::int16_t slotCount) {
        EXPECT_EQ(0, ErrorCaptureEAB(anchor, 1, 2, slotCount));
        return anchor->tail;
    }

    std::vector<ErrorRecord*> chain() const {
        std::vector<ErrorRecord*> records;
        for (ErrorRecord* record = anchor->head; record; record = record->next) {
            records.push_back(record);
        }
        return records;
    }

    ErrorAnchor* anchor = nullptr;
};

// Bytes of a record, in the floating point that defines them; and bytes that are accounted when it
// is opened.
inline std::uint32_t recordBytes(std::int16_t slotCount) {
    const double slots = slotCount > 1 ? slotCount : 1;
    return static_cast<std::uint32_t>((slots - 1) * sizeof(TokenSlot) + sizeof(ErrorRecord));
}
inline std::uint32_t openedBytes(std::int16_t slotCount) {
    const auto slots = static_cast<std::uint32_t>(slotCount);
    return recordBytes(slotCount) + slots * static_cast<std::uint32_t>(sizeof(TokenSlot));
}

// Any slot of a record, including those after its first one.
inline TokenSlot& slotOf(ErrorRecord* record, std::size_t index) {
    return (&record->tokenSlots[0])[index];
}

// Takes a text out of a slot that TermErrors would not release.
inline void freeText(TokenSlot& slot) {
    EXPECT_NE(0u, heap::sizeOf(slot.text)) << "not a live block";
    std::free(slot.text);
    slot.text = nullptr;
}

// The types of text, narrow and wide: the ones of which an empty value can be captured.
inline bool isText(int dataType) {
    switch (dataType) {
        case CHAR:
        case VARCHAR:
        case VARCHAR_SZ:
        case WCHAR:
        case WVARCHAR:
        case WVARCHAR_SZ:
        case DATETIME_SZ:
        case DATETIME_WSZ:
        case DATETIME_CHAR:
        case DATETIME_VARCHAR:
        case DATETIME_WCHAR:
        case DATETIME_WVARCHAR:
            return true;
        default:
            return false;
    }
}

// The other types of which a value can be captured.
inline bool isCapturedNumberOrDate(int dataType) {
    switch (dataType) {
        case INTEGER:
        case U_INTEGER:
        case SMALLINT:
        case USMALLINT:
        case ODBC_DATE:
        case ODBC_TIME:
        case ODBC_TIMESTAMP:
            return true;
        default:
            return false;
    }
}
