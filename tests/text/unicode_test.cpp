// Wide text as 16-bit units, and the conversions through the companion library as it is built here.
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

#include "korv/datacnv.h"
#include "korv/text.h"
#include "support/heap.h"
#include "text/places.h"

namespace {

std::wstring randomText(std::size_t length, std::mt19937& random) {
    const wchar_t odd[] = {0x10000, 0x1F600,   INT32_MIN, -1,     0x7FFF, 0x8000,
                           0xFFFF,  INT32_MAX, 0xFF,      0x8001, 1,      0x7FFF8000};
    std::wstring text(length, L' ');
    for (wchar_t& c : text) {
        c = random() % 2 ? odd[random() % std::size(odd)]
                         : static_cast<wchar_t>(1 + random() % 0x10FFFF);
    }
    return text;
}

class XmlUnits : public HeapTest {};

TEST_F(XmlUnits, AreAllocatedOnRequest) {
    for (const uint8_t allocate : {1, 2, 0x80, 255}) {
        uint16_t* units = nullptr;
        ASSERT_EQ(0, KORVGetXMLCHARFromWCHAR(L"AB", &units, allocate));
        EXPECT_EQ(6u, heap::sizeOf(units));
        EXPECT_EQ(0x0041, units[0]);
        EXPECT_EQ(0x0042, units[1]);
        EXPECT_EQ(0, units[2]);
        std::free(units);
    }
}

TEST_F(XmlUnits, KeepTheLowHalfOfEachCharacter) {
    uint16_t units[8];
    uint16_t* target = units;
    const wchar_t text[] = {0x1F600, 0x10000, -1, INT32_MIN + 5, 0x8000, 0xFFFF, 0};
    EXPECT_EQ(0, KORVGetXMLCHARFromWCHAR(text, &target, 0));
    const uint16_t expected[] = {0xF600, 0, 0xFFFF, 5, 0x8000, 0xFFFF, 0};
    for (std::size_t i = 0; i < 7; ++i) EXPECT_EQ(expected[i], units[i]) << i;
    EXPECT_EQ(units, target);
}

TEST_F(XmlUnits, OfEmptyTextAreNone) {
    uint16_t untouched = 77;
    for (const uint8_t allocate : {0, 1}) {
        uint16_t* units = &untouched;
        heap::failAt(0);
        EXPECT_EQ(KORV_FAILURE, KORVGetXMLCHARFromWCHAR(L"", &units, allocate));
        EXPECT_EQ(&untouched, units);
        EXPECT_EQ(77, untouched);
        EXPECT_EQ(0u, heap::allocations());
    }
}

TEST_F(XmlUnits, AreNullWhenMemoryRunsOut) {
    uint16_t other = 77;
    uint16_t* units = &other;
    heap::failAt(1);
    EXPECT_EQ(KORV_FAILURE, KORVGetXMLCHARFromWCHAR(L"text", &units, 1));
    EXPECT_EQ(nullptr, units);
    EXPECT_EQ(77, other);
    EXPECT_EQ(1u, heap::allocations());
}

TEST_F(XmlUnits, NeedNoMemoryForACallersBuffer) {
    uint16_t room[8];
    uint16_t* units = room;
    heap::failAt(1);
    EXPECT_EQ(0, KORVGetXMLCHARFromWCHAR(L"text", &units, 0));
    EXPECT_EQ(0u, heap::allocations());
}

TEST_F(XmlUnits, AreWrittenAtEveryLengthAndPlace) {
    std::mt19937 random(7);
    for (const std::size_t length : everyLength()) {
        if (length == 0) continue;
        const std::wstring text = randomText(length, random);
        const auto check = [&](const uint16_t* units) {
            for (std::size_t i = 0; i <= length; ++i) {
                ASSERT_EQ(static_cast<uint16_t>(static_cast<uint32_t>(text[i])), units[i]);
            }
        };
        Fenced<wchar_t> source((std::wstring_view(text)));
        atEveryPlace<uint16_t>(length + 1, [&](uint16_t* place) {
            uint16_t* units = place;
            ASSERT_EQ(0, KORVGetXMLCHARFromWCHAR(source.data(), &units, 0));
            ASSERT_EQ(place, units);
            check(units);
        });
        atEveryPlace<wchar_t>(length + 1, [&](wchar_t* place) {
            std::memcpy(place, text.c_str(), (length + 1) * sizeof(wchar_t));
            uint16_t* units = nullptr;
            ASSERT_EQ(0, KORVGetXMLCHARFromWCHAR(place, &units, 1));
            EXPECT_EQ(2 * length + 2, heap::sizeOf(units));
            check(units);
            std::free(units);
        });
    }
}

TEST(UnicodeUnits, PairsAreJoinedAndSplit) {
    const uint16_t narrow[] = {0x41, 0xD83D, 0xDE00, 0x20AC};
    wchar_t wide[4] = {};
    uint32_t count = 77;
    EXPECT_EQ(0, KORV_Utf16ToUtf32(narrow, 8, wide, 16, &count));
    EXPECT_EQ(3u, count) << "units, not bytes";
    EXPECT_EQ(0x41, wide[0]);
    EXPECT_EQ(0x1F600, wide[1]);
    EXPECT_EQ(0x20AC, wide[2]);

    uint16_t back[4] = {};
    EXPECT_EQ(0, KORV_Utf32ToUtf16(wide, 12, back, 8, &count));
    EXPECT_EQ(4u, count);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(narrow[i], back[i]) << i;
}

TEST(UnicodeUnits, FailuresLeaveTheCountAlone) {
    const uint16_t lone[] = {0x41, 0xD83D};
    wchar_t wide[4];
    uint32_t count = 77;
    EXPECT_EQ(CNV_MALFORMED_SOURCE, KORV_Utf16ToUtf32(lone, 4, wide, 16, &count));
    EXPECT_EQ(CNV_TARGET_TOO_SMALL, KORV_Utf16ToUtf32(lone, 2, wide, 3, &count));
    const wchar_t outside[] = {0x110000};
    uint16_t narrow[4];
    EXPECT_EQ(CNV_MALFORMED_SOURCE, KORV_Utf32ToUtf16(outside, 4, narrow, 8, &count));
    EXPECT_EQ(CNV_TARGET_TOO_SMALL, KORV_Utf32ToUtf16(L"A", 4, narrow, 1, &count));
    EXPECT_EQ(77u, count);
}

}  // namespace
