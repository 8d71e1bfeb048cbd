// What token capture hands to the companion library, and what it makes of its answers.
#include <climits>
#include <cstring>

#include "errors/chain.h"
#include "errors/scripted_companion.h"
#include "korv/datacnv.h"

// A request for most of the address space fails here as it does with the system's own heap.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}

namespace {

// A value of every type that the companion converts. `count` is what the value's own length says,
// which sizes the block and is accounted when the companion stores no length.
struct Conversion {
    std::int16_t dataType;
    const char* function;
    std::uint32_t sourceLen;
    std::uint32_t count;
    std::uint32_t bytes;
};

// As variable text 10 bytes, as terminated narrow text 1 character, as an integer 10.
alignas(4) const char kValue[16] = {10, 0, 0, 0};
constexpr std::uint32_t kLength = 12;

constexpr Conversion kConversions[] = {
    {CHAR, "KORVCnvCharToWVarcharSz", kLength, kLength, 52},
    {DATETIME_CHAR, "KORVCnvCharToWVarcharSz", kLength, kLength, 52},
    {VARCHAR, "KORVCnvVarcharToWVarcharSz", 0, 10, 44},
    {DATETIME_VARCHAR, "KORVCnvVarcharToWVarcharSz", 0, 10, 44},
    {VARCHAR_SZ, "KORVCnvVarcharSzToWVarcharSz", 0, 1, 8},
    {DATETIME_SZ, "KORVCnvVarcharSzToWVarcharSz", 0, 1, 8},
    {WCHAR, "KORVCnvWCharToWVarcharSz", kLength, kLength, 16},
    {DATETIME_WCHAR, "KORVCnvWCharToWVarcharSz", kLength, kLength, 16},
    {WVARCHAR, "KORVCnvWVarcharToWVarcharSz", 0, 2, 12},
    {DATETIME_WVARCHAR, "KORVCnvWVarcharToWVarcharSz", 0, 2, 12},
    {INTEGER, "KORVCnvIntToWVarcharSz1", 0, 0, 48},
    {U_INTEGER, "KORVCnvUIntToWVarcharSz", 0, 0, 48},
    {SMALLINT, "KORVCnvSmallIntToWVarcharSz", 0, 0, 28},
    {USMALLINT, "KORVCnvSmallUIntToWVarcharSz", 0, 0, 28},
    {ODBC_DATE, "KORVGetStringFromTS", 0, 0, 200},
    {ODBC_TIME, "KORVGetStringFromTS", 0, 0, 200},
    {ODBC_TIMESTAMP, "KORVGetStringFromTS", 0, 0, 200},
};

class TokenCompanion : public ChainTest {
  protected:
    void SetUp() override {
        ChainTest::SetUp();
        companion::reset();
        record = open(1);
    }

    std::int32_t capture(const void* source, std::int16_t dataType, std::uint32_t bytes = kLength) {
        slotOf(record, 0) = {};
        anchor->currentSize = 1000;
        companion::calls = 0;
        return TokenCaptureEAB(anchor, source, dataType, 1, bytes);
    }
    std::uint32_t accounted() const { return anchor->currentSize - 1000; }

    // Neither the capacity that was told nor anything the companion may write is outside the block.
    void expectInsideTheBlock() {
        EXPECT_LE(companion::last.capacity, heap::sizeOf(slotOf(record, 0).text));
        EXPECT_LE(sizeof(wchar_t), heap::sizeOf(slotOf(record, 0).text)) << "cannot end a text";
        EXPECT_EQ(companion::last.target, slotOf(record, 0).text);
    }

    ErrorRecord* record = nullptr;
};

TEST_F(TokenCompanion, IsAskedForEachTypeWithItsLengths) {
    for (const Conversion& c : kConversions) {
        ASSERT_EQ(0, capture(kValue, c.dataType)) << c.dataType;
        TokenSlot& slot = slotOf(record, 0);
        EXPECT_EQ(1, companion::calls);
        EXPECT_EQ(c.function, companion::last.function) << c.dataType;
        EXPECT_EQ(kValue, companion::last.source);
        EXPECT_EQ(c.sourceLen, companion::last.sourceLen) << c.dataType;
        EXPECT_EQ(slot.text, companion::last.target);
        EXPECT_EQ(c.bytes, companion::last.capacity) << c.dataType;
        EXPECT_EQ(c.bytes, heap::sizeOf(slot.text)) << c.dataType;
        EXPECT_EQ(c.count, companion::last.outLenBefore) << c.dataType;
        EXPECT_EQ(nullptr, companion::last.options);
        freeText(slot);
    }
}

TEST_F(TokenCompanion, ThatWritesNothingLeavesAnEmptyText) {
    for (const Conversion& c : kConversions) {
        ASSERT_EQ(0, capture(kValue, c.dataType));
        const char* bytes = reinterpret_cast<const char*>(slotOf(record, 0).text);
        for (std::uint32_t i = 0; i < c.bytes; ++i) ASSERT_EQ(0, bytes[i]) << c.dataType;
        EXPECT_EQ(c.count * 4 + 4, accounted()) << c.dataType;
        freeText(slotOf(record, 0));
    }
}

TEST_F(TokenCompanion, SaysHowMuchIsAccounted) {
    for (const Conversion& c : kConversions) {
        for (const std::uint32_t stored : {0u, 1u, 3u, 1000u, 0x3FFFFFFFu, 0x80000001u}) {
            companion::outLen = stored;
            ASSERT_EQ(0, capture(kValue, c.dataType));
            EXPECT_EQ(stored * 4 + 4, accounted()) << c.dataType;
            freeText(slotOf(record, 0));
        }
    }
}

TEST_F(TokenCompanion, ThatFailsIsNotNoticed) {
    companion::writes = true;
    companion::outLen = 5;
    for (const std::int32_t status : {1, -1, int{CNV_TARGET_TOO_SMALL}, INT_MIN}) {
        companion::status = status;
        for (const Conversion& c : kConversions) {
            ASSERT_EQ(0, capture(kValue, c.dataType)) << c.dataType;
            EXPECT_EQ(std::wstring(c.bytes / 4 - 1, L'#'), slotOf(record, 0).text);
            EXPECT_EQ(24u, accounted());
            freeText(slotOf(record, 0));
        }
    }
}

TEST_F(TokenCompanion, IsNotAskedForZeroAndCopiedTexts) {
    // Only the bytes of the type count: the bytes after the 16-bit zeros are not zero.
    const std::uint32_t word = 0;
    const std::uint16_t halves[2] = {0, 0xFFFF};
    for (const std::int16_t type : {INTEGER, U_INTEGER, SMALLINT, USMALLINT}) {
        const bool small = type == SMALLINT || type == USMALLINT;
        const void* zero = small ? static_cast<const void*>(halves) : &word;
        ASSERT_EQ(0, capture(zero, type));
        EXPECT_EQ(0, companion::calls) << type;
        EXPECT_STREQ(L"0", slotOf(record, 0).text);
        freeText(slotOf(record, 0));
    }
    for (const std::int16_t type : {WVARCHAR_SZ, DATETIME_WSZ}) {
        ASSERT_EQ(0, capture(L"copied", type));
        EXPECT_EQ(0, companion::calls) << type;
        EXPECT_STREQ(L"copied", slotOf(record, 0).text);
        freeText(slotOf(record, 0));
    }
    ASSERT_EQ(0, capture(nullptr, VARCHAR));
    EXPECT_EQ(0, companion::calls);
    EXPECT_STREQ(L"<NULL>", slotOf(record, 0).text);
}

TEST_F(TokenCompanion, IsAskedForIntegersWithZeroBytes) {
    for (const std::uint32_t number : {0x100u, 0x10000u, 0x1000000u, 0x80000000u}) {
        for (const std::int16_t type : {INTEGER, U_INTEGER}) {
            ASSERT_EQ(0, capture(&number, type));
            EXPECT_EQ(1, companion::calls) << number;
            freeText(slotOf(record, 0));
        }
    }
    for (const std::uint16_t number : {0x1, 0x100, 0x8000}) {
        for (const std::int16_t type : {SMALLINT, USMALLINT}) {
            ASSERT_EQ(0, capture(&number, type));
            EXPECT_EQ(1, companion::calls) << number;
            freeText(slotOf(record, 0));
        }
    }
}

// The prefix of variable text: every length up to 300 and the largest.
TEST_F(TokenCompanion, GetsRoomForTheCharactersOfThePrefix) {
    companion::writes = true;
    for (int prefix = 0; prefix <= 300; ++prefix) {
        const auto count = static_cast<std::int16_t>(prefix);
        for (const std::int16_t type : {VARCHAR, WVARCHAR}) {
            const auto characters =
                static_cast<std::uint32_t>(type == VARCHAR ? prefix : prefix / 4);
            ASSERT_EQ(0, capture(&count, type));
            EXPECT_EQ(characters, companion::last.outLenBefore);
            EXPECT_EQ(characters * 4 + 4, companion::last.capacity);
            EXPECT_EQ(characters * 4 + 4, heap::sizeOf(slotOf(record, 0).text));
            freeText(slotOf(record, 0));
        }
    }
    const std::int16_t most = SHRT_MAX;
    ASSERT_EQ(0, capture(&most, VARCHAR));
    EXPECT_EQ(131072u, companion::last.capacity);
    freeText(slotOf(record, 0));
    ASSERT_EQ(0, capture(&most, WVARCHAR));
    EXPECT_EQ(32768u, companion::last.capacity);
    freeText(slotOf(record, 0));
}

// A count of -1 character sizes an empty block and, unless the companion says otherwise, accounts
// nothing. Wide counts are truncated towards zero.
TEST_F(TokenCompanion, OfACountJustBelowZeroStaysInsideItsBlock) {
    companion::writes = true;
    struct Case {
        std::int16_t dataType, prefix;
        std::uint32_t accounted;
    };
    for (const Case& c :
         {Case{VARCHAR, -1, 0}, Case{DATETIME_VARCHAR, -1, 0}, Case{WVARCHAR, -1, 4},
          Case{WVARCHAR, -3, 4}, Case{WVARCHAR, -4, 0}, Case{DATETIME_WVARCHAR, -7, 0}}) {
        companion::outLen = -1;
        ASSERT_EQ(0, capture(&c.prefix, c.dataType)) << c.prefix;
        expectInsideTheBlock();
        EXPECT_EQ(L'\0', slotOf(record, 0).text[0]);
        EXPECT_EQ(c.accounted, accounted()) << c.prefix;
        freeText(slotOf(record, 0));

        companion::outLen = 0;
        ASSERT_EQ(0, capture(&c.prefix, c.dataType));
        EXPECT_EQ(4u, accounted());
        freeText(slotOf(record, 0));
    }
}

// Counts that are lower ask for more memory than there is.
TEST_F(TokenCompanion, IsNotAskedForLowerCounts) {
    struct Case {
        std::int16_t dataType, prefix;
    };
    for (const Case& c : {Case{VARCHAR, -2}, Case{VARCHAR, -100}, Case{VARCHAR, SHRT_MIN},
                          Case{DATETIME_VARCHAR, -3}, Case{WVARCHAR, -8}, Case{WVARCHAR, SHRT_MIN},
                          Case{DATETIME_WVARCHAR, -11}}) {
        EXPECT_EQ(KORV_FAILURE, capture(&c.prefix, c.dataType)) << c.prefix;
        EXPECT_EQ(0, companion::calls);
        EXPECT_EQ(1u, slotOf(record, 0).tokenId);
        EXPECT_EQ(nullptr, slotOf(record, 0).text);
        EXPECT_EQ(0u, accounted());
    }
}

// A length whose bytes do not fit in 32 bits: the companion is never told of more room than there
// is.
TEST_F(TokenCompanion, IsNotToldOfRoomThatIsNotThere) {
    companion::writes = true;
    struct Case {
        std::int16_t dataType;
        std::uint32_t bytes;
    };
    for (const Case& c : {Case{CHAR, 0x3FFFFFFF}, Case{CHAR, 0x40000000}, Case{CHAR, 0x40000001},
                          Case{DATETIME_CHAR, 0xFFFFFFFF}, Case{DATETIME_CHAR, 0x80000000},
                          Case{WCHAR, 0xFFFFFFFC}, Case{WCHAR, 0xFFFFFFFD},
                          Case{DATETIME_WCHAR, 0xFFFFFFFF}, Case{DATETIME_WCHAR, 0xFFFFFFFB}}) {
        const std::int32_t status = capture(kValue, c.dataType, c.bytes);
        if (status == -1) {
            EXPECT_EQ(nullptr, slotOf(record, 0).text);
            EXPECT_EQ(0, companion::calls);
            continue;
        }
        ASSERT_EQ(0, status);
        expectInsideTheBlock();
        freeText(slotOf(record, 0));
    }
}

}  // namespace
