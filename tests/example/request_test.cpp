// Requests: providers by name, operands against their descriptions, limits, and what is released.
#include "masked_value.h"

namespace {

using RequestTest = MaskedValueTest;

// Takes errors as they are, for requests that lack memory for some of their parts.
class DeafListener : public host::ErrorListener {
  public:
    void error(const host::Provider&, const ErrorRecord&) override {}
    void failure(const host::Provider&, int32_t) override {}
};

TEST_F(RequestTest, ProvidersAreFoundByNameInAnyCase) {
    rule("ccn, key=1");
    rule("\"Ccn\", key=1");
    EXPECT_EQ(":1:7: there is no provider NONE", ruleError("NONE"));
    EXPECT_EQ(0u, ruleError("DSWAP").find(":1:7: provider DSWAP has no module: "));
}

TEST_F(RequestTest, OperandsAreChecked) {
    EXPECT_EQ(":1:7: CCN needs the operand KEY", ruleError("CCN"));
    EXPECT_EQ(":1:12: CCN has no operand KEYS", ruleError("CCN, keys=1"));
    EXPECT_EQ(":1:19: operand STRICT takes no value", ruleError("CCN, key=1, strict=1"));
    EXPECT_EQ(":1:12: operand KEY needs a value", ruleError("CCN, key"));
    const std::string bounds = ":1:12: operand KEY is a number of 0 to 999999999";
    for (const char* number : {"x", "1x", "-1", "1000000000", "0000000001", "+", "-", "1.5"}) {
        EXPECT_EQ(bounds, ruleError("CCN, key=" + std::string(number))) << number;
    }
    for (const char* number : {"0", "+5", "999999999", "000000001"}) {
        EXPECT_EQ("accepted", ruleError("CCN, key=" + std::string(number))) << number;
    }
    EXPECT_EQ(":1:19: operand SHIFT is a number of 1 to 9", ruleError("CCN, key=1, shift=0"));
}

TEST_F(RequestTest, LongValuesPassUpToTheLimit) {
    rule("AFF");
    const std::string longest = std::string(4000, 'a') + std::string(4000, 'b');
    EXPECT_EQ(std::string(4000, 'b') + std::string(4000, 'a'), mask(longest));
    EXPECT_EQ("error 100 SRCLEN=8001 EXPSRCLEN=8000", mask(longest + "c"));
    EXPECT_EQ("error 100 SRCLEN=70000 EXPSRCLEN=8000", mask(std::string(70000, 'x')));
    rule("AFF, type=wide");
    EXPECT_EQ(std::string(4000, 'b') + std::string(4000, 'a'), mask(longest));
    EXPECT_EQ("error 100 SRCLEN=8001 EXPSRCLEN=8000", mask(longest + "c"));
    EXPECT_EQ("error 100 SRCLEN=70000 EXPSRCLEN=8000", mask(std::string(70000, 'x')));
    EXPECT_EQ("ba", mask("ab"));
}

TEST_F(RequestTest, EachRequestReleasesWhatItTook) {
    rule("CCN, key=1");
    mask("4111111111111111");
    mask("é");
    const size_t before = heap::liveBlocks();
    for (int i = 0; i < 10; ++i) {
        mask("4111111111111111");
        mask("too short");
        mask("é");
        mask("");
    }
    EXPECT_EQ(before, heap::liveBlocks());
}

// The request ends in an exception, and nothing stays behind, whichever allocation fails.
TEST_F(RequestTest, SurvivesAFailureOfEachAllocation) {
    rule("NID, key=1, country=us");
    mask("é");
    const size_t before = heap::liveBlocks();
    for (const char* value : {"123456789", "é12", "12"}) {
        heap::failAt(0);
        const std::string expected = mask(value);
        const unsigned count = heap::allocations();
        ASSERT_GT(count, 0u);
        int failures = 0;
        for (unsigned n = 1; n <= count; ++n) {
            std::string_view masked;
            DeafListener listener;
            heap::failAt(n);
            try {
                const bool done = request_->mask(value, masked, listener);
                EXPECT_FALSE(done) << "allocation " << n;
                ++failures;
            } catch (const host::HostError&) {
                ++failures;
            }
            heap::failAt(0);
            EXPECT_EQ(before, heap::liveBlocks()) << "allocation " << n;
        }
        EXPECT_EQ(count, static_cast<unsigned>(failures));
        EXPECT_EQ(expected, mask(value));
    }
}

}  // namespace
