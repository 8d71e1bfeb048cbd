// The text of a captured value, the size of its block, and what is accounted for it.
#include <climits>
#include <cstring>
#include <string>

#include "errors/chain.h"
#include "support/fenced.h"

namespace {

class TokenTexts : public ChainTest {
  protected:
    void SetUp() override {
        ChainTest::SetUp();
        record = open(1);
    }

    // Captures, compares text and block, and tells how much the capture accounted.
    std::uint32_t captured(const void* value, std::int16_t dataType, std::uint32_t length,
                           const std::wstring& text, std::size_t blockBytes) {
        TokenSlot& slot = slotOf(record, 0);
        slot = {};
        anchor->currentSize = 500;
        anchor->largestSize = 0;
        EXPECT_EQ(0, TokenCaptureEAB(anchor, value, dataType, KORV_TOKID_SRCDATA, length));
        EXPECT_EQ(blockBytes, heap::sizeOf(slot.text)) << "type " << dataType;
        if (!slot.text) return 0;
        EXPECT_EQ(text, slot.text) << "type " << dataType;
        EXPECT_EQ(anchor->currentSize, anchor->largestSize);
        const char* bytes = reinterpret_cast<const char*>(slot.text);
        for (std::size_t i = text.size() * 4; i < blockBytes; ++i) EXPECT_EQ(0, bytes[i]);
        freeText(slot);
        return anchor->currentSize - 500;
    }

    ErrorRecord* record = nullptr;
};

std::wstring wideText(std::size_t length) {
    std::wstring text;
    for (std::size_t i = 0; i < length; ++i) text += static_cast<wchar_t>(0x1F600 + i);
    return text;
}

std::string narrowText(std::size_t length) {
    std::string text;
    for (std::size_t i = 0; i < length; ++i) text += static_cast<char>(0x90 + i);
    return text;
}

// Each narrow byte is one character of the same number.
std::wstring widened(const std::string& text) {
    std::wstring wide;
    for (const char c : text) wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
    return wide;
}

// A 16-bit byte count and the text after it.
std::string prefixed(const void* text, std::size_t bytes) {
    const auto count = static_cast<std::int16_t>(bytes);
    std::string value(sizeof count + bytes, '\0');
    std::memcpy(value.data(), &count, sizeof count);
    if (bytes) std::memcpy(value.data() + sizeof count, text, bytes);
    return value;
}

TEST_F(TokenTexts, OfFixedNarrowText) {
    for (std::uint32_t length = 0; length <= 70; ++length) {
        const std::string text = narrowText(length);
        Fenced<char> value(std::string_view(text), false);
        for (const std::int16_t type : {CHAR, DATETIME_CHAR}) {
            EXPECT_EQ(length * 4 + 4,
                      captured(value.data(), type, length, widened(text), length * 4 + 4));
        }
    }
}

TEST_F(TokenTexts, OfVariableNarrowText) {
    for (std::uint32_t length = 0; length <= 70; ++length) {
        const std::string text = narrowText(length);
        // The page's end makes every second value start at an odd address.
        const std::string bytes = prefixed(text.data(), length);
        Fenced<char> value(std::string_view(bytes), false);
        for (const std::int16_t type : {VARCHAR, DATETIME_VARCHAR}) {
            EXPECT_EQ(length * 4 + 4,
                      captured(value.data(), type, 3, widened(text), length * 4 + 4));
        }
    }
}

TEST_F(TokenTexts, OfTerminatedNarrowText) {
    for (std::uint32_t length = 0; length <= 70; ++length) {
        const std::string text = narrowText(length);
        Fenced<char> value{std::string_view(text)};
        for (const std::int16_t type : {VARCHAR_SZ, DATETIME_SZ}) {
            EXPECT_EQ(length * 4 + 4,
                      captured(value.data(), type, 3, widened(text), length * 4 + 4));
        }
    }
}

TEST_F(TokenTexts, OfFixedWideText) {
    for (std::uint32_t length = 0; length <= 70; ++length) {
        const std::wstring text = wideText(length);
        Fenced<wchar_t> value(std::wstring_view(text), false);
        for (const std::int16_t type : {WCHAR, DATETIME_WCHAR}) {
            EXPECT_EQ(length * 4 + 4,
                      captured(value.data(), type, length * 4, text, length * 4 + 4));
        }
    }
}

TEST_F(TokenTexts, OfVariableWideText) {
    for (std::uint32_t length = 0; length <= 70; ++length) {
        const std::wstring text = wideText(length);
        const std::string bytes = prefixed(text.data(), length * 4);
        for (const auto fence : {Fenced<char>::Fence::behind, Fenced<char>::Fence::before}) {
            Fenced<char> value(bytes.size(), fence);
            std::memcpy(value.data(), bytes.data(), bytes.size());
            for (const std::int16_t type : {WVARCHAR, DATETIME_WVARCHAR}) {
                EXPECT_EQ(length * 4 + 4, captured(value.data(), type, 3, text, length * 4 + 4));
            }
        }
    }
}

TEST_F(TokenTexts, OfVariableWideTextWithAPartialUnit) {
    const std::string bytes = prefixed(L"abc", 12);
    Fenced<char> value(bytes.size());
    std::memcpy(value.data(), bytes.data(), bytes.size());
    value[0] = 10;
    EXPECT_EQ(12u, captured(value.data(), WVARCHAR, 0, L"ab", 12));
}

TEST_F(TokenTexts, OfTerminatedWideText) {
    for (std::uint32_t length = 0; length <= 70; ++length) {
        const std::wstring text = wideText(length);
        Fenced<wchar_t> value{std::wstring_view(text)};
        for (const std::int16_t type : {WVARCHAR_SZ, DATETIME_WSZ}) {
            EXPECT_EQ(length * 4 + 4, captured(value.data(), type, 3, text, length * 4 + 4));
        }
    }
}

// Wide units that are no characters are copied as they are.
TEST_F(TokenTexts, OfTerminatedWideTextAreCopiedUnitByUnit) {
    const std::wstring text = {static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000),
                               static_cast<wchar_t>(-1), static_cast<wchar_t>(INT_MIN), L'x'};
    EXPECT_EQ(24u, captured(text.c_str(), WVARCHAR_SZ, 0, text, 24));
}

template <class Integer>
void* fencedValue(Fenced<Integer>& room, Integer value) {
    room[0] = value;
    return room.data();
}

TEST_F(TokenTexts, OfIntegers) {
    for (const std::int32_t value :
         {1, -1, 9, 10, 65536, -65536, INT_MAX, INT_MIN, -10, 999999999}) {
        Fenced<std::int32_t> room(1);
        const std::wstring text = std::to_wstring(value);
        EXPECT_EQ(text.size() * 4 + 4, captured(fencedValue(room, value), INTEGER, 99, text, 48));
    }
    for (const std::uint32_t value : {1u, 10u, 65536u, 0x80000000u, 0xFFFFFFFFu, 1000000000u}) {
        Fenced<std::uint32_t> room(1);
        const std::wstring text = std::to_wstring(value);
        EXPECT_EQ(text.size() * 4 + 4, captured(fencedValue(room, value), U_INTEGER, 99, text, 48));
    }
    for (const std::int16_t value : {1, -1, 9, 10, 256, -256, SHRT_MAX, SHRT_MIN}) {
        Fenced<std::int16_t> room(1);
        const std::wstring text = std::to_wstring(value);
        EXPECT_EQ(text.size() * 4 + 4, captured(fencedValue(room, value), SMALLINT, 99, text, 28));
    }
    for (const std::uint16_t value : {1, 10, 256, 32768, 65535}) {
        Fenced<std::uint16_t> room(1);
        const std::wstring text = std::to_wstring(value);
        EXPECT_EQ(text.size() * 4 + 4, captured(fencedValue(room, value), USMALLINT, 99, text, 28));
    }
}

TEST_F(TokenTexts, OfZeroAccountNoCharacter) {
    Fenced<std::int32_t> word(1);
    Fenced<std::int16_t> half(1);
    word[0] = 0;
    half[0] = 0;
    EXPECT_EQ(4u, captured(word.data(), INTEGER, 99, L"0", 48));
    EXPECT_EQ(4u, captured(word.data(), U_INTEGER, 99, L"0", 48));
    EXPECT_EQ(4u, captured(half.data(), SMALLINT, 99, L"0", 28));
    EXPECT_EQ(4u, captured(half.data(), USMALLINT, 99, L"0", 28));
}

TEST_F(TokenTexts, OfDatesAndTimes) {
    const std::uint16_t moment[6] = {2024, 2, 29, 13, 4, 59};
    for (const std::int16_t type : {ODBC_DATE, ODBC_TIME, ODBC_TIMESTAMP}) {
        EXPECT_EQ(19u * 4 + 4, captured(moment, type, 99, L"2024-02-29 13:04:59", 200));
    }
}

TEST_F(TokenTexts, AddUpInTheSizes) {
    anchor->currentSize = 100;
    anchor->largestSize = 120;
    ASSERT_EQ(0, TokenCaptureEAB(anchor, L"ab", WVARCHAR_SZ, 0, 0));
    freeText(slotOf(record, 0));
    EXPECT_EQ(112u, anchor->currentSize);
    EXPECT_EQ(120u, anchor->largestSize);
    ASSERT_EQ(0, TokenCaptureEAB(anchor, L"ab", WVARCHAR_SZ, 0, 0));
    freeText(slotOf(record, 0));
    EXPECT_EQ(124u, anchor->currentSize);
    EXPECT_EQ(124u, anchor->largestSize);
    // The sizes are unsigned 32-bit numbers.
    anchor->currentSize = 0xFFFFFFF0;
    anchor->largestSize = 0x7FFFFFFF;
    ASSERT_EQ(0, TokenCaptureEAB(anchor, nullptr, CHAR, 0, 0));
    freeText(slotOf(record, 0));
    EXPECT_EQ(12u, anchor->currentSize);
    EXPECT_EQ(0x7FFFFFFFu, anchor->largestSize);
    anchor->currentSize = 0x80000000;
    ASSERT_EQ(0, TokenCaptureEAB(anchor, nullptr, CHAR, 0, 0));
    freeText(slotOf(record, 0));
    EXPECT_EQ(0x8000001Cu, anchor->largestSize);
}

}  // namespace
