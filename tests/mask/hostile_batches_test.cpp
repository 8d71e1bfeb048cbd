// Providers that break the interface in maskBatch, in the middle of a batch.
#include "c_interface.h"

namespace {

struct Fault {
    const char* provider;
    uint32_t code;  // 0: the values are left to mask, which masks them
};

void PrintTo(const Fault& fault, std::ostream* out) {
    *out << fault.provider;
}

class HostileBatchesTest : public EngineTest, public testing::WithParamInterface<Fault> {};

TEST_P(HostileBatchesTest, OnlyItsValuesFail) {
    const Fault fault = GetParam();
    const Values values = {"good 1", "zebra", kNull,    "good ä", "zäbra", "good 2",
                           "zebra",  "",      "good 3", "ö",      "good 4"};
    Values expected = values;
    std::string states = "MMNMMMMNMMM";
    std::vector<uint32_t> codes;
    if (fault.code != 0) {
        for (const size_t i : {1, 4, 6, 9}) {
            expected[i] = "";
            states[i] = 'F';
        }
        codes.assign(4, fault.code);
    }
    for (const char* operands : {"", ", type=wide"}) {
        Mask mask("A = BROKEN_" + std::string(fault.provider) + operands);
        ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
        for (int round = 0; round < 3; ++round) {
            EXPECT_EQ(expected, mask.batch(values, 0, 100));
            EXPECT_EQ(states, mask.states());
            EXPECT_EQ(codes, mask.codes());
            EXPECT_FALSE(contains(mask.text(), "bra")) << mask.text();
            KorvMaskClearRecords(mask.handle);
        }
    }
}

// One value in a long batch, at its beginning, in it, and at its end.
TEST_P(HostileBatchesTest, ItsPlaceInTheBatchMakesNoDifference) {
    const Fault fault = GetParam();
    Mask mask("A = BROKEN_" + std::string(fault.provider));
    for (const size_t place : {0, 1, 500, 998, 999}) {
        Values values(1000, "good"), expected(1000, "good");
        values[place] = "zebra";
        expected[place] = fault.code == 0 ? "zebra" : "";
        EXPECT_EQ(expected, mask.batch(values, 0, 1)) << place;
        if (fault.code != 0) {
            ASSERT_EQ(1u, mask.records().size());
            EXPECT_EQ(place + 1, mask.records()[0]->row);
        }
        KorvMaskClearRecords(mask.handle);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Faults, HostileBatchesTest,
    testing::Values(Fault{"BATCH_ELSEWHERE", KORV_MASK_CODE_NO_RESULT}, Fault{"BATCH_LEFT", 0},
                    Fault{"BATCH_LENGTH", KORV_MASK_CODE_BAD_LENGTH},
                    Fault{"BATCH_NO_RESULT", KORV_MASK_CODE_NO_RESULT}, Fault{"BATCH_RETURNS", 0},
                    Fault{"BATCH_TARGET", KORV_MASK_CODE_NO_RESULT},
                    Fault{"BATCH_UTF8", KORV_MASK_CODE_BAD_TEXT}),
    [](const testing::TestParamInfo<Fault>& info) { return info.param.provider; });

using BatchErrorsTest = EngineTest;

// An error that maskBatch captures is reported for no value, not for a later one either.
TEST_F(BatchErrorsTest, ErrorsOfMaskBatchDoNotReachOtherValues) {
    Mask mask("A = BROKEN_BATCH_ERROR");
    mask.batch({"good", "zebra", "good"});
    KorvMaskClearRecords(mask.handle);
    EXPECT_EQ((Values{"good", "good"}), mask.batch({"good", "good"}));
    EXPECT_EQ(KORV_MASK_SUCCESS, mask.status);
    EXPECT_EQ(0u, mask.records().size());
}

}  // namespace
