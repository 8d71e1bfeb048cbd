// Counts of a batch and of a column.
#include "c_interface.h"

namespace {

using StatisticsTest = EngineTest;

struct Counts {
    uint64_t values, nulls, masked, unchanged, formulas, failed;
    std::vector<std::pair<uint32_t, uint64_t>> failures;

    bool operator==(const Counts&) const = default;
};

void PrintTo(const Counts& c, std::ostream* out) {
    *out << "values " << c.values << ", nulls " << c.nulls << ", masked " << c.masked
         << ", unchanged " << c.unchanged << ", formulas " << c.formulas << ", failed " << c.failed;
    for (const auto& [code, count] : c.failures) *out << ", " << code << ": " << count;
}

// The numbers, after a look at whether they agree with each other.
Counts countsOf(const KorvMaskStatistics& s) {
    EXPECT_EQ(s.values, s.masked + s.failed);
    EXPECT_LE(s.unchanged, s.masked);
    EXPECT_LE(s.formulas, s.masked);
    Counts counts = {s.values, s.nulls, s.masked, s.unchanged, s.formulas, s.failed, {}};
    uint64_t sum = 0;
    for (uint32_t i = 0; i < s.failureCount; ++i) {
        EXPECT_TRUE(i == 0 || s.failures[i - 1].code < s.failures[i].code);
        EXPECT_GT(s.failures[i].count, 0u);
        counts.failures.emplace_back(s.failures[i].code, s.failures[i].count);
        sum += s.failures[i].count;
    }
    EXPECT_EQ(s.failed, sum);
    return counts;
}

Counts ofBatch(const Mask& mask) {
    return countsOf(mask.result->statistics);
}
Counts ofColumn(const Mask& mask, uint32_t column = 0) {
    return countsOf(*KorvMaskGetStatistics(mask.handle, column));
}

TEST_F(StatisticsTest, ABatchAndItsColumnAreCounted) {
    Mask mask("A = FAILS");
    EXPECT_EQ((Counts{0, 0, 0, 0, 0, 0, {}}), ofColumn(mask));
    mask.batch({"a", kNull, "one", "", "two", "one", "none", "\xFF", "ü"});
    const Counts first = {
        7,
        2,
        2,
        0,
        0,
        5,
        {{1, 2}, {2, 1}, {KORV_MASK_CODE_NO_RECORD, 1}, {KORV_MASK_CODE_BAD_SOURCE, 1}}};
    EXPECT_EQ(first, ofBatch(mask));
    EXPECT_EQ(first, ofColumn(mask));
    mask.batch({"two", "unlisted", "b"});
    EXPECT_EQ((Counts{3, 0, 1, 0, 0, 2, {{2, 1}, {5, 1}}}), ofBatch(mask));
    EXPECT_EQ((Counts{10,
                      2,
                      3,
                      0,
                      0,
                      7,
                      {{1, 2},
                       {2, 2},
                       {5, 1},
                       {KORV_MASK_CODE_NO_RECORD, 1},
                       {KORV_MASK_CODE_BAD_SOURCE, 1}}}),
              ofColumn(mask));
    mask.batch({});
    EXPECT_EQ((Counts{0, 0, 0, 0, 0, 0, {}}), ofBatch(mask));
    EXPECT_EQ(10u, ofColumn(mask).values);
}

// Clearing the records leaves the counts.
TEST_F(StatisticsTest, CountsOutliveTheRecords) {
    Mask mask("A = FAILS");
    mask.batch({"one", "a"});
    KorvMaskClearRecords(mask.handle);
    EXPECT_EQ((Counts{2, 0, 1, 0, 0, 1, {{1, 1}}}), ofColumn(mask));
}

TEST_F(StatisticsTest, ColumnsAndHandlesCountForThemselves) {
    const Setting two = {{"A", "B"}, 0, {KORV_BROKEN_PROVIDERS}};
    Mask mask("A = COPY\nB = FAILS", two), other("A = COPY\nB = FAILS", two);
    mask.batch({"a", "b"}, 0);
    mask.batch({"one"}, 1);
    other.batch({"a"}, 1);
    EXPECT_EQ((Counts{2, 0, 2, 2, 0, 0, {}}), ofColumn(mask, 0));
    EXPECT_EQ((Counts{1, 0, 0, 0, 0, 1, {{1, 1}}}), ofColumn(mask, 1));
    EXPECT_EQ((Counts{0, 0, 0, 0, 0, 0, {}}), ofColumn(other, 0));
    EXPECT_EQ((Counts{1, 0, 1, 0, 0, 0, {}}), ofColumn(other, 1));
}

// The first of several errors of a value counts.
TEST_F(StatisticsTest, AValueFailsOnce) {
    Mask mask("A = FAILS");
    mask.batch({"two", "two"});
    EXPECT_EQ(4u, mask.records().size());
    EXPECT_EQ((Counts{2, 0, 0, 0, 0, 2, {{2, 2}}}), ofBatch(mask));
}

TEST_F(StatisticsTest, UnchangedValuesAreCountedWhateverTheAction) {
    for (const char* rule : {"A = COPY", "A = COUNTED", "A = COPY, type=wide", "A = KEEP"}) {
        Mask mask(rule);
        mask.batch({"a", "ä", kNull, ""});
        EXPECT_EQ((Counts{2, 2, 2, 2, 0, 0, {}}), ofBatch(mask)) << rule;
    }
    Mask constant("A = CONST, value=x");
    constant.batch({"x", "y", kNull, "X", "xx"});
    EXPECT_EQ((Counts{4, 1, 4, 1, 0, 0, {}}), ofBatch(constant));
    Mask null("A = NULL");
    null.batch({"x", kNull});
    EXPECT_EQ((Counts{1, 1, 1, 0, 0, 0, {}}), ofBatch(null));
}

TEST_F(StatisticsTest, UnchangedValuesThatAreErrorsAreFailures) {
    Mask mask("A = COPY, unchanged=error");
    mask.batch({"a", "b"});
    EXPECT_EQ((Counts{2, 0, 0, 0, 0, 2, {{KORV_MASK_CODE_UNCHANGED, 2}}}), ofBatch(mask));
}

TEST_F(StatisticsTest, RowsThatAreDroppedAreFailures) {
    Mask mask("A = FAILS, on-error=drop-row");
    mask.batch({"one", "b"});
    EXPECT_EQ((Counts{2, 0, 1, 0, 0, 1, {{1, 1}}}), ofBatch(mask));
}

// Spreadsheets take such texts for formulas. AFF exchanges the halves of a value.
TEST_F(StatisticsTest, FormulasThatWereNoneBeforeAreCounted) {
    Mask mask("A = AFF, method=shuffle");
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    EXPECT_EQ((Values{"=b1a", "+b1a", "-b1a", "@b1a", "-ä1a", "+b=a", "a1=b", "xb1a"}),
              mask.batch({"1a=b", "1a+b", "1a-b", "1a@b", "1a-ä", "=a+b", "=ba1", "1axb"}));
    EXPECT_EQ((Counts{8, 0, 8, 0, 5, 0, {}}), ofBatch(mask));
    Mask constant("A = CONST, value=-");
    constant.batch({"5", "-5", "=", kNull, "x"});
    EXPECT_EQ((Counts{4, 1, 4, 0, 2, 0, {}}), ofBatch(constant));
    Mask kept("A = KEEP");
    kept.batch({"=a", "-", "x"});
    EXPECT_EQ((Counts{3, 0, 3, 3, 0, 0, {}}), ofBatch(kept));
}

// What replaces a failed value is no masked value.
TEST_F(StatisticsTest, ReplacementsOfFailedValuesAreNoFormulas) {
    Mask mask("A = FAILS, on-error=const, value=-");
    mask.batch({"one", "two"});
    EXPECT_EQ((Counts{2, 0, 0, 0, 0, 2, {{1, 1}, {2, 1}}}), ofBatch(mask));
}

TEST_F(StatisticsTest, ARefusedBatchIsNotCounted) {
    Mask mask("A = COPY");
    mask.batch({"a"});
    Batch wrong({"a", "b"});
    wrong.strings().offsetBits = 7;
    const KorvMaskResult* result = nullptr;
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, KorvMaskBatch(mask.handle, 0, 1, wrong, nullptr, &result));
    EXPECT_EQ((Counts{1, 0, 1, 1, 0, 0, {}}), ofColumn(mask));
}

TEST_F(StatisticsTest, EveryHostileProviderLeavesThemInOrder) {
    for (const char* provider :
         {"BROKEN_LENGTH", "BROKEN_BATCH_LEFT", "BROKEN_BATCH_RETURNS", "BROKEN_BATCH_UTF8",
          "BROKEN_NO_RESULT", "BROKEN_PROMISES", "BROKEN_BATCH_TARGET"}) {
        Mask mask(std::string("A = ") + provider);
        mask.batch({"bad", "good", "schlächt", "", "bad"});
        const Counts counts = ofBatch(mask);
        EXPECT_EQ(4u, counts.values) << provider;
        EXPECT_EQ(counts, ofColumn(mask)) << provider;
    }
}

}  // namespace
