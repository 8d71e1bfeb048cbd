// Rules for more columns than are given, and one rule alone.
#include "c_interface.h"

namespace {

using SomeColumnsTest = EngineTest;

Setting oneRule(const char* column = "A") {
    Setting setting;
    setting.columns = {column};
    setting.flags = KORV_MASK_ONE_RULE;
    return setting;
}

Setting someColumns(const std::vector<std::string>& columns) {
    Setting setting;
    setting.columns = columns;
    setting.flags = KORV_MASK_SOME_COLUMNS;
    return setting;
}

TEST_F(SomeColumnsTest, OneRuleBelongsToTheColumn) {
    Mask mask("CCN, method=transpose, key=17", oneRule("card"));
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    Mask whole("card = CCN, method=transpose, key=17", someColumns({"card"}));
    ASSERT_EQ(KORV_MASK_SUCCESS, whole.opened);
    const Values values = {"4556737586899855", kNull, ""};
    EXPECT_EQ(whole.batch(values), mask.batch(values));
    EXPECT_STREQ("card", KorvMaskGetColumn(mask.handle, 0)->name);
    EXPECT_STREQ("card", KorvMaskGetColumn(mask.handle, 0)->rulePattern);
    EXPECT_EQ(nullptr, KorvMaskGetColumn(mask.handle, 1));
}

TEST_F(SomeColumnsTest, OneRuleHasEveryAction) {
    EXPECT_EQ((Values{"x"}), Mask("KEEP", oneRule()).batch({"x"}));
    EXPECT_EQ((Values{kNull}), Mask("NULL", oneRule()).batch({"x"}));
    EXPECT_EQ((Values{"y"}), Mask("CONST, value=y", oneRule()).batch({"x"}));
    Mask drop("drop", oneRule());
    EXPECT_EQ(KORV_MASK_DROP, KorvMaskGetColumn(drop.handle, 0)->action);
}

TEST_F(SomeColumnsTest, OneRuleHasOneLine) {
    EXPECT_EQ("rule:1:5: a rule has one line\n", Mask("KEEP\nA = KEEP", oneRule()).text());
    EXPECT_EQ("rule:1:5: a rule has one line\n", Mask("KEEP\n", oneRule()).text());
    EXPECT_EQ("rule:1:1: a rule has one line\n", Mask("\rKEEP", oneRule()).text());
    EXPECT_EQ("rule:1:1: the action is missing: write a provider, KEEP or DROP\n",
              Mask("", oneRule()).text());
    EXPECT_EQ("rule:1:7: KEEP does not take the operand A\n", Mask("KEEP, a", oneRule()).text());
    Setting named = oneRule();
    named.rulesFile = "label of card";
    EXPECT_EQ("label of card:1:1: there is no provider NONE:",
              Mask("NONE", named).text().substr(0, 45));
    EXPECT_TRUE(contains(Mask("A = KEEP", oneRule()).text(), "rule:1:1: "));
    EXPECT_TRUE(contains(Mask(std::string(17 << 20, 'A'), oneRule()).text(), "larger than 16 MiB"));
}

TEST_F(SomeColumnsTest, MessagesAreOneShortLineWhateverTheRuleHolds) {
    const std::string odd = "\x1B[31mX\x7F\u0085é";
    const std::string message = Mask(odd, oneRule()).text();
    EXPECT_TRUE(contains(message, "'?[31MX??É' is not the name of a provider")) << message;
    const std::string longest = Mask(std::string(1 << 20, 'A') + "é", oneRule()).text();
    EXPECT_EQ(2000u + 3 + 1, longest.size());
    EXPECT_TRUE(longest.ends_with("AAA...\n"));
    std::string wide;
    for (int i = 0; i < 3000; ++i) wide += "é";
    const std::string cut = Mask("x" + wide, oneRule()).text();
    EXPECT_TRUE(contains(cut, "É...\n")) << cut;
}

TEST_F(SomeColumnsTest, AnUndecidedRuleNamesItsColumn) {
    EXPECT_EQ(
        "rule:1:1: decide what happens to column card: replace ? by a provider, KEEP or DROP\n",
        Mask("?", oneRule("card")).text());
}

TEST_F(SomeColumnsTest, OneRuleNeedsItsTextAndOneColumn) {
    Setting two = oneRule();
    two.columns = {"A", "B"};
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, Mask("KEEP", two).opened);
    two.columns = {};
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, Mask("KEEP", two).opened);
    Setting file = oneRule();
    file.rulesFile = "rules.txt";
    EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, Mask(std::nullopt, file).opened);
    Setting unnamed = oneRule();
    unnamed.flags |= KORV_MASK_UNNAMED_COLUMNS;
    EXPECT_EQ(KORV_MASK_SUCCESS, Mask("KEEP", unnamed).opened);
}

TEST_F(SomeColumnsTest, RulesForOtherColumnsAreNoError) {
    const char* const rules = "A = KEEP\nB = NULL\nC* = DROP\n\"d\" = CONST, value=x\n";
    Mask mask(rules, someColumns({"B", "d"}));
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    EXPECT_EQ((Values{kNull}), mask.batch({"x"}, 0));
    EXPECT_EQ((Values{"x"}), mask.batch({"y"}, 1));
    EXPECT_EQ(KORV_MASK_BAD_RULES, Mask(rules, Setting{.columns = {"B", "d"}}).opened);
}

TEST_F(SomeColumnsTest, AColumnWithoutRuleStaysAnError) {
    EXPECT_TRUE(contains(Mask("A = KEEP", someColumns({"B"})).text(), "column B has no rule"));
    EXPECT_EQ(KORV_MASK_BAD_RULES, Mask("A = NONE", someColumns({"A"})).opened);
}

TEST_F(SomeColumnsTest, NumbersOfColumnsAreRefused) {
    EXPECT_EQ(
        "rules:1:1: only some of the columns are given, so @1 is not known; give the column by "
        "name\nrules: column A has no rule; add one, such as A = KEEP, or keep all unlisted "
        "columns\n",
        Mask("@1 = KEEP", someColumns({"A"})).text());
}

TEST_F(SomeColumnsTest, ARuleMayReadAColumnThatIsNotGiven) {
    if (!kHasSecrets) GTEST_SKIP() << "this build is without libcrypto";
    const char* const rule = "AGE, secret=test, range=-30..30, per=";
    const Values dates = {"2024-02-29", "2024-02-29", "2024-02-29"};
    const Values ids = {"7", "8", "7"};
    Setting all;
    all.columns = {"A", "ID"};
    Mask whole("A = " + std::string(rule) + "id\nID = KEEP", all);
    ASSERT_EQ(KORV_MASK_SUCCESS, whole.opened) << whole.text();
    EXPECT_EQ(1u, KorvMaskGetColumn(whole.handle, 0)->related);
    EXPECT_STREQ("ID", KorvMaskGetColumn(whole.handle, 0)->relatedName);
    EXPECT_EQ(nullptr, KorvMaskGetColumn(whole.handle, 1)->relatedName);
    const Values expected = whole.batch(dates, 0, 1, &ids);

    struct {
        std::string rules;
        Setting setting;
        const char* name;
    } cases[] = {
        {"A = " + std::string(rule) + "ID\nID = KEEP", someColumns({"A"}), "ID"},
        {"A = " + std::string(rule) + "@2\nID = KEEP", someColumns({"A"}), "@2"},
        {"A = " + std::string(rule) + "@1\nID = KEEP", someColumns({"A"}), "@1"},
        {rule + std::string("\\\"ID\\\""), oneRule(), "ID"},
        {rule + std::string("A"), oneRule(), "A"},
        {rule + std::string("@1"), oneRule(), "@1"},
    };
    for (const auto& [rules, setting, name] : cases) {
        Mask mask(rules, setting);
        ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << rules << mask.text();
        EXPECT_EQ(1u, KorvMaskGetColumn(mask.handle, 0)->related);
        EXPECT_STREQ(name, KorvMaskGetColumn(mask.handle, 0)->relatedName);
        EXPECT_EQ(expected, mask.batch(dates, 0, 1, &ids)) << rules;
        EXPECT_EQ((Values{}), mask.batch(dates));
        EXPECT_EQ(KORV_MASK_BAD_ARGUMENT, mask.status);
    }
    Mask given("A = " + std::string(rule) + "id\nID = KEEP", someColumns({"ID", "A"}));
    EXPECT_EQ(0u, KorvMaskGetColumn(given.handle, 1)->related);
    EXPECT_STREQ("ID", KorvMaskGetColumn(given.handle, 1)->relatedName);
}

}  // namespace
