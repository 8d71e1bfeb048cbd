// Which types of value can be captured, and which of them may be empty: every 16-bit code.
#include <climits>
#include <cstring>

#include "errors/chain.h"
#include "support/fenced.h"

namespace {

class TokenTypes : public ChainTest {};

TEST_F(TokenTypes, ThatAreTextCaptureAnEmptyValue) {
    ErrorRecord* const record = open(1);
    for (int code = SHRT_MIN; code <= SHRT_MAX; ++code) {
        slotOf(record, 0) = {};
        anchor->currentSize = 1000;
        anchor->largestSize = 1001;
        const auto type = static_cast<std::int16_t>(code);
        const std::int32_t status = TokenCaptureEAB(anchor, nullptr, type, KORV_TOKID_SRCDATA, 9);
        ASSERT_EQ(isText(code) ? 0 : -1, status) << code;
        ASSERT_EQ(static_cast<std::uint32_t>(KORV_TOKID_SRCDATA), slotOf(record, 0).tokenId);
        if (!isText(code)) {
            ASSERT_EQ(nullptr, slotOf(record, 0).text) << code;
            ASSERT_EQ(1000u, anchor->currentSize);
            ASSERT_EQ(1001u, anchor->largestSize);
            continue;
        }
        ASSERT_EQ(28u, heap::sizeOf(slotOf(record, 0).text));
        ASSERT_EQ(0, std::memcmp(L"<NULL>", slotOf(record, 0).text, 28));
        ASSERT_EQ(1028u, anchor->currentSize);
        ASSERT_EQ(1028u, anchor->largestSize);
        freeText(slotOf(record, 0));
    }
}

// The value of any other type is not even read: it lies in the unreadable page.
TEST_F(TokenTypes, OfNoTextFormAreRefused) {
    Fenced<char> unreadable(0);
    ErrorRecord* const record = open(1);
    heap::failAt(0);
    for (int code = SHRT_MIN; code <= SHRT_MAX; ++code) {
        if (isText(code) || isCapturedNumberOrDate(code)) continue;
        slotOf(record, 0) = {};
        const auto type = static_cast<std::int16_t>(code);
        ASSERT_EQ(KORV_TOKEN_BAD_TYPE, TokenCaptureEAB(anchor, unreadable.data(), type, 90, 4))
            << code;
        ASSERT_EQ(90u, slotOf(record, 0).tokenId);
        ASSERT_EQ(nullptr, slotOf(record, 0).text);
    }
    EXPECT_EQ(0u, heap::allocations());
    EXPECT_EQ(openedBytes(1), anchor->currentSize);
    EXPECT_EQ(openedBytes(1), anchor->largestSize);
}

TEST_F(TokenTypes, WithATextFormNeedMemoryForIt) {
    ErrorRecord* const record = open(1);
    // Each is a value of any type; integers have a path of their own for zero.
    const wchar_t zero[16] = {};
    const wchar_t one[16] = {1};
    const wchar_t* const values[] = {nullptr, zero, one};
    for (int code = 1; code <= 28; ++code) {
        if (!isText(code) && !isCapturedNumberOrDate(code)) continue;
        for (const wchar_t* value : values) {
            if (!value && !isText(code)) continue;
            slotOf(record, 0) = {};
            heap::failAt(1);
            EXPECT_EQ(KORV_FAILURE,
                      TokenCaptureEAB(anchor, value, static_cast<std::int16_t>(code), 1, 4))
                << code;
            EXPECT_EQ(1u, heap::allocations()) << code;
            EXPECT_EQ(1u, slotOf(record, 0).tokenId);
            EXPECT_EQ(nullptr, slotOf(record, 0).text);
        }
    }
    EXPECT_EQ(openedBytes(1), anchor->currentSize);
    EXPECT_EQ(openedBytes(1), anchor->largestSize);
}

}  // namespace
