// Error chains of any calls in any order, beside a model that knows what each record holds.
#include <cstdlib>
#include <optional>
#include <vector>

#include "korv/korv.h"
#include "reference/catalogue.h"
#include "support/block.h"
#include "support/carried.h"
#include "support/expect.h"
#include "support/input.h"
#include "support/token_value.h"

namespace {

using fuzz::Block;
using fuzz::Input;

struct Slot {
    uint32_t tokenId = 0;
    std::optional<std::wstring> text;
};

struct Record {
    uint32_t firstCode, secondCode;
    int16_t slotCount;
    std::vector<Slot> slots;  // as many as are counted, at least one, and the spare one
};

TokenSlot& slotOf(ErrorRecord* record, std::size_t index) {
    return (&record->tokenSlots[0])[index];
}

class Chain {
  public:
    Chain() { block_.errorAnchor = static_cast<ErrorAnchor*>(std::calloc(1, sizeof(ErrorAnchor))); }
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;
    ~Chain() {
        freeWhatIsLeft();
        FUZZ_EXPECT(TermErrors(block_.errorAnchor) == 0);
    }

    void open(Input& input);
    void capture(Input& input);
    void checkSizes() const;
    void checkRecords() const;

  private:
    void account(uint32_t bytes) {
        currentSize_ += bytes;
        largestSize_ = std::max(largestSize_, currentSize_);
    }
    Slot* freeSlot();
    void freeWhatIsLeft();

    CtrlBlkI block_{};
    std::vector<Record> records_;
    uint32_t currentSize_ = 0, largestSize_ = 0;
};

void Chain::open(Input& input) {
    const auto firstCode = input.number<uint32_t>(), secondCode = input.number<uint32_t>();
    // Mostly few slots.
    const int slots = input.choice(8) == 7 ? input.number<int16_t>() % 1000
                                           : static_cast<int>(input.choice(12)) - 2;
    const auto slotCount = static_cast<int16_t>(slots);
    FUZZ_EXPECT(ErrorCaptureEAB(nullptr, firstCode, secondCode, slotCount) == -1);
    FUZZ_EXPECT(ErrorCapture(&block_, firstCode, secondCode, slotCount) == 0);
    const auto held = static_cast<std::size_t>(std::max(slots, 1));
    records_.push_back({firstCode, secondCode, slotCount, std::vector<Slot>(held + 1)});
    currentSize_ = static_cast<uint32_t>(sizeof(ErrorRecord) + (held - 1) * sizeof(TokenSlot));
    account(static_cast<uint32_t>(slotCount * static_cast<int32_t>(sizeof(TokenSlot))));
}

// The slot that takes the next token; null where none does.
Slot* Chain::freeSlot() {
    Record& record = records_.back();
    if (record.slotCount < 0) return nullptr;
    std::size_t index = 0;
    while (index < static_cast<std::size_t>(record.slotCount) && record.slots[index].tokenId != 0) {
        ++index;
    }
    return &record.slots[index];
}

void Chain::capture(Input& input) {
    const unsigned kind = input.choice(32);
    const auto type = kind > 28 ? input.number<int16_t>() : static_cast<int16_t>(kind);
    const uint32_t tokenId = input.choice(8) == 7 ? input.number<uint32_t>() : input.choice(92);
    const bool given = input.choice(8) != 7;
    fuzz::TokenValue value = fuzz::tokenValue(input, type);
    FUZZ_EXPECT(TokenCaptureEAB(nullptr, nullptr, type, tokenId, value.length) == -1);
    if (records_.empty()) return;

    Slot* slot = freeSlot();
    int32_t status = value.status;
    if (!given) {
        const reference::CatalogueRow* row = reference::catalogueRow(type);
        const bool isText = row && (row->narrow || row->wide);
        status = isText ? KORV_SUCCESS : KORV_FAILURE;
        value.text = L"<NULL>";
        value.accounted = 6;
    }
    if (!slot) status = KORV_TOKEN_NO_SLOT;
    if (tokenId > 90) status = KORV_TOKEN_BAD_ID;
    if (slot && tokenId <= 90) {
        // A text that is replaced is no longer released with the chain.
        TokenSlot& replaced = slotOf(block_.errorAnchor->tail,
                                     static_cast<std::size_t>(slot - &records_.back().slots[0]));
        std::free(replaced.text);
        replaced.text = nullptr;
        *slot = {tokenId, {}};
        if (status == KORV_SUCCESS) {
            slot->text = value.text;
            account(value.accounted * 4 + 4);
        }
    }
    Block<char> block(value.bytes);
    FUZZ_EXPECT(TokenCapture(&block_, given ? block.data() : nullptr, type, tokenId,
                             value.length) == status);
}

void Chain::checkSizes() const {
    const ErrorAnchor& anchor = *block_.errorAnchor;
    FUZZ_EXPECT(anchor.recordCount == records_.size());
    FUZZ_EXPECT(anchor.currentSize == currentSize_ && anchor.largestSize == largestSize_);
}

void Chain::checkRecords() const {
    const ErrorAnchor& anchor = *block_.errorAnchor;
    ErrorRecord* record = anchor.head;
    for (const Record& expected : records_) {
        FUZZ_EXPECT(record && fuzz::hasHeader(record->header, "ECBD", sizeof(ErrorRecord)));
        FUZZ_EXPECT(record->firstCode == expected.firstCode &&
                    record->secondCode == expected.secondCode &&
                    record->tokenSlotCount == expected.slotCount);
        for (std::size_t i = 0; i < expected.slots.size(); ++i) {
            const TokenSlot& slot = slotOf(record, i);
            FUZZ_EXPECT(slot.tokenId == expected.slots[i].tokenId);
            FUZZ_EXPECT((slot.text != nullptr) == expected.slots[i].text.has_value());
            if (slot.text) FUZZ_EXPECT(*expected.slots[i].text == slot.text);
        }
        FUZZ_EXPECT(record->next || record == anchor.tail);
        record = record->next;
    }
    FUZZ_EXPECT(!record);
}

// Two kinds of text are not released with the chain: under identifier 0, and after the last slot.
void Chain::freeWhatIsLeft() {
    ErrorRecord* record = block_.errorAnchor->head;
    for (const Record& expected : records_) {
        for (std::size_t i = 0; i < expected.slots.size(); ++i) {
            const bool counted =
                expected.slotCount > 0 && i < static_cast<std::size_t>(expected.slotCount);
            TokenSlot& slot = slotOf(record, i);
            if (!counted || slot.tokenId == 0) std::free(slot.text);
        }
        record = record->next;
    }
}

}  // namespace

// Values that promise more memory than there is are meant.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    Input input(data, size);
    Chain chain;
    while (!input.empty()) {
        if (input.choice(4) == 0) {
            chain.open(input);
        } else {
            chain.capture(input);
        }
        chain.checkSizes();
    }
    chain.checkRecords();
    FUZZ_EXPECT(TermErrors(nullptr) == 0);
    return 0;
}
