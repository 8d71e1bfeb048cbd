// KorvMaskBatch refuses arguments that do not fit, and reads nothing outside of the buffers.
#include <initializer_list>

#include "c_interface.h"

namespace {

class BatchArgumentsTest : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        mask_ = std::make_unique<Mask>(
            "A = COPY\nB = APPEND, with=A\nC = DROP\nD = KEEP\nE = NULL\nF = CONST, value=x",
            Setting{{"A", "B", "C", "D", "E", "F"}, 0, {KORV_BROKEN_PROVIDERS}});
        ASSERT_EQ(KORV_MASK_SUCCESS, mask_->opened) << mask_->text();
    }
    void TearDown() override {
        mask_.reset();
        EngineTest::TearDown();
    }

    // A refused call leaves the result alone, says why in a record, and does no lasting harm.
    void expectNothingDone(int32_t status, const KorvMaskResult* result) {
        EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, status);
        EXPECT_EQ(untouched(), result);
        ASSERT_EQ(1u, mask_->records().size());
        EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, mask_->records()[0]->status);
        EXPECT_EQ(KORV_MASK_NO_ROW, mask_->records()[0]->row);
        KorvMaskClearRecords(mask_->handle);
        EXPECT_EQ((Values{"value"}), mask_->batch({"value"}));
    }
    static const KorvMaskResult* untouched() { return reinterpret_cast<KorvMaskResult*>(8); }

    void expectRefused(uint32_t column, const KorvMaskStrings* source,
                       const KorvMaskStrings* related = nullptr) {
        const KorvMaskResult* result = untouched();
        const int32_t status = KorvMaskBatch(mask_->handle, column, 1, source, related, &result);
        expectNothingDone(status, result);
    }

    // Offsets into bytes that all lie before an unreadable page, for every action.
    template <class Offset>
    void expectOffsetsRefused(std::initializer_list<Offset> offsets) {
        Fenced<Offset> fenced(offsets);
        Fenced<char> bytes(std::string_view("0123456789"), false);
        const KorvMaskStrings strings = {
            offsets.size() - 1, 0, sizeof(Offset) * 8, fenced.data(), bytes.data(), nullptr};
        for (const uint32_t column : {0u, 3u, 4u, 5u}) {
            SCOPED_TRACE(column);
            expectRefused(column, &strings);
        }
    }

    std::unique_ptr<Mask> mask_;
};

TEST_F(BatchArgumentsTest, NothingMayBeMissing) {
    const Batch source({"a"});
    const KorvMaskResult* result = untouched();
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, KorvMaskBatch(nullptr, 0, 1, source, nullptr, &result));
    EXPECT_EQ(untouched(), result);
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, KorvMaskBatch(mask_->handle, 0, 1, source, nullptr, nullptr));
    KorvMaskClearRecords(mask_->handle);
    expectRefused(0, nullptr);
    Batch changed({"a"});
    changed.strings().offsets = nullptr;
    expectRefused(0, changed);
    Batch without({"a"});
    without.strings().bytes = nullptr;
    expectRefused(0, without);
}

TEST_F(BatchArgumentsTest, TheBytesOfEmptyValuesMayBeMissing) {
    Batch source({"", kNull, ""});
    const int32_t offsets[] = {0, 0, 0, 0};
    source.strings().offsets = offsets;
    source.strings().bytes = nullptr;
    const KorvMaskResult* result = nullptr;
    ASSERT_EQ(KORV_MASK_SUCCESS, KorvMaskBatch(mask_->handle, 0, 1, source, nullptr, &result));
    EXPECT_EQ((Values{"", kNull, ""}), unpack(result->strings));
}

TEST_F(BatchArgumentsTest, TheColumnMustBeThereAndNotDropped) {
    const Batch source({"a"});
    for (const uint32_t column : {2u, 6u, UINT32_MAX}) {
        SCOPED_TRACE(column);
        expectRefused(column, source);
    }
}

TEST_F(BatchArgumentsTest, OffsetsHave32Or64Bits) {
    for (const uint32_t bits : {0u, 8u, 16u, 31u, 33u, 65u, UINT32_MAX}) {
        Batch source({"a"});
        source.strings().offsetBits = bits;
        SCOPED_TRACE(bits);
        expectRefused(0, source);
    }
}

TEST_F(BatchArgumentsTest, OffsetsDoNotDecrease) {
    expectOffsetsRefused<int32_t>({0, 3, 2});
    expectOffsetsRefused<int64_t>({0, 3, 2});
    expectOffsetsRefused<int32_t>({5, 4});
    expectOffsetsRefused<int32_t>({0, 1, 2, 3, 4, 5, 6, 7, 8, 7, 10});
    // The first value seems to be long; it may not be read before its successor is seen.
    expectOffsetsRefused<int32_t>({0, 100'000'000, 10});
    expectOffsetsRefused<int64_t>({0, 100'000'000, 10});
    expectOffsetsRefused<int64_t>({0, int64_t{1} << 30, 10});
}

TEST_F(BatchArgumentsTest, OffsetsAreNotNegative) {
    expectOffsetsRefused<int32_t>({-1, 3});
    expectOffsetsRefused<int32_t>({-5, -1});
    expectOffsetsRefused<int64_t>({-1, 3});
    expectOffsetsRefused<int64_t>({INT64_MIN, 3});
    expectOffsetsRefused<int64_t>({INT64_MIN, INT64_MAX});
    expectOffsetsRefused<int32_t>({0, 3, -1});
}

// Offsets of a NULL are offsets, too.
TEST_F(BatchArgumentsTest, OffsetsOfNullsAreChecked) {
    const int32_t offsets[] = {0, 3, 1, 4};
    const uint8_t validity = 4;
    const KorvMaskStrings strings = {3, 0, 32, offsets, "abcd", &validity};
    expectRefused(0, &strings);
}

TEST_F(BatchArgumentsTest, OffsetsNeedNotBeginAtZero) {
    const int32_t offsets[] = {2, 4, 4, 5};
    const KorvMaskStrings strings = {3, 0, 32, offsets, "xxabc", nullptr};
    const KorvMaskResult* result = nullptr;
    ASSERT_EQ(KORV_MASK_SUCCESS, KorvMaskBatch(mask_->handle, 0, 1, &strings, nullptr, &result));
    EXPECT_EQ((Values{"ab", "", "c"}), unpack(result->strings));
}

// Counts whose offsets could not lie in any memory.
TEST_F(BatchArgumentsTest, CountsThatOverflowAreRefused) {
    const struct {
        uint64_t count, first;
    } cases[] = {{UINT64_MAX, 0},     {UINT64_MAX, 1},
                 {1, UINT64_MAX},     {UINT64_MAX / 2, UINT64_MAX / 2},
                 {1, UINT64_MAX / 4}, {UINT64_MAX / 8, 0}};
    for (const auto& c : cases) {
        for (const uint32_t bits : {32u, 64u}) {
            Batch source({"a"}, bits);
            source.strings().count = c.count;
            source.strings().first = c.first;
            const KorvMaskResult* result = untouched();
            const int32_t status = KorvMaskBatch(mask_->handle, 0, 1, source, nullptr, &result);
            EXPECT_TRUE(status == KORV_MASK_BAD_ARGUMENT || status == KORV_MASK_TOO_LARGE)
                << status << " for " << c.count << ", " << c.first;
            EXPECT_EQ(untouched(), result);
        }
    }
    EXPECT_EQ((Values{"value"}), mask_->batch({"value"}));
}

TEST_F(BatchArgumentsTest, RelatedValuesAreCheckedAsWell) {
    const Batch source({"a", "b"});
    expectRefused(1, source, nullptr);
    expectRefused(1, source, Batch({"a"}));
    expectRefused(1, source, Batch({"a", "b", "c"}));
    Fenced<int32_t> offsets({0, 50'000'000, 1});
    Batch related({"a", "b"});
    related.strings().offsets = offsets.data();
    expectRefused(1, source, related);
}

// One byte more than 1 GiB; none of it is there.
TEST_F(BatchArgumentsTest, AValueAbove1GiBIsTooLarge) {
    Fenced<int64_t> offsets({0, (int64_t{1} << 30) + 1});
    Fenced<char> nothing(0);
    const KorvMaskStrings strings = {1, 0, 64, offsets.data(), nothing.data(), nullptr};
    const KorvMaskResult* result = untouched();
    EXPECT_EQ(KORV_MASK_TOO_LARGE, KorvMaskBatch(mask_->handle, 0, 7, &strings, nullptr, &result));
    EXPECT_EQ(untouched(), result);
    ASSERT_EQ(1u, mask_->records().size());
    EXPECT_EQ(KORV_MASK_TOO_LARGE, mask_->records()[0]->status);
    EXPECT_EQ((Values{"value"}), mask_->batch({"value"}));
}

// 32-bit offsets end at 2 GiB.
TEST_F(BatchArgumentsTest, AResultThatOffsetsCannotAddressIsTooLarge) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer's heap ends the process where this one says that it is full";
#endif
    constexpr size_t kCount = 1 << 20;
    Mask mask("A = CONST, value=" + std::string(2048, 'x'));
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    EXPECT_EQ(Values(3, std::string(2048, 'x')), mask.batch(Values(3, "a")));
    const std::vector<char> bytes(kCount, 'a');
    std::vector<int32_t> offsets(kCount + 1);
    for (size_t i = 0; i <= kCount; ++i) offsets[i] = static_cast<int32_t>(i);
    const KorvMaskStrings strings = {kCount, 0, 32, offsets.data(), bytes.data(), nullptr};
    const KorvMaskResult* result = untouched();
    const int32_t status = KorvMaskBatch(mask.handle, 0, 1, &strings, nullptr, &result);
    // A 32-bit process may run out of addresses before the offsets do.
    if (sizeof(void*) == 8 || status != KORV_MASK_NO_MEMORY) {
        EXPECT_EQ(KORV_MASK_TOO_LARGE, status);
    }
    EXPECT_EQ(untouched(), result);
}

TEST_F(BatchArgumentsTest, OtherFunctionsTakeNoIndexTooMany) {
    EXPECT_NE(nullptr, KorvMaskGetStatistics(mask_->handle, 5));
    EXPECT_EQ(nullptr, KorvMaskGetStatistics(mask_->handle, 6));
    EXPECT_EQ(nullptr, KorvMaskGetStatistics(mask_->handle, UINT32_MAX));
    EXPECT_EQ(nullptr, KorvMaskGetRecord(mask_->handle, 0));
    EXPECT_EQ(nullptr, KorvMaskGetRecord(mask_->handle, UINT64_MAX));
    EXPECT_EQ(nullptr, KorvMaskGetProvider(mask_->handle, UINT32_MAX));
}

}  // namespace
