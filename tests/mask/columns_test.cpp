// KorvMaskGetColumn: what will happen to each column, by which rule.
#include "c_interface.h"
#include "korv/provider.h"

namespace {

using ColumnsTest = EngineTest;

const std::vector<std::string> kTestFolder = {KORV_BROKEN_PROVIDERS};

TEST_F(ColumnsTest, EachActionIsDescribed) {
    const Mask mask(
        "# all actions\n"
        "a = KEEP\n"
        "B = drop\n"
        "C = Null\n"
        "D = CONST, value=Xy\n"
        "@5 = report\n"
        "F* = APPEND, with=B, on-error=drop-row\n",
        {{"A", "B", "c", "D", "E", "First", "Ä"}, KORV_MASK_KEEP_UNLISTED, kTestFolder});
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    const struct {
        const char* name;
        const char* actionName;
        KorvMaskAction action;
        uint32_t line;
        const char* pattern;
        uint32_t related;
        uint32_t promises;
        const char* onError;
        const char* module;
    } expected[] = {
        {"A", "KEEP", KORV_MASK_KEEP, 2, "a", KORV_MASK_NO_COLUMN, 0, "empty", nullptr},
        {"B", "DROP", KORV_MASK_DROP, 3, "B", KORV_MASK_NO_COLUMN, 0, "empty", nullptr},
        {"c", "NULL", KORV_MASK_NULL, 4, "C", KORV_MASK_NO_COLUMN, 0, "empty", nullptr},
        {"D", "CONST", KORV_MASK_CONST, 5, "D", KORV_MASK_NO_COLUMN, 0, "empty", nullptr},
        {"E", "REPORT", KORV_MASK_PROVIDER, 6, "@5", KORV_MASK_NO_COLUMN,
         PRV_PROMISE_ONE_TO_ONE | PRV_PROMISE_FORMAT_KEPT, "empty",
         KORV_BROKEN_PROVIDERS "/report.so"},
        {"First", "APPEND", KORV_MASK_PROVIDER, 7, "F*", 1, 0, "drop-row",
         KORV_BROKEN_PROVIDERS "/append.so"},
        {"Ä", "KEEP", KORV_MASK_KEEP, 0, nullptr, KORV_MASK_NO_COLUMN, 0, "empty", nullptr},
    };
    for (uint32_t i = 0; i < std::size(expected); ++i) {
        const KorvMaskColumn* column = KorvMaskGetColumn(mask.handle, i);
        ASSERT_NE(nullptr, column);
        SCOPED_TRACE(expected[i].name);
        EXPECT_STREQ(expected[i].name, column->name);
        EXPECT_STREQ(expected[i].actionName, column->actionName);
        EXPECT_EQ(expected[i].action, column->action);
        EXPECT_EQ(expected[i].line, column->rulesLine);
        EXPECT_STREQ(expected[i].pattern, column->rulePattern);
        EXPECT_EQ(expected[i].related, column->related);
        EXPECT_EQ(expected[i].promises, column->promises);
        EXPECT_STREQ(expected[i].onError, column->onError);
        EXPECT_STREQ(expected[i].module, column->module);
    }
    EXPECT_EQ(nullptr, KorvMaskGetColumn(mask.handle, std::size(expected)));
    EXPECT_EQ(nullptr, KorvMaskGetColumn(mask.handle, KORV_MASK_NO_COLUMN));
}

TEST_F(ColumnsTest, PoliciesAreNamed) {
    const Mask mask(
        "A = COPY, on-error=empty\nB = COPY, on-error=null\nC = COPY, on-error=const, value=x\n"
        "D = COPY, on-error=drop-row\nE = COPY, on-error=abort\n",
        {{"A", "B", "C", "D", "E"}, 0, kTestFolder});
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    uint32_t column = 0;
    for (const char* policy : {"empty", "null", "const", "drop-row", "abort"}) {
        EXPECT_STREQ(policy, KorvMaskGetColumn(mask.handle, column++)->onError);
    }
}

TEST_F(ColumnsTest, AColumnWithoutARuleIsAnErrorUnlessItIsToBeKept) {
    const Setting setting = {{"A", "Secret Name", "C"}, 0, kTestFolder};
    const Mask refused("A = COPY", setting);
    EXPECT_EQ(KORV_MASK_BAD_RULES, refused.opened);
    for (const char* part : {"Secret Name", "C"}) {
        EXPECT_TRUE(contains(refused.text(), part)) << refused.text();
    }

    Setting kept = setting;
    kept.flags = KORV_MASK_KEEP_UNLISTED;
    EXPECT_EQ(KORV_MASK_SUCCESS, Mask("A = COPY", kept).opened);
}

TEST_F(ColumnsTest, ARuleMustFitAColumnEvenWhenUnlistedOnesAreKept) {
    const Mask mask("B = COPY", {{"A"}, KORV_MASK_KEEP_UNLISTED, kTestFolder});
    EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened);
    ASSERT_EQ(1u, mask.records().size());
    EXPECT_EQ(1u, mask.records()[0]->rulesLine);
    EXPECT_EQ(1u, mask.records()[0]->rulesPosition);
}

TEST_F(ColumnsTest, AColumnThatNobodyHasDecidedOnIsRefused) {
    const Mask mask("A = ?");
    EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened);
    EXPECT_EQ(1u, mask.records().size());
}

TEST_F(ColumnsTest, AnExactNameBeatsAPattern) {
    const Mask mask("ADDR* = NULL\nADDR2 = COPY", {{"Addr1", "Addr2", "ADDR30"}, 0, kTestFolder});
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    EXPECT_EQ(KORV_MASK_NULL, KorvMaskGetColumn(mask.handle, 0)->action);
    EXPECT_EQ(KORV_MASK_PROVIDER, KorvMaskGetColumn(mask.handle, 1)->action);
    EXPECT_EQ(KORV_MASK_NULL, KorvMaskGetColumn(mask.handle, 2)->action);
}

TEST_F(ColumnsTest, TwoPatternsForOneColumnAreAnError) {
    const Mask mask("AD* = NULL\n*R1 = COPY", {{"ADDR1"}, 0, kTestFolder});
    EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened);
    EXPECT_TRUE(contains(mask.text(), "ADDR1")) << mask.text();
}

TEST_F(ColumnsTest, ColumnsOfOneNameAreAddressedByNumber) {
    const Mask mask("@1 = NULL\n@2 = COPY", {{"A", "A"}, 0, kTestFolder});
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    EXPECT_EQ(KORV_MASK_NULL, KorvMaskGetColumn(mask.handle, 0)->action);
    EXPECT_EQ(KORV_MASK_PROVIDER, KorvMaskGetColumn(mask.handle, 1)->action);
}

TEST_F(ColumnsTest, UnnamedColumnsHaveNumbers) {
    KorvMaskSettings settings = {};
    settings.size = sizeof settings;
    settings.flags = KORV_MASK_UNNAMED_COLUMNS | KORV_MASK_KEEP_UNLISTED;
    settings.columnCount = 12;
    settings.rules = "@2 = NULL\n@12 = CONST, value=x";
    KorvMask* mask = nullptr;
    ASSERT_EQ(KORV_MASK_SUCCESS, KorvMaskOpen(&settings, &mask));
    EXPECT_STREQ("@1", KorvMaskGetColumn(mask, 0)->name);
    EXPECT_EQ(KORV_MASK_KEEP, KorvMaskGetColumn(mask, 0)->action);
    EXPECT_STREQ("@2", KorvMaskGetColumn(mask, 1)->name);
    EXPECT_EQ(KORV_MASK_NULL, KorvMaskGetColumn(mask, 1)->action);
    EXPECT_STREQ("@12", KorvMaskGetColumn(mask, 11)->name);
    EXPECT_EQ(KORV_MASK_CONST, KorvMaskGetColumn(mask, 11)->action);
    EXPECT_EQ(nullptr, KorvMaskGetColumn(mask, 12));
    KorvMaskClose(mask);

    settings.rules = "@13 = NULL";
    EXPECT_EQ(KORV_MASK_BAD_RULES, KorvMaskOpen(&settings, &mask));
    KorvMaskClose(mask);
}

TEST_F(ColumnsTest, ARelatedColumnMustBeThere) {
    const Setting setting = {{"A", "B", "B"}, KORV_MASK_KEEP_UNLISTED, kTestFolder};
    for (const char* name : {"C", "B", "@4", "@0"}) {
        const Mask mask("@1 = APPEND, with=" + std::string(name), setting);
        EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened) << name;
        ASSERT_EQ(1u, mask.records().size()) << name;
        EXPECT_EQ(14u, mask.records()[0]->rulesPosition) << mask.text();
    }
    const Mask mask("@1 = APPEND, with=@3", setting);
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    EXPECT_EQ(2u, KorvMaskGetColumn(mask.handle, 0)->related);
}

// COL is AFF by another name.
TEST_F(ColumnsTest, TheActionIsNamedAsInTheRule) {
    const Mask mask("A = \"Col\", method=reverse");
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    EXPECT_STREQ("COL", KorvMaskGetColumn(mask.handle, 0)->actionName);
    ASSERT_NE(nullptr, KorvMaskGetProvider(mask.handle, 0));
    EXPECT_STREQ("AFF", KorvMaskGetProvider(mask.handle, 0)->name);
}

}  // namespace
