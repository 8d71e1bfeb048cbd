// Providers that break the interface when they mask a value: the value fails, its field is emptied,
// and nothing is read or written out of bounds.
#include <cstdio>

#include "c_interface.h"

namespace {

struct Fault {
    const char* provider;
    uint32_t code;
    bool inNarrowValues = true;
};

void PrintTo(const Fault& fault, std::ostream* out) {
    *out << fault.provider;
}

std::string ruleFor(const std::string& provider, const std::string& operands = "") {
    return "A = BROKEN_" + provider + operands;
}

class HostileResultsTest : public EngineTest, public testing::WithParamInterface<Fault> {};

TEST_P(HostileResultsTest, TheValueFails) {
    const Fault fault = GetParam();
    const Values values = {"good 1", "zebra", "good ä", "zäbra", "", "good 2"};
    for (const char* operands : {"", ", type=wide"}) {
        Mask mask(ruleFor(fault.provider, operands));
        ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
        const Values masked = mask.batch(values, 0, 20);
        EXPECT_EQ(KORV_MASK_VALUES_FAILED, mask.status);
        const bool both = fault.inNarrowValues || *operands != 0;
        EXPECT_EQ((Values{"good 1", both ? "" : "zebra", "good ä", "", "", "good 2"}), masked);
        EXPECT_EQ(both ? "MFMFNM" : "MMMFNM", mask.states());
        ASSERT_EQ(std::vector<uint32_t>(both ? 2 : 1, fault.code), mask.codes());
        const KorvMaskRecord& last = *mask.records().back();
        EXPECT_EQ(KORV_MASK_VALUES_FAILED, last.status);
        EXPECT_EQ(23u, last.row);
        EXPECT_EQ(0u, last.column);
        EXPECT_EQ(1u, last.isFirst);
        EXPECT_EQ(std::string("BROKEN_") + fault.provider, last.provider);
        EXPECT_TRUE(contains(last.message, last.provider)) << last.message;
        EXPECT_FALSE(contains(mask.text(), "bra")) << mask.text();
        // The handle works on.
        EXPECT_EQ((Values{"good"}), mask.batch({"good"}));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Faults, HostileResultsTest,
    testing::Values(
        Fault{"BEYOND", KORV_MASK_CODE_BAD_TEXT}, Fault{"CAPACITY", KORV_MASK_CODE_BAD_LENGTH},
        Fault{"ELSEWHERE", KORV_MASK_CODE_NO_RESULT}, Fault{"LENGTH", KORV_MASK_CODE_BAD_LENGTH},
        Fault{"NEGATIVE", KORV_MASK_CODE_BAD_LENGTH}, Fault{"NO_RECORD", KORV_MASK_CODE_NO_RECORD},
        Fault{"NO_RESULT", KORV_MASK_CODE_NO_RESULT}, Fault{"SURROGATE", KORV_MASK_CODE_BAD_TEXT},
        Fault{"TARGET", KORV_MASK_CODE_NO_RESULT}, Fault{"UNITS", KORV_MASK_CODE_BAD_LENGTH, false},
        Fault{"ZERO", KORV_MASK_CODE_BAD_TEXT}),
    [](const testing::TestParamInfo<Fault>& info) { return info.param.provider; });

using HostileCallsTest = EngineTest;

// This one fails for narrow values only.
TEST_F(HostileCallsTest, ATextThatIsCutOffFails) {
    Mask mask("A = BROKEN_UTF8");
    EXPECT_EQ((Values{"", "a", "good"}), mask.batch({"b", "ä", "good"}));
    EXPECT_EQ(std::vector<uint32_t>(1, KORV_MASK_CODE_BAD_TEXT), mask.codes());
}

TEST_F(HostileCallsTest, ALengthAboveTheCapacityIsReportedWithBoth) {
    Mask mask("A = BROKEN_LENGTH");
    mask.batch({"value"});
    ASSERT_EQ(1u, mask.records().size());
    const std::string message = mask.records()[0]->message;
    const size_t start = message.find("provider BROKEN_LENGTH returned");
    ASSERT_NE(std::string::npos, start) << message;
    int length = 0, capacity = 0;
    ASSERT_EQ(2, std::sscanf(message.c_str() + start,
                             "provider BROKEN_LENGTH returned a length of %d for a capacity of %d",
                             &length, &capacity))
        << message;
    EXPECT_EQ(capacity + 36, length);
    EXPECT_GE(capacity, 5 + 1024);
}

// The capacity of the message is the buffer's, not the one that the provider has written.
TEST_F(HostileCallsTest, ACapacityThatTheProviderRaisesDoesNotCount) {
    Mask mask("A = BROKEN_CAPACITY");
    mask.batch({"value"});
    ASSERT_EQ(1u, mask.records().size());
    EXPECT_TRUE(contains(mask.text(), "a length of 67108864 for a capacity of ")) << mask.text();
    EXPECT_FALSE(contains(mask.text(), "2147483647")) << mask.text();
}

TEST_F(HostileCallsTest, PromisesThatDoNotExistAreNotPassedOn) {
    const Mask mask("A = BROKEN_PROMISES");
    if (mask.opened == KORV_MASK_SUCCESS) {
        EXPECT_EQ(0u, KorvMaskGetColumn(mask.handle, 0)->promises & ~15u);
    } else {
        EXPECT_EQ(KORV_MASK_BAD_PROVIDER, mask.opened);
        EXPECT_EQ(1u, mask.records().size());
    }
}

class OverrunTest : public EngineTest, public testing::WithParamInterface<const char*> {};

TEST_P(OverrunTest, EndsTheWorkOfTheHandle) {
    for (const char* value : {"zebra", "zäbra"}) {
        const std::string provider = std::string("BROKEN_") + GetParam();
        Mask mask("A = " + provider + "\nB = COPY", {{"A", "B"}, 0, {KORV_BROKEN_PROVIDERS}});
        ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
        EXPECT_EQ((Values{"good"}), mask.batch({"good"}));
        mask.batch({"good", value, "good"}, 0, 5);
        EXPECT_EQ(KORV_MASK_OVERRUN, mask.status);
        EXPECT_EQ(nullptr, mask.result);
        ASSERT_FALSE(mask.records().empty());
        EXPECT_EQ(KORV_MASK_OVERRUN, mask.records().back()->status);
        EXPECT_TRUE(contains(mask.records().back()->message, provider)) << mask.text();
        EXPECT_FALSE(contains(mask.text(), value));
        for (const uint32_t column : {0u, 1u, 0u}) {
            mask.batch({"good"}, column);
            EXPECT_EQ(KORV_MASK_OVERRUN, mask.status);
        }
        KorvMaskClearRecords(mask.handle);
        mask.batch({"good"}, 1);
        EXPECT_EQ(KORV_MASK_OVERRUN, mask.status);
        // Other handles do not suffer.
        Mask other("A = COPY");
        EXPECT_EQ((Values{"good"}), other.batch({"good"}));
    }
}

TEST_P(OverrunTest, IsNoFailureThatAPolicyHides) {
    for (const char* policy : {"null", "drop-row", "abort"}) {
        Mask mask("A = BROKEN_" + std::string(GetParam()) + ", type=wide, on-error=" + policy);
        mask.batch({"bad"});
        EXPECT_EQ(KORV_MASK_OVERRUN, mask.status) << policy;
    }
}

INSTANTIATE_TEST_SUITE_P(Faults, OverrunTest,
                         testing::Values("OVERRUN", "OVERRUN_64", "OVERRUN_ERROR", "OVERRUN_NULL",
                                         "BATCH_OVERRUN", "BATCH_OVERRUN_LEFT"),
                         [](const testing::TestParamInfo<const char*>& info) {
                             return info.param;
                         });

// KORV_MASK_VERIFY_PROVIDERS
class VerifyTest : public EngineTest, public testing::WithParamInterface<Fault> {};

TEST_P(VerifyTest, FindsItWhenAsked) {
    const Fault fault = GetParam();
    for (const char* operands : {"", ", type=wide"}) {
        Setting setting;
        setting.flags = KORV_MASK_VERIFY_PROVIDERS;
        Mask mask(ruleFor(fault.provider, operands), setting);
        EXPECT_EQ((Values{"good 1", "", "", "good 2"}),
                  mask.batch({"good 1", "bad", "schlächt", "good 2"}));
        EXPECT_EQ("MFFM", mask.states());
        EXPECT_EQ(std::vector<uint32_t>(2, fault.code), mask.codes());

        Mask trusting(ruleFor(fault.provider, operands));
        trusting.batch({"good 1", "bad", "schlächt", "good 2"});
        EXPECT_EQ("MMMM", trusting.states());
    }
}

INSTANTIATE_TEST_SUITE_P(Faults, VerifyTest,
                         testing::Values(Fault{"CHANGING", KORV_MASK_CODE_NOT_REPEATED},
                                         Fault{"SOURCE", KORV_MASK_CODE_SOURCE_WRITTEN},
                                         Fault{"BATCH_CHANGING", KORV_MASK_CODE_NOT_REPEATED},
                                         Fault{"BATCH_SOURCE", KORV_MASK_CODE_SOURCE_WRITTEN}),
                         [](const testing::TestParamInfo<Fault>& info) {
                             return info.param.provider;
                         });

TEST_F(HostileCallsTest, VerifyingChangesNoResult) {
    const Values values = {"one", "ä", kNull, "two", "", "plain", "secret", "bad", "none"};
    for (const char* rule : {"A = FAILS", "A = AFF, method=shuffle", "A = COUNTED", "A = VERSION1",
                             "A = BROKEN_LENGTH", "A = BROKEN_BATCH_LEFT", "A = BROKEN_NO_RESULT",
                             "A = AFF, secret=test"}) {
        if (contains(rule, "secret") && !kHasSecrets) continue;
        Setting verifying;
        verifying.flags = KORV_MASK_VERIFY_PROVIDERS;
        Mask plain(rule), verified(rule, verifying);
        EXPECT_EQ(plain.batch(values), verified.batch(values)) << rule;
        EXPECT_EQ(plain.states(), verified.states()) << rule;
        EXPECT_EQ(plain.messages(), verified.messages()) << rule;
    }
}

}  // namespace
