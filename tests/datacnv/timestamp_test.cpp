// Date and time records become wide text.
#include <string>

#include "datacnv/outcome.h"

namespace {

void expectTimestamp(const std::wstring& expected, std::initializer_list<uint16_t> numbers) {
    expectText(expected, [=](wchar_t* target, uint32_t capacity, uint32_t* outLen) {
        Fenced<uint16_t> source(numbers);
        return KORVGetStringFromTS(source.data(), target, capacity, outLen);
    });
}

TEST(Timestamp, EveryNumberHasItsPlaceAndWidth) {
    expectTimestamp(L"2024-03-05 14:07:09", {2024, 3, 5, 14, 7, 9});
    expectTimestamp(L"0001-02-03 04:05:06", {1, 2, 3, 4, 5, 6});
    expectTimestamp(L"9999-12-31 23:59:58", {9999, 12, 31, 23, 59, 58});
    expectTimestamp(L"0000-00-00 00:00:00", {0, 0, 0, 0, 0, 0});
}

TEST(Timestamp, WiderNumbersAreNotCut) {
    expectTimestamp(L"12345-100-101 65535:999:1000", {12345, 100, 101, 65535, 999, 1000});
}

TEST(Timestamp, NegativeYearsAreLedByAMinus) {
    expectTimestamp(L"-0001-01-02 03:04:05", {0xFFFF, 1, 2, 3, 4, 5});
    expectTimestamp(L"-32768-01-02 03:04:05", {0x8000, 1, 2, 3, 4, 5});
}

// The support library captures records into targets of 200 bytes.
TEST(Timestamp, LongestTextFitsThe200BytesOfACapture) {
    const uint16_t numbers[] = {0x8000, 65535, 65535, 65535, 65535, 65535};
    Fenced<wchar_t> target(50);
    uint32_t outLen = 0;
    ASSERT_EQ(CNV_SUCCESS, KORVGetStringFromTS(numbers, target.data(), 200, &outLen));
    EXPECT_EQ(L"-32768-65535-65535 65535:65535:65535", std::wstring(target.data(), outLen));
}

TEST(Timestamp, RecordsNeedNotBeAligned) {
    char bytes[13];
    const uint16_t numbers[] = {2024, 3, 5, 14, 7, 9};
    std::memcpy(bytes + 1, numbers, sizeof numbers);
    wchar_t target[20];
    uint32_t outLen = 0;
    ASSERT_EQ(CNV_SUCCESS, KORVGetStringFromTS(bytes + 1, target, sizeof target, &outLen));
    EXPECT_STREQ(L"2024-03-05 14:07:09", target);
}

}  // namespace
