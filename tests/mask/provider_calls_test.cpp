// What providers get to see: their calls, the members of each call, and modules of version 1.
#include <dlfcn.h>

#include "c_interface.h"
#include "korv/provider.h"
#include "modules/counters.h"

namespace {

using ProviderCallsTest = EngineTest;

// A module that is loaded for the test as well, to look at what it exports.
class Module {
  public:
    explicit Module(const char* name)
        : handle_(dlopen((std::string(KORV_BROKEN_PROVIDERS "/") + name).c_str(), RTLD_NOW)) {
        EXPECT_NE(nullptr, handle_) << dlerror();
    }
    ~Module() { dlclose(handle_); }
    template <class T>
    T& exported(const char* name) const {
        return *static_cast<T*>(dlsym(handle_, name));
    }

  private:
    void* handle_;
};

class CountedTest : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        counters = {};
    }
    const Module module{"counted.so"};
    Counters& counters = module.exported<Counters>("KorvTestCounters");
};

TEST_F(ProviderCallsTest, ACallHasAllItsMembers) {
    for (const char* flags : {"", "verified"}) {
        Setting setting;
        setting.columns = {"Straße 7"};
        setting.flags = *flags == 0 ? 0 : KORV_MASK_VERIFY_PROVIDERS;
        Mask mask("@1 = REPORT", setting);
        const std::string rest =
            " characters, length 0, null 0, room enough, column Straße 7, code 1, key NULL 0, "
            "related NULL, reserved 0";
        EXPECT_EQ((Values{"open without values 1, narrow value of 3" + rest,
                          "open without values 1, wide value of 4" + rest,
                          "open without values 1, narrow value of 5000" + rest}),
                  mask.batch({"abc", "äbc😀", std::string(5000, 'x')}));
        Mask wide("@1 = REPORT, type=wide", setting);
        EXPECT_EQ((Values{"open without values 1, wide value of 3" + rest}), wide.batch({"abc"}));
    }
}

TEST_F(ProviderCallsTest, RelatedValuesComeFromTheSameRow) {
    Mask mask("A = APPEND, with=Straße\nStraße = NULL\nC = APPEND, with=@1, type=wide",
              {{"A", "Straße", "C"}, 0, {KORV_BROKEN_PROVIDERS}});
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    const Values values = {"a", "ä", kNull, "b", "", "c", "ö"};
    const Values related = {"1", "2", "3", kNull, "5", "", "Größe 😀"};
    EXPECT_EQ((Values{"a|[1]|Straße", "ä|[2]|Straße", kNull, "b|NULL|Straße", "", "c|[]|Straße",
                      "ö|[Größe 😀]|Straße"}),
              mask.batch(values, 0, 1, &related));
    EXPECT_EQ((Values{"a|[1]|A", "ä|[2]|A", kNull, "b|NULL|A", "", "c|[]|A", "ö|[Größe 😀]|A"}),
              mask.batch(values, 2, 1, &related));
}

TEST_F(CountedTest, EachColumnOfEachHandleHasAnInstance) {
    {
        const Setting setting = {{"A", "B", "C"}, 0, {KORV_BROKEN_PROVIDERS}};
        Mask one("A = COUNTED\nB = COUNTED, one\nC = NULL", setting);
        EXPECT_EQ(2, counters.open);
        Mask pattern("* = COUNTED", setting);
        EXPECT_EQ(5, counters.open);
        EXPECT_EQ(0, counters.close);
    }
    EXPECT_EQ(5, counters.close);
}

TEST_F(CountedTest, AFailedOpenClosesWhatItHasOpened) {
    const Setting setting = {{"A", "B", "C"}, 0, {KORV_BROKEN_PROVIDERS}};
    {
        EXPECT_EQ(KORV_MASK_BAD_RULES,
                  Mask("A = COUNTED\nB = COUNTED, refuse\nC = COUNTED", setting).opened);
    }
    EXPECT_GE(counters.open, 2);
    EXPECT_EQ(counters.open - 1, counters.close);
}

TEST_F(CountedTest, WrongRulesReachNoProvider) {
    const Setting setting = {{"A", "B"}, 0, {KORV_BROKEN_PROVIDERS}};
    EXPECT_EQ(KORV_MASK_BAD_RULES, Mask("A = COUNTED\nB = COUNTED, odd=1", setting).opened);
    EXPECT_EQ(counters.open, counters.close);
    EXPECT_EQ(0, counters.mask + counters.maskBatch);
}

TEST_F(CountedTest, ValuesOfOneFormAreHandedOverTogether) {
    Mask mask("A = COUNTED");
    const Values values(1000, "value");
    EXPECT_EQ(values, mask.batch(values));
    EXPECT_EQ(0, counters.mask);
    EXPECT_EQ(1000, counters.batchValues);
    EXPECT_LT(counters.maskBatch, 100);
    counters = {};
    mask.batch({"a", "ä", "", "b", kNull, "ö", "\xFF"});
    EXPECT_EQ(0, counters.mask);
    EXPECT_EQ(4, counters.batchValues);
}

TEST_F(CountedTest, WhatABatchLeavesGoesToMask) {
    Mask mask("A = COUNTED, one");
    const Values values = {"a", "ä", "", "b", kNull, "ö"};
    EXPECT_EQ(values, mask.batch(values));
    EXPECT_EQ(4, counters.mask);
    EXPECT_EQ(4, counters.batchValues);
}

TEST_F(CountedTest, NothingIsCalledForNullAndEmptyValues) {
    Mask mask("A = COUNTED");
    mask.batch({kNull, "", kNull});
    mask.batch({});
    EXPECT_EQ(0, counters.mask + counters.maskBatch);
}

TEST_F(CountedTest, VerifyingCallsTwice) {
    Setting setting;
    setting.flags = KORV_MASK_VERIFY_PROVIDERS;
    Mask mask("A = COUNTED", setting);
    EXPECT_EQ((Values{"a", "ä"}), mask.batch({"a", "ä"}));
    EXPECT_EQ(4, counters.batchValues + counters.mask);
}

using Version1Test = EngineTest;

TEST_F(Version1Test, AModuleOfVersion1SeesWhatItSawThen) {
    Mask mask("A = VERSION1, key=4");
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    EXPECT_EQ(1u, KorvMaskGetProvider(mask.handle, 0)->entry->interfaceVersion);
    EXPECT_EQ(0u, KorvMaskGetColumn(mask.handle, 0)->promises);
    EXPECT_EQ((Values{"cba", "cbä", "", "😀a"}), mask.batch({"abc", "äbc", "abcd", "a😀"}));
    EXPECT_EQ("MMFM", mask.states());
    ASSERT_EQ(1u, mask.records().size());
    EXPECT_EQ(1u, mask.records()[0]->code);
    EXPECT_TRUE(contains(mask.text(), "KORV_TOKID_COLNAME=A")) << mask.text();
    EXPECT_TRUE(contains(mask.text(), "KORV_TOKID_SRCLEN=4")) << mask.text();
}

TEST_F(Version1Test, NullAndEmptyValuesAreHandedOver) {
    const Module module("version1.so");
    int& nulls = module.exported<int>("KorvTestNulls");
    nulls = 0;
    Mask mask("A = VERSION1");
    const Values values = {kNull, "ab", "", kNull};
    EXPECT_EQ((Values{kNull, "ba", "", kNull}), mask.batch(values));
    EXPECT_EQ("NMNN", mask.states());
    EXPECT_EQ(3, nulls);
}

// Its provider library measured texts in 16 bits; the engine hands over any length.
TEST_F(Version1Test, LongValuesAreHandedOver) {
    Mask mask("A = VERSION1");
    const std::string value = std::string(4000, 'a') + std::string(4000, 'b');
    EXPECT_EQ((Values{std::string(4000, 'b') + std::string(4000, 'a')}), mask.batch({value}));
}

TEST_F(Version1Test, ItCanBeVerified) {
    Setting setting;
    setting.flags = KORV_MASK_VERIFY_PROVIDERS;
    Mask mask("A = VERSION1", setting);
    EXPECT_EQ((Values{"ba", kNull, "öä"}), mask.batch({"ab", kNull, "äö"}));
    EXPECT_EQ(KORV_MASK_SUCCESS, mask.status);
}

}  // namespace
