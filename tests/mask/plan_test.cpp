// The assignment of rules to columns: which rule wins, and what does not fit.
#include "plan.h"

#include <gtest/gtest.h>

#include <clocale>

#include "mask_error.h"

namespace {

using Names = std::vector<std::string>;

class PlanTest : public testing::Test {
  protected:
    void SetUp() override { std::setlocale(LC_CTYPE, "C.UTF-8"); }
    void TearDown() override { std::setlocale(LC_CTYPE, "C"); }
};

// The line of each column's rule, 0 for none; or the messages.
std::string plan(const std::string& text, const Names& names, uint32_t flags = 0) {
    const mask::Rules rules = mask::parseRules(text, "r");
    std::string result;
    try {
        mask::Faults faults;
        const auto planned = mask::planColumns(rules, names, flags, faults);
        faults.raise();
        for (const mask::Rule* rule : planned) {
            if (!result.empty()) result += ' ';
            result += std::to_string(rule == nullptr ? 0 : rule->line);
        }
        EXPECT_EQ(names.size(), planned.size());
    } catch (const mask::MaskError& error) {
        for (const mask::Fault& fault : error.faults) {
            EXPECT_EQ(KORV_MASK_BAD_RULES, fault.status);
            if (!result.empty()) result += '\n';
            result += fault.message;
        }
    }
    return result;
}

TEST_F(PlanTest, NamesIgnoreCaseAndQuotedNamesDoNot) {
    EXPECT_EQ("2 1", plan("straße = AFF\n\"Ort\" = AFF\n", {"Ort", "STRAßE"}));
    EXPECT_EQ("1", plan("ÄÖÜ = AFF\n", {"äöü"}));
    EXPECT_EQ("2 1", plan("\"id\" = KEEP\n\"ID\" = KEEP\n", {"ID", "id"}));
    EXPECT_EQ("r:1:1: no column Ort; the header is ORT",
              plan("\"Ort\" = AFF", {"ORT"}, KORV_MASK_KEEP_UNLISTED));
    EXPECT_EQ("r:1:1: no column strasse; the header is straße",
              plan("strasse = AFF", {"straße"}, KORV_MASK_KEEP_UNLISTED));
    EXPECT_EQ("1 2", plan("\"A*\" = KEEP\n\"@1\" = KEEP\n", {"A*", "@1"}));
}

TEST_F(PlanTest, NumbersCountFromOne) {
    EXPECT_EQ("2 0 1", plan("@3 = KEEP\n@1 = KEEP\n", {"A", "B", "C"}, KORV_MASK_KEEP_UNLISTED));
    EXPECT_EQ("r:1:1: no column @4; the number of columns is 3",
              plan("@4 = KEEP\n", {"A", "B", "C"}, KORV_MASK_KEEP_UNLISTED));
}

TEST_F(PlanTest, PatternsIgnoreCase) {
    const struct {
        const char* pattern;
        const char* name;
        bool matches;
    } cases[] = {
        {"*", "A", true},
        {"*", "", true},
        {"**", "", true},
        {"addr*", "ADDR", true},
        {"addr*", "Address", true},
        {"addr*", "MY_ADDR", false},
        {"*addr", "my_Addr", true},
        {"*addr", "ADDR1", false},
        {"A*C", "ABC", true},
        {"A*C", "AC", true},
        {"A*C", "ACB", false},
        {"A*C", "ABCBC", true},
        {"?", "ä", true},
        {"?", "AB", false},
        {"?", "", false},
        {"A?", "A", false},
        {"?*", "A", true},
        {"A?C*", "abcd", true},
        {"*A*B*", "xxAyyBzz", true},
        {"*A*B*", "xxByyAzz", false},
        {"ä*", "ÄB", true},
        {"a[b]*", "A[B]", true},
        {"a[b]*", "AB", false},
        {"?*", "*", true},
        {"*?B", "AAB", true},
        {"?ß", "ẞß", true},
    };
    for (const auto& c : cases) {
        const std::string expected = c.matches ? "1"
                                               : "r:1:1: no column matches " +
                                                     std::string(c.pattern) + "; the header is " +
                                                     (c.name[0] == 0 ? "@1" : c.name);
        EXPECT_EQ(expected,
                  plan(std::string(c.pattern) + " = KEEP", {c.name}, KORV_MASK_KEEP_UNLISTED))
            << c.pattern << ' ' << c.name;
    }
}

TEST_F(PlanTest, AHostilePatternTakesNoTime) {
    std::string pattern;
    for (int i = 0; i < 100; ++i) pattern += "*A";
    const std::string name(5000, 'A');
    EXPECT_EQ("1", plan(pattern + " = KEEP", {name}));
    EXPECT_EQ(0u, plan(pattern + "*B = KEEP", {name}, KORV_MASK_KEEP_UNLISTED)
                      .find("r:1:1: no column matches"));
}

TEST_F(PlanTest, AnExactRuleBeatsAPattern) {
    EXPECT_EQ("2 1 3 4",
              plan("A* = KEEP\na1 = DROP\n\"A3\" = NULL\n@4 = DROP\n", {"A1", "A2", "A3", "A4"}));
    EXPECT_EQ("2 2 1", plan("@3 = KEEP\n* = KEEP\n", {"A", "B", "C"}));
    // A pattern may be left with no column.
    EXPECT_EQ("1", plan("A = KEEP\n* = DROP\n", {"A"}));
}

TEST_F(PlanTest, TwoExactRulesForAColumnAreRefused) {
    const Names names = {"CARD", "B"};
    EXPECT_EQ("r:2:1: column CARD has a rule on line 1 already",
              plan("card = KEEP\n\"CARD\" = KEEP\nB = KEEP\n", names));
    EXPECT_EQ("r:1:1: column CARD has a rule on line 2 already",
              plan("card = KEEP\n@1 = KEEP\nB = KEEP\n", names));
    EXPECT_EQ("r:2:1: column CARD has a rule on line 3 already",
              plan("B = KEEP\n\"CARD\" = KEEP\n@1 = KEEP\n", names));
}

TEST_F(PlanTest, TwoPatternsForAColumnAreRefused) {
    const Names names = {"ADDR1", "ADDR2", "B1", "ADDR3"};
    EXPECT_EQ(
        "r:2:1: column ADDR1 matches this pattern and the one on line 1; give the column a "
        "rule of its own",
        plan("ADDR* = KEEP\n*1 = KEEP\n", names));
    EXPECT_EQ("2 1 3 1", plan("ADDR* = KEEP\nADDR1 = DROP\n*1 = NULL\n", names));
    EXPECT_EQ(
        "r:3:1: column ADDR2 matches this pattern and the one on line 1; give the column a "
        "rule of its own\n"
        "r:4:1: column ADDR1 matches this pattern and the one on line 1; give the column a "
        "rule of its own",
        plan("A* = KEEP\nB1 = KEEP\n*2 = KEEP\n* = KEEP\n", names));
}

TEST_F(PlanTest, EqualNamesAreToldApartByNumber) {
    const Names names = {"CARD", "ID", "Card", "CARD"};
    EXPECT_EQ("r:1:1: 3 columns are named card; name them by number: @1, @3, @4",
              plan("card = KEEP\nID = KEEP\n", names));
    EXPECT_EQ("r:1:1: 2 columns are named CARD; name them by number: @1, @4",
              plan("\"CARD\" = KEEP\n@2 = KEEP\n@3 = KEEP\n", names));
    EXPECT_EQ("r:1:1: 3 columns are named card; name them by number: @1, @4",
              plan("card = KEEP\n@2 = KEEP\n@3 = KEEP\n", names));
    // Only numbers tell equal names apart.
    EXPECT_EQ("r:2:1: 2 columns are named card; name them by number: @1, @2",
              plan("\"Card\" = KEEP\ncard = KEEP\n", {"Card", "CARD"}));
    EXPECT_EQ("4 2 3 1", plan("card = KEEP\nID = KEEP\n@3 = KEEP\n@1 = KEEP\n", names));
    EXPECT_EQ("3 2 1 4", plan("\"Card\" = KEEP\nID = KEEP\n@1 = KEEP\n\"CARD\" = KEEP\n", names));
    EXPECT_EQ("r:1:1: column CARD has a rule on line 3 already",
              plan("card = KEEP\nID = KEEP\n@1 = KEEP\n@3 = KEEP\n@4 = KEEP\n", names));
    EXPECT_EQ("1 1 1 1", plan("* = KEEP", names));
    const std::string many = plan("A = KEEP", Names(25, "A"));
    EXPECT_EQ("r:1:1: 25 columns are named A; name them by number: @1, @2, ", many.substr(0, 60));
    EXPECT_EQ("@20, ...", many.substr(many.size() - 8));
}

TEST_F(PlanTest, ARuleThatFitsNoColumnIsRefused) {
    EXPECT_EQ(
        "r:2:1: no column CARD; the header is ID, First Name, @3, a?b\n"
        "r:3:1: no column matches ADDR*; the header is ID, First Name, @3, a?b",
        plan("ID = KEEP\nCARD = KEEP\nADDR* = KEEP\n", {"ID", "First Name", "", "a\nb"},
             KORV_MASK_KEEP_UNLISTED));
    EXPECT_EQ("r:1:1: no column A; there are no columns", plan("A = KEEP", {}));
}

TEST_F(PlanTest, ALongHeaderIsCut) {
    Names names;
    for (int i = 1; i <= 22; ++i) names.push_back('C' + std::to_string(i));
    names[0] = std::string(100, 'x');
    EXPECT_EQ("r:1:1: no column A; the header is " + std::string(60, 'x') +
                  "..., C2, C3, C4, C5, C6, C7, C8, C9, C10, C11, C12, C13, C14, C15, C16, C17, "
                  "C18, C19, C20 and 2 more",
              plan("A = KEEP", names, KORV_MASK_KEEP_UNLISTED));
}

TEST_F(PlanTest, UnlistedColumnsAreOneFault) {
    EXPECT_EQ(
        "r: columns ADDR, CITY have no rule; add a rule for each, such as ADDR = KEEP, or keep "
        "all unlisted columns",
        plan("ID = KEEP", {"ADDR", "ID", "CITY"}));
    EXPECT_EQ(
        "r: column ADDR has no rule; add one, such as ADDR = KEEP, or keep all unlisted columns",
        plan("ID = KEEP", {"ADDR", "ID"}));
    EXPECT_EQ("0 1 0", plan("ID = KEEP", {"ADDR", "ID", "CITY"}, KORV_MASK_KEEP_UNLISTED));
    EXPECT_EQ(
        "r:1:1: no column CRAD; the header is CARD\n"
        "r: column CARD has no rule; add one, such as CARD = KEEP, or keep all unlisted columns",
        plan("CRAD = KEEP", {"CARD"}));
    Names names(1, "ID");
    for (int i = 1; i <= 21; ++i) names.push_back('C' + std::to_string(i));
    EXPECT_EQ(
        "r: columns C1, C2, C3, C4, C5, C6, C7, C8, C9, C10, C11, C12, C13, C14, C15, C16, "
        "C17, C18, C19, C20 and 1 more have no rule; add a rule for each, such as C1 = KEEP, "
        "or keep all unlisted columns",
        plan("ID = KEEP", names));
}

TEST_F(PlanTest, TheRuleThatAMessageSuggestsMeansTheColumn) {
    for (const char* name : {"", "A=B", "@x", "@2", "A*", "?", "\"a\"", "a\\b", "#a", " a", "a ",
                             "a\tb", "a\nb", "ID", "\xEF\xBB\xBFx", "First Name"}) {
        const Names names = {"ID", name, "x", "Ab"};
        const std::string message = plan("@1 = KEEP", names);
        const size_t first = message.find(", such as ") + 10;
        const std::string rule = message.substr(first, message.find(", or keep") - first);
        // Not in the first line, where a byte order mark is no part of the name.
        EXPECT_EQ("0 2 0 0", plan('\n' + rule, names, KORV_MASK_KEEP_UNLISTED)) << rule;
    }
    const std::string longName(100, 'x');
    EXPECT_NE(plan("@1 = KEEP", {"ID", longName}).find("such as @2 = KEEP"), std::string::npos);
}

TEST_F(PlanTest, UnnamedColumnsHaveNumbersOnly) {
    const Names names = {"@1", "@2", "@3"};
    EXPECT_EQ("2 1 2", plan("@2 = KEEP\n* = KEEP\n", names, KORV_MASK_UNNAMED_COLUMNS));
    EXPECT_EQ(
        "r:1:1: no column \xEF\xBC\xA0"
        "1; the columns have no names, write @1 to @3\n"
        "r:2:1: no column @1; the columns have no names, write @1 to @3\n"
        "r:3:1: no column matches ?1; the columns have no names, write @1 to @3",
        plan("\xEF\xBC\xA0"
             "1 = KEEP\n\"@1\" = KEEP\n?1 = KEEP\n",
             names, KORV_MASK_UNNAMED_COLUMNS | KORV_MASK_KEEP_UNLISTED));
    EXPECT_EQ(
        "r: columns @1, @3 have no rule; add a rule for each, such as @1 = KEEP, or keep all "
        "unlisted columns",
        plan("@2 = KEEP", names, KORV_MASK_UNNAMED_COLUMNS));
}

TEST_F(PlanTest, ANameThatIsNotTextIsRefused) {
    EXPECT_EQ("the name of column 2 is not UTF-8 text\nthe name of column 3 is not UTF-8 text",
              plan("* = KEEP", {"A", "\xFF", "\xC3"}));
}

TEST_F(PlanTest, ManyRulesAndColumnsArePossible) {
    // With a search through all columns for each rule this would take longer than a test may.
    std::string text;
    Names names;
    for (int i = 1; i <= 150000; ++i) {
        text += (i % 3 == 0 ? '@' + std::to_string(i) : 'c' + std::to_string(i)) + " = KEEP\n";
        names.push_back('C' + std::to_string(i));
    }
    const mask::Rules rules = mask::parseRules(text, "r");
    mask::Faults faults;
    const auto planned = mask::planColumns(rules, names, 0, faults);
    faults.raise();
    for (size_t i = 0; i < names.size(); ++i) ASSERT_EQ(i + 1, planned[i]->line);
}

TEST_F(PlanTest, AnOperandFindsItsColumn) {
    const Names names = {"BIRTH", "Card", "CARD", "straße", "@2", "STREET"};
    const size_t none = names.size();
    const std::pair<const char*, size_t> cases[] = {
        {"birth", 0},       {"\"BIRTH\"", 0}, {"\"birth\"", none}, {"card", none},
        {"\"Card\"", 1},    {"\"CARD\"", 2},  {"@1", 0},           {"@6", 5},
        {"@7", none},       {"@0", none},     {"@1000000", none},  {"STRAßE", 3},
        {"\"@2\"", 4},      {"@2", 1},        {"", none},          {"\"\"", none},
        {"\"", none},       {"BIRT", none},   {"BIRTHS", none},    {"B*", none},
        {"\u017Ftreet", 5},
    };
    for (const auto& [name, column] : cases)
        EXPECT_EQ(column, mask::findColumn(names, name)) << name;
    EXPECT_EQ(2u, mask::findColumn({"x\"", "\"", "a\"b"}, "\"a\"b\""));
    EXPECT_EQ(0u, mask::findColumn({"@1", "@2"}, "@1"));
    EXPECT_EQ(0u, mask::findColumn({}, "@1"));
    EXPECT_EQ(1u, mask::findColumn({""}, "\""));
}

}  // namespace
