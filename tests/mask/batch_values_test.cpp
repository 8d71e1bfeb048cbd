// What becomes of the values of a batch: layouts, NULL and empty values, narrow and wide ones, and
// how long a result lives.
#include <algorithm>
#include <random>

#include "c_interface.h"

namespace {

using BatchValuesTest = EngineTest;

const Setting kTwoColumns = {{"A", "B"}, 0, {KORV_BROKEN_PROVIDERS}};

TEST_F(BatchValuesTest, BothWidthsOfOffsetsGiveTheSame) {
    const Values values = {"one", kNull, "", "zwölf", "x", kNull};
    const Values expected = {"", kNull, "", "xzwölf", "xx", kNull};
    Mask mask("A = FAILS");
    for (const uint32_t bits : {32u, 64u, 32u}) {
        EXPECT_EQ(expected, mask.batch(values, 0, 1, nullptr, bits));
        EXPECT_EQ("FNNMMN", mask.states());
    }
}

TEST_F(BatchValuesTest, ABatchMayBeginWithinItsBuffers) {
    const Values values = {"a", kNull, "b", "ü", "", kNull, "c", "d", "e", kNull};
    Values expected;
    for (const Value& value : values) {
        expected.push_back(value && !value->empty() ? Value("x" + *value) : value);
    }
    for (const char* rule : {"A = FAILS", "A = FAILS, type=wide"}) {
        Mask mask(rule);
        for (const uint32_t bits : {32u, 64u}) {
            for (uint64_t first = 0; first < 20; ++first) {
                const KorvMaskResult* result = nullptr;
                const Batch source(values, bits, first);
                ASSERT_EQ(KORV_MASK_SUCCESS,
                          KorvMaskBatch(mask.handle, 0, 1, source, nullptr, &result));
                EXPECT_EQ(0u, result->strings.first);
                EXPECT_EQ(expected, unpack(result->strings)) << "from " << first;
                EXPECT_TRUE(source.intact());
            }
        }
    }
}

TEST_F(BatchValuesTest, RelatedValuesMayBeginElsewhereAndHaveOtherOffsets) {
    Mask mask("A = APPEND, with=B\nB = DROP", kTwoColumns);
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    for (const uint64_t first : {0, 3, 8, 9}) {
        const Batch source({"a", "ä", "b"}, 32, first);
        const Batch related({"1", kNull, ""}, 64, 9 - first);
        const KorvMaskResult* result = nullptr;
        ASSERT_EQ(KORV_MASK_SUCCESS, KorvMaskBatch(mask.handle, 0, 1, source, related, &result));
        EXPECT_EQ((Values{"a|[1]|B", "ä|NULL|B", "b|[]|B"}), unpack(result->strings));
    }
}

TEST_F(BatchValuesTest, NullAndEmptyValuesPassAsTheyAre) {
    const Values values = {kNull, "", kNull, kNull, "", kNull, "", "", kNull};
    for (const char* rule : {"A = COPY", "A = KEEP", "A = FAILS, on-error=abort", "A = COUNTED",
                             "A = COPY, type=wide, unchanged=error"}) {
        Mask mask(rule);
        EXPECT_EQ(values, mask.batch(values)) << rule;
        EXPECT_EQ("NNNNNNNNN", mask.states()) << rule;
        EXPECT_EQ(KORV_MASK_SUCCESS, mask.status);
    }
}

TEST_F(BatchValuesTest, ABatchOfNothingIsASuccess) {
    for (const char* rule : {"A = COPY", "A = KEEP", "A = NULL", "A = CONST, value=x"}) {
        Mask mask(rule);
        EXPECT_EQ(Values(), mask.batch({})) << rule;
        EXPECT_EQ(KORV_MASK_SUCCESS, mask.status);
        EXPECT_EQ((Values{kNull}), mask.batch({kNull}));
    }
}

TEST_F(BatchValuesTest, NullIsAllThatIsLeft) {
    Mask mask("A = NULL");
    EXPECT_EQ((Values{kNull, kNull, kNull}), mask.batch({"clear", kNull, "Ä"}));
    EXPECT_EQ("MNM", mask.states());
    // No byte of the values is in the result.
    EXPECT_EQ(offsetAt(mask.result->strings, 0), offsetAt(mask.result->strings, 3));
}

TEST_F(BatchValuesTest, AConstantKeepsItsCaseAndItsText) {
    Mask mask("A = CONST, \"value=Größe, M\"");
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    EXPECT_EQ((Values{"Größe, M", kNull, "Größe, M"}), mask.batch({"clear", kNull, "Größe, M"}));
    EXPECT_EQ("MNM", mask.states());
}

// For a column that is kept the result is the source itself.
TEST_F(BatchValuesTest, KeptValuesAreNotCopied) {
    Mask mask("A = KEEP");
    const Batch source({"a", kNull, "b"}, 64, 5);
    const KorvMaskResult* result = nullptr;
    ASSERT_EQ(KORV_MASK_SUCCESS, KorvMaskBatch(mask.handle, 0, 1, source, nullptr, &result));
    const KorvMaskStrings& given = *static_cast<const KorvMaskStrings*>(source);
    EXPECT_EQ(given.offsets, result->strings.offsets);
    EXPECT_EQ(given.bytes, result->strings.bytes);
    EXPECT_EQ(given.validity, result->strings.validity);
    EXPECT_EQ(5u, result->strings.first);
    EXPECT_EQ(64u, result->strings.offsetBits);
}

// Of a column that is kept also what is no text passes.
TEST_F(BatchValuesTest, KeptValuesNeedNotBeText) {
    Mask mask("A = KEEP");
    const Values values = {"\xFF", std::string("a\0b", 3)};
    EXPECT_EQ(values, mask.batch(values));
    EXPECT_EQ(KORV_MASK_SUCCESS, mask.status);
}

TEST_F(BatchValuesTest, ValuesThatAreNotTextFail) {
    const char* const malformed[] = {
        "\x80",
        "\xFF",
        "a\xC3",
        "\xC0\x80",
        "\xC1\xBF",
        "\xE0\x80\xAF",
        "\xE2\x82",
        "\xED\xA0\x80",
        "\xED\xBF\xBF",
        "\xF0\x80\x80\x80",
        "\xF4\x90\x80\x80",
        "\xF5\x80\x80\x80",
        "ok \xF0\x9F\x98",
        "\xC3(",
        "\xE2\x28\xA1",
        "tail\x80",
    };
    Values values = {std::string("a\0b", 3), std::string("\0", 1), std::string("x\0", 2)};
    for (const char* text : malformed) values.emplace_back(text);
    for (const char* rule : {"A = COPY", "A = COPY, type=wide", "A = COUNTED"}) {
        Mask mask(rule);
        EXPECT_EQ(Values(values.size(), ""), mask.batch(values)) << rule;
        EXPECT_EQ(std::string(values.size(), 'F'), mask.states()) << rule;
        EXPECT_EQ(std::vector<uint32_t>(values.size(), KORV_MASK_CODE_BAD_SOURCE), mask.codes());
        EXPECT_EQ((Values{"good"}), mask.batch({"good"}));
    }
}

// Two halves of a character in neighbouring values are no text, though their bytes in a row are.
TEST_F(BatchValuesTest, ACharacterDoesNotReachIntoTheNextValue) {
    for (const char* rule : {"A = COPY", "A = COPY, type=wide", "A = COUNTED"}) {
        Mask mask(rule);
        EXPECT_EQ((Values{"a", "", "", "b"}), mask.batch({"a", "x\xE2\x82", "\xACy", "b"})) << rule;
        EXPECT_EQ("MFFM", mask.states());
    }
}

TEST_F(BatchValuesTest, ARelatedValueThatIsNotTextFails) {
    Mask mask("A = APPEND, with=B\nB = DROP", kTwoColumns);
    const Values related = {"\xFF", "good", std::string("a\0b", 3), kNull};
    const Values values = {"a", "b", "c", "d"};
    EXPECT_EQ((Values{"", "b|[good]|B", "", "d|NULL|B"}), mask.batch(values, 0, 1, &related));
    EXPECT_EQ("FMFM", mask.states());
    EXPECT_EQ(std::vector<uint32_t>(2, KORV_MASK_CODE_BAD_SOURCE), mask.codes());
}

TEST_F(BatchValuesTest, LongValuesHaveRoom) {
    Mask mask("A = FAILS\nB = FAILS, type=wide", kTwoColumns);
    Values values, expected;
    for (const size_t length : {1, 63, 64, 65, 1023, 1024, 4096, 65535, 65536, 1 << 20, 3}) {
        values.emplace_back(std::string(length, 'a'));
        expected.emplace_back(std::string(length + 1, 'a'));
        expected.back()->front() = 'x';
    }
    EXPECT_EQ(expected, mask.batch(values, 0));
    EXPECT_EQ(expected, mask.batch(values, 1));
    Values wide, wideExpected;
    for (const size_t length : {1, 1024, 65536, 1 << 18}) {
        std::string text;
        for (size_t i = 0; i < length; ++i) text += "😀";
        wide.emplace_back(text);
        wideExpected.emplace_back("x" + text);
    }
    EXPECT_EQ(wideExpected, mask.batch(wide, 0));
}

Values manyValues() {
    const Values kinds = {
        "plain", kNull,
        "",      "Grün",
        "one",   "two ways",
        "😀😀",    "none",
        "\xFF",  "a somewhat longer value that needs more room than the others have",
        "slots", "é",
        "1234"};
    std::mt19937 random(11);
    Values values;
    for (int i = 0; i < 700; ++i) {
        Value value = kinds[random() % kinds.size()];
        if (value && !value->empty()) *value += std::to_string(random() % 1000);
        values.push_back(value);
    }
    return values;
}

// The results, states, counts and records of a column's batches, as text.
std::string outcome(const std::string& rule, size_t size, const Values& values) {
    Mask mask(rule);
    std::string text, states;
    for (size_t begin = 0; begin < values.size(); begin += size) {
        const size_t end = std::min(begin + size, values.size());
        const Values part(values.begin() + static_cast<ptrdiff_t>(begin),
                          values.begin() + static_cast<ptrdiff_t>(end));
        for (const Value& value : mask.batch(part, 0, begin)) text += value.value_or("NULL") + "\n";
        states += mask.states();
    }
    text += states + "\n";
    for (const KorvMaskRecord* record : mask.records()) {
        text += std::to_string(record->row) + ":" + std::to_string(record->code) + ":" +
                std::to_string(record->isFirst) + ": " + record->message + "\n";
    }
    const KorvMaskStatistics& statistics = *KorvMaskGetStatistics(mask.handle, 0);
    text += std::to_string(statistics.values) + " " + std::to_string(statistics.nulls) + " " +
            std::to_string(statistics.masked) + " " + std::to_string(statistics.unchanged);
    for (uint32_t i = 0; i < statistics.failureCount; ++i) {
        text += " " + std::to_string(statistics.failures[i].code) + "x" +
                std::to_string(statistics.failures[i].count);
    }
    return text;
}

TEST_F(BatchValuesTest, TheSplitIntoBatchesMakesNoDifference) {
    const Values values = manyValues();
    for (const char* rule :
         {"A = FAILS", "A = FAILS, type=wide", "A = COUNTED", "A = AFF, method=shuffle",
          "A = BROKEN_BATCH_LEFT", "A = BROKEN_BATCH_LENGTH", "A = AFF, secret=test",
          "A = NID, secret=test, type=wide"}) {
        if (contains(rule, "secret") && !kHasSecrets) continue;
        const std::string whole = outcome(rule, values.size(), values);
        for (const size_t size : {1, 2, 3, 7, 64, 333}) {
            EXPECT_EQ(whole, outcome(rule, size, values)) << rule << " by " << size;
        }
    }
}

// A value has one result, whatever form it is handed over in and whatever stands around it.
TEST_F(BatchValuesTest, NeighboursMakeNoDifference) {
    const Values values = {"abc", "äbc", "abc", "xyz", "ÄÖÜ", "abc", "äbc", "1", "😀", "abc"};
    for (const char* rule :
         {"A = AFF, method=reverse", "A = COUNTED", "A = VERSION1", "A = AFF, secret=test"}) {
        if (contains(rule, "secret") && !kHasSecrets) continue;
        Values single;
        for (const Value& value : values) {
            Mask mask(rule);
            single.push_back(mask.batch({value}).at(0));
        }
        Mask mask(rule);
        EXPECT_EQ(single, mask.batch(values)) << rule;
        Mask wide(std::string(rule) + ", type=wide");
        EXPECT_EQ(single, wide.batch(values)) << rule;
    }
}

TEST_F(BatchValuesTest, AResultLivesUntilTheNextBatchOfItsColumn) {
    Mask mask("A = FAILS\nB = CONST, value=y", kTwoColumns);
    const Values expected = {"xfirst", kNull, "", "xzweiß"};
    ASSERT_EQ(expected, mask.batch({"first", kNull, "one", "zweiß"}, 0));
    const KorvMaskResult* result = mask.result;
    for (int i = 1; i < 50; ++i) mask.batch(Values(static_cast<size_t>(i) * 10, "other"), 1);
    KorvMaskClearRecords(mask.handle);
    EXPECT_EQ(expected, unpack(result->strings));
    EXPECT_EQ(KORV_MASK_VALUE_FAILED, result->states[2]);
    EXPECT_EQ(1u, result->statistics.failed);
    EXPECT_EQ(1u, result->statistics.failures[0].code);
}

}  // namespace
