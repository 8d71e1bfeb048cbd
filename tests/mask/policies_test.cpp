// What replaces a value that has failed, and what makes a value fail that came out unchanged.
#include "c_interface.h"

namespace {

using PoliciesTest = EngineTest;

const Values kValues = {"good", "one", "", kNull, "Süd", "two", "last"};

TEST_F(PoliciesTest, AFailedValueIsEmptiedByDefault) {
    for (const char* rule : {"A = FAILS", "A = FAILS, on-error=empty"}) {
        Mask mask(rule);
        EXPECT_EQ((Values{"xgood", "", "", kNull, "xSüd", "", "xlast"}), mask.batch(kValues));
        EXPECT_EQ("MFNNMFM", mask.states());
        EXPECT_EQ(KORV_MASK_VALUES_FAILED, mask.status);
    }
}

TEST_F(PoliciesTest, AFailedValueBecomesNull) {
    Mask mask("A = FAILS, on-error=null");
    EXPECT_EQ((Values{"xgood", kNull, "", kNull, "xSüd", kNull, "xlast"}), mask.batch(kValues));
    EXPECT_EQ("MFNNMFM", mask.states());
    EXPECT_EQ(KORV_MASK_VALUES_FAILED, mask.status);
    // Also where the source has no validity bits.
    EXPECT_EQ((Values{"xa", kNull}), mask.batch({"a", "one"}));
    EXPECT_EQ((Values{"xa", "xb"}), mask.batch({"a", "b"}));
}

TEST_F(PoliciesTest, AFailedValueBecomesAConstant) {
    Mask mask("A = FAILS, on-error=const, value=Größe 5");
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    EXPECT_EQ((Values{"xgood", "Größe 5", "", kNull, "xSüd", "Größe 5", "xlast"}),
              mask.batch(kValues));
    EXPECT_EQ("MFNNMFM", mask.states());
    EXPECT_EQ(KORV_MASK_VALUES_FAILED, mask.status);
}

TEST_F(PoliciesTest, ARowIsDropped) {
    Mask mask("A = FAILS, on-error=drop-row");
    const Values masked = mask.batch(kValues);
    EXPECT_EQ("MDNNMDM", mask.states());
    EXPECT_EQ(KORV_MASK_VALUES_FAILED, mask.status);
    ASSERT_EQ(kValues.size(), masked.size());
    EXPECT_EQ(Value("xgood"), masked[0]);
    EXPECT_EQ(Value("xlast"), masked[6]);
    EXPECT_EQ("", masked[1].value_or(""));
    EXPECT_EQ("", masked[5].value_or(""));
    EXPECT_EQ(2u, KorvMaskGetStatistics(mask.handle, 0)->failed);
}

TEST_F(PoliciesTest, TheBatchIsAborted) {
    Mask mask("A = FAILS, on-error=abort");
    EXPECT_EQ((Values{"xgood", "xSüd"}), mask.batch({"good", "Süd"}));
    mask.batch(kValues, 0, 100);
    EXPECT_EQ(KORV_MASK_ABORTED, mask.status);
    EXPECT_EQ(nullptr, mask.result);
    ASSERT_FALSE(mask.records().empty());
    EXPECT_EQ(1u, mask.records()[0]->code);
    EXPECT_EQ(101u, mask.records()[0]->row);
    // The handle stays usable.
    EXPECT_EQ((Values{"xgood"}), mask.batch({"good"}));
}

TEST_F(PoliciesTest, APolicyHoldsForEveryKindOfFailure) {
    for (const char* provider :
         {"BROKEN_UTF8", "BROKEN_NO_RESULT", "BROKEN_BATCH_LENGTH", "BROKEN_NO_RECORD"}) {
        const std::string rule = std::string("A = ") + provider;
        EXPECT_EQ((Values{"good", kNull, "good"}),
                  Mask(rule + ", on-error=null").batch({"good", "bad", "good"}));
        EXPECT_EQ((Values{"good", "-", "good"}),
                  Mask(rule + ", on-error=const, value=-").batch({"good", "bad", "good"}));
        Mask dropping(rule + ", on-error=drop-row");
        dropping.batch({"good", "bad", "\xFF"});
        EXPECT_EQ("MDD", dropping.states());
        Mask aborting(rule + ", on-error=abort");
        aborting.batch({"good", "bad"});
        EXPECT_EQ(KORV_MASK_ABORTED, aborting.status) << provider;
        aborting.batch({"\xFF"});
        EXPECT_EQ(KORV_MASK_ABORTED, aborting.status) << provider;
    }
}

TEST_F(PoliciesTest, AnUnchangedValueIsMaskedUnlessTheRuleForbidsIt) {
    for (const char* provider : {"COPY", "COUNTED", "COPY, type=wide", "COUNTED, one"}) {
        const std::string rule = std::string("A = ") + provider;
        Mask allowed(rule);
        EXPECT_EQ((Values{"a", "ä"}), allowed.batch({"a", "ä"}));
        EXPECT_EQ(KORV_MASK_SUCCESS, allowed.status);
        Mask forbidden(rule + ", unchanged=error, on-error=null");
        EXPECT_EQ((Values{kNull, "", kNull, kNull}), forbidden.batch({"a", "", kNull, "ä"}));
        EXPECT_EQ("FNNF", forbidden.states());
        EXPECT_EQ(std::vector<uint32_t>(2, KORV_MASK_CODE_UNCHANGED), forbidden.codes());
    }
}

TEST_F(PoliciesTest, OnlyTheWholeTextIsUnchanged) {
    Mask mask("A = WHICH, unchanged=error", {{"A"}, 0, {KORV_BROKEN_PROVIDERS "/first"}});
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    EXPECT_EQ((Values{"first", "first", "first", "", "first"}),
              mask.batch({"firs", "first ", "First", "first", "fir"}));
    EXPECT_EQ("MMMFM", mask.states());
}

TEST_F(PoliciesTest, APolicyIsOneOfFive) {
    for (const char* operand : {"on-error=odd", "on-error", "on-error=const", "unchanged=odd",
                                "unchanged", "on-error=null, on-error=empty"}) {
        const Mask mask("A = COPY, " + std::string(operand));
        EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened) << operand;
        EXPECT_EQ(1u, mask.records().size()) << operand << ": " << mask.text();
    }
}

}  // namespace
