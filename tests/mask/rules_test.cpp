// The parser of the rules: what it makes of a line, and where it finds an error.
#include "rules.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <fstream>

#include "mask_error.h"

namespace {

using mask::ColumnMatch;
using mask::OnError;

class RulesTest : public testing::Test {
  protected:
    void SetUp() override { std::setlocale(LC_CTYPE, "C.UTF-8"); }
    void TearDown() override { std::setlocale(LC_CTYPE, "C"); }
};

mask::Rules parse(const std::string& text) {
    return mask::parseRules(text, "r");
}

// The only rule of a text.
mask::Rule parseOne(const std::string& text) {
    const mask::Rules rules = parse(text);
    EXPECT_EQ(1u, rules.rules.size());
    return rules.rules.at(0);
}

// The messages that a step throws, one on each line.
template <class Step>
std::string messages(Step step) {
    try {
        step();
    } catch (const mask::MaskError& error) {
        std::string all;
        for (const mask::Fault& fault : error.faults) {
            EXPECT_EQ(KORV_MASK_BAD_RULES, fault.status);
            all += (all.empty() ? "" : "\n") + fault.message;
        }
        return all;
    }
    return "accepted";
}

std::string message(const std::string& text) {
    return messages([&] { parse(text); });
}

TEST_F(RulesTest, TakesARuleApart) {
    const mask::Rule rule = parseOne("# comment\n\n  card\t= ccn , key = 17 ,\tStrict\r\n");
    EXPECT_EQ(3u, rule.line);
    EXPECT_EQ("card", rule.column);
    EXPECT_EQ(ColumnMatch::name, rule.match);
    EXPECT_EQ("CCN", rule.action);
    EXPECT_EQ(10u, rule.actionPosition);
    ASSERT_EQ(2u, rule.operands.size());
    EXPECT_EQ("KEY", rule.operands[0].key);
    EXPECT_EQ("17", rule.operands[0].value);
    EXPECT_TRUE(rule.operands[0].hasValue);
    EXPECT_EQ(16u, rule.operands[0].position);
    EXPECT_EQ("STRICT", rule.operands[1].key);
    EXPECT_EQ("", rule.operands[1].value);
    EXPECT_FALSE(rule.operands[1].hasValue);
    EXPECT_EQ(27u, rule.operands[1].position);
}

TEST_F(RulesTest, OwnOperandsHaveDefaults) {
    const mask::Rule rule = parseOne("A = AFF");
    EXPECT_FALSE(rule.wide);
    EXPECT_EQ(OnError::empty, rule.onError);
    EXPECT_FALSE(rule.unchangedFails);
    EXPECT_EQ("", rule.constant);
    EXPECT_TRUE(rule.operands.empty());
}

TEST_F(RulesTest, ValuesKeepTheirCase) {
    const mask::Rule rule =
        parseOne("CITY = Lkp, File=cities.txt, default=Other Town, x=\\\"A\\\\b");
    EXPECT_EQ("LKP", rule.action);
    EXPECT_EQ("FILE", rule.operands.at(0).key);
    EXPECT_EQ("cities.txt", rule.operands[0].value);
    EXPECT_EQ("Other Town", rule.operands.at(1).value);
    EXPECT_EQ("\"A\\b", rule.operands.at(2).value);
}

TEST_F(RulesTest, AValueMayHoldEqualsSignsAndHashes) {
    const mask::Rule rule = parseOne("A = HASH, list=a=b # c");
    EXPECT_EQ("a=b # c", rule.operands.at(0).value);
}

TEST_F(RulesTest, QuotesKeepDelimitersAndEscapes) {
    const mask::Rule rule = parseOne(
        "\"First, Name = x\" = \"Hash\" , \"file = a, b.txt \", \"list=\\\"x\\\";\\\\\"  \n");
    EXPECT_EQ("First, Name = x", rule.column);
    EXPECT_EQ(ColumnMatch::literal, rule.match);
    EXPECT_EQ("HASH", rule.action);
    EXPECT_EQ("FILE", rule.operands.at(0).key);
    EXPECT_EQ("a, b.txt", rule.operands[0].value);
    EXPECT_EQ("\"x\";\\", rule.operands.at(1).value);
}

TEST_F(RulesTest, AQuotedNameIsLiteral) {
    for (const char* name : {"@3", "ADDR*", "?", "# A", " b\t"}) {
        const mask::Rule rule = parseOne('"' + std::string(name) + "\" = KEEP");
        EXPECT_EQ(name, rule.column);
        EXPECT_EQ(ColumnMatch::literal, rule.match) << name;
    }
}

TEST_F(RulesTest, ColumnsHaveNumbersAndPatterns) {
    const mask::Rules rules = parse("@3 = KEEP\n@01000000 = KEEP\nadDr* = KEEP\n? = KEEP\n");
    EXPECT_EQ(ColumnMatch::number, rules.rules.at(0).match);
    EXPECT_EQ(3u, rules.rules[0].number);
    EXPECT_EQ("@3", rules.rules[0].column);
    EXPECT_EQ(1000000u, rules.rules.at(1).number);
    EXPECT_EQ(ColumnMatch::pattern, rules.rules.at(2).match);
    EXPECT_EQ("adDr*", rules.rules[2].column);
    EXPECT_EQ(ColumnMatch::pattern, rules.rules.at(3).match);
    for (const char* name : {"@", "@0", "@1000001", "@4294967297", "@99999999999999999999", "@x",
                             "@3x", "@ 3", "@+3", "@-3", "@*", "@@1"}) {
        EXPECT_EQ(
            "r:1:2: column numbers are @1 to @1000000; put a name that begins with @ between "
            "double quotes",
            message(' ' + std::string(name) + " = KEEP"))
            << name;
    }
}

TEST_F(RulesTest, ActionsWithoutProvider) {
    for (const char* action : {"KEEP", "DROP", "NULL"}) {
        EXPECT_EQ(action, parseOne("A = " + std::string(action)).action);
        EXPECT_EQ("r:1:11: " + std::string(action) + " does not take the operand ON-ERROR",
                  message("A = " + std::string(action) + ", on-error=null"));
    }
    EXPECT_EQ("KEEP", parseOne("A = keep").action);
    EXPECT_EQ("r:1:11: KEEP does not take the operand VALUE", message("A = KEEP, value=x"));
    EXPECT_EQ("r:1:11: KEEP does not take the operand TYPE", message("A = KEEP, type=wide"));
    EXPECT_EQ("r:1:11: DROP does not take the operand FLAG", message("A = Drop, flag"));
}

TEST_F(RulesTest, ConstTakesAValueOnly) {
    const mask::Rule rule = parseOne("A = const, Value=Not Known");
    EXPECT_EQ("CONST", rule.action);
    EXPECT_EQ("Not Known", rule.constant);
    EXPECT_TRUE(rule.operands.empty());
    EXPECT_EQ("a, \"b\"", parseOne("A = CONST, \"value=a, \\\"b\\\"\"").constant);
    EXPECT_EQ("r:1:5: CONST needs the operand value=TEXT", message("A = CONST"));
    EXPECT_EQ("r:1:5: CONST needs the operand value=TEXT", message("A = CONST, value"));
    EXPECT_EQ("r:1:5: CONST needs the operand value=TEXT", message("A = CONST, type=wide"));
    EXPECT_EQ("r:1:21: CONST does not take the operand UNCHANGED",
              message("A = CONST, value=x, unchanged=error"));
}

TEST_F(RulesTest, AConstantIsEmptyOnlyBetweenQuotes) {
    EXPECT_EQ("", parseOne("A = CONST, \"value=\"").constant);
    EXPECT_EQ("", parseOne("A = CONST, \"value =  \"").constant);
    EXPECT_EQ("", parseOne("A = AFF, on-error=const, \"value=\"").constant);
    EXPECT_EQ("r:1:12: operand VALUE has no value", message("A = CONST, value="));
    EXPECT_EQ("r:1:10: operand VALUE has no value", message("A = AFF, \"value=\""));
    EXPECT_EQ("r:1:10: operand FILE has no value", message("A = AFF, \"file=\""));
}

TEST_F(RulesTest, ASuggestionIsDecidedByAPerson) {
    EXPECT_EQ(
        "r:1:5: decide what happens to column a: replace ? by a provider, KEEP or DROP\n"
        "r:2:7: decide what happens to column B: replace ? by a provider, KEEP or DROP",
        message("a = ?\n\"B\" = ?, key=1\nC = KEEP\n"));
}

TEST_F(RulesTest, OwnOperandsAreNotTheProviders) {
    const mask::Rule rule =
        parseOne("A = AFF, type=Wide, on-error=DROP-ROW, method=reverse, Unchanged=Error");
    EXPECT_TRUE(rule.wide);
    EXPECT_EQ(OnError::dropRow, rule.onError);
    EXPECT_TRUE(rule.unchangedFails);
    ASSERT_EQ(1u, rule.operands.size());
    EXPECT_EQ("METHOD", rule.operands[0].key);
    EXPECT_FALSE(parseOne("A = AFF, type=auto").wide);
}

TEST_F(RulesTest, OnErrorHasFivePolicies) {
    const std::pair<const char*, OnError> policies[] = {{"empty", OnError::empty},
                                                        {"null", OnError::null},
                                                        {"const", OnError::constant},
                                                        {"drop-row", OnError::dropRow},
                                                        {"abort", OnError::abort}};
    for (const auto& [name, policy] : policies) {
        EXPECT_STREQ(name, mask::nameOf(policy));
        const mask::Rule rule = parseOne("A = AFF, on-error=" + std::string(name) + ", value=Xy");
        EXPECT_EQ(policy, rule.onError);
        // Only on-error=const takes the value from the provider.
        EXPECT_EQ(policy == OnError::constant ? "Xy" : "", rule.constant) << name;
        EXPECT_EQ(policy == OnError::constant ? 0u : 1u, rule.operands.size()) << name;
    }
    EXPECT_EQ("VALUE", parseOne("A = AFF, value=x").operands.at(0).key);
    EXPECT_EQ("r:1:10: on-error=const needs the operand value=TEXT",
              message("A = AFF, on-error=const"));
    EXPECT_EQ("r:1:17: on-error=const needs the operand value=TEXT",
              message("A = AFF, value, on-error=const"));
}

TEST_F(RulesTest, OwnOperandsHaveWordsAsValues) {
    EXPECT_EQ("r:1:10: operand TYPE must be auto or wide", message("A = AFF, type=odd"));
    EXPECT_EQ("r:1:10: operand TYPE must be auto or wide", message("A = AFF, type"));
    EXPECT_EQ("r:1:10: operand UNCHANGED must be error", message("A = AFF, unchanged"));
    EXPECT_EQ("r:1:10: operand UNCHANGED must be error", message("A = AFF, unchanged=ok"));
    EXPECT_EQ("r:1:10: operand ON-ERROR must be empty, null, const, drop-row or abort",
              message("A = AFF, on-error=drop"));
    EXPECT_EQ("r:1:10: operand ON-ERROR must be empty, null, const, drop-row or abort",
              message("A = AFF, on-error"));
    EXPECT_EQ("r:1:21: operand TYPE is given twice", message("A = AFF, type=wide, Type=wide"));
}

TEST_F(RulesTest, ErrorsHaveTheirPlace) {
    const struct {
        std::string text;
        const char* message;
    } cases[] = {
        {"", "r: there is no rule in it"},
        {"\n # only\n\t\r\n", "r: there is no rule in it"},
        {"CARD\n", "r:1:5: a rule has the form COLUMN = ACTION, operand=value, ..."},
        {"CARD, key=\n", "r:1:11: the action is missing: write a provider, KEEP or DROP"},
        {"= CCN\n", "r:1:1: the column name is empty"},
        {"\\ = CCN\n", "r:1:1: the column name is empty"},
        {"\"\" = CCN\n", "r:1:1: the column name is empty"},
        {"A = AFF\nCARD =\n", "r:2:7: the action is missing: write a provider, KEEP or DROP"},
        {"CARD = \t\r\n", "r:1:9: the action is missing: write a provider, KEEP or DROP"},
        {"CARD = , key=1\n", "r:1:8: the action is empty"},
        {"CARD = CCN,\n", "r:1:12: an operand is missing after the comma"},
        {"CARD = CCN, key=1, ", "r:1:20: an operand is missing after the comma"},
        {"CARD = CCN, , key=1\n", "r:1:13: the operand is empty"},
        {"CARD = CCN, key=\n", "r:1:13: operand KEY has no value"},
        {"CARD = CCN, key= ,x\n", "r:1:13: operand KEY has no value"},
        {"CARD = CCN, =17\n", "r:1:13: an operand has no name"},
        {"CARD = CCN, \" =17\"\n", "r:1:13: an operand has no name"},
        {"CARD = CCN, key=1, Key=2\n", "r:1:20: operand KEY is given twice"},
        {"CARD = CCN, file=\"x\"\n",
         "r:1:13: a double quote inside the operand; put all of it between double quotes, or write "
         "\\\""},
        {"CARD = CCN, \"file=x\n", "r:1:13: the closing double quote of the operand is missing"},
        {"CARD = CCN, \"file=x\\\"\n",
         "r:1:13: the closing double quote of the operand is missing"},
        {"CARD = \"CCN\n", "r:1:8: the closing double quote of the action is missing"},
        {"\"CARD\" x = CCN\n", "r:1:1: text follows the closing double quote of the column name"},
        {"CARD = CCN, \"x\"\"\n", "r:1:13: text follows the closing double quote of the operand"},
        {"CARD = CCN\n\ncard = CCN\n", "r:3:1: column card has a rule on line 1 already"},
        {"straße = CCN\nSTRAßE = CCN\n", "r:2:1: column STRAßE has a rule on line 1 already"},
        {"\"a\" = CCN\n\"a\" = CCN\n", "r:2:1: column a has a rule on line 1 already"},
        {"@3 = CCN\n@03 = CCN\n", "r:2:1: column @03 has a rule on line 1 already"},
        {"A* = CCN\na* = CCN\n", "r:2:1: column a* has a rule on line 1 already"},
        {"\"A\" = X\n\"a\" = X\nA = X\n\"@1\" = X\n@1 = X\n\"A*\" = X\nA* = X\n\\\"A = X\n",
         "accepted"},
        {"CARD = CCN\xFF\n", "r:1:11: this is not UTF-8; save the rules as UTF-8 text"},
        {"Straß\xDF\x65\n", "r:1:6: this is not UTF-8; save the rules as UTF-8 text"},
        {"A = B\n# \xE9t\xE9\n", "r:2:3: this is not UTF-8; save the rules as UTF-8 text"},
        {std::string("CARD\0 = CCN\n", 12),
         "r:1:5: the rules hold a NUL character; save them as UTF-8 text"},
        {std::string("A = B\n#\0\xFF", 9),
         "r:2:2: the rules hold a NUL character; save them as UTF-8 text"},
        {std::string("A = B\n#\xFF\0", 9),
         "r:2:2: this is not UTF-8; save the rules as UTF-8 text"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.message, message(c.text)) << c.text;
}

TEST_F(RulesTest, FaultsOfAllLinesAreReportedTogether) {
    const std::string text = "CARD\nA = AFF\nB =\n\na = KEEP\n";
    EXPECT_EQ(
        "r:1:5: a rule has the form COLUMN = ACTION, operand=value, ...\n"
        "r:3:4: the action is missing: write a provider, KEEP or DROP\n"
        "r:5:1: column a has a rule on line 2 already",
        message(text));
    try {
        parse(text);
    } catch (const mask::MaskError& error) {
        EXPECT_EQ(3u, error.faults.at(1).line);
        EXPECT_EQ(4u, error.faults[1].position);
    }
}

TEST_F(RulesTest, NoTerminalIsControlledByAMessage) {
    EXPECT_EQ(
        "r:1:13: decide what happens to column a?[2J?b: replace ? by a provider, KEEP or DROP",
        message("\"a\x1B[2J\xC2\x9B"
                "b\" = ?"));
    EXPECT_EQ("r:1:10: operand " + std::string(60, 'K') + "... has no value",
              message("A = AFF, " + std::string(100, 'k') + "="));
    EXPECT_EQ(std::string(60, 'k'), mask::shown(std::string(60, 'k')));
}

TEST_F(RulesTest, AByteOrderMarkIsNoPartOfTheFirstLine) {
    const std::string mark = "\xEF\xBB\xBF";
    EXPECT_EQ("card", parseOne(mark + "card = AFF\n").column);
    EXPECT_EQ(2u, parseOne(mark + "# comment\ncard = AFF\n").line);
    EXPECT_EQ("r:1:1: the column name is empty", message(mark + "\"\" = AFF\n"));
    EXPECT_EQ("r: there is no rule in it", message(mark));
}

// With a search through all others for each one, these two would take longer than a test may.
TEST_F(RulesTest, ManyRulesArePossible) {
    std::string text;
    for (int i = 0; i < 500000; ++i) text += 'C' + std::to_string(i) + " = X\n";
    EXPECT_EQ(500000u, parse(text).rules.size());
}

TEST_F(RulesTest, ManyOperandsArePossible) {
    std::string text = "A = X";
    for (int i = 0; i < 500000; ++i) text += ", o" + std::to_string(i);
    EXPECT_EQ(500000u, parseOne(text).operands.size());
}

TEST_F(RulesTest, RelativeFilesBeginInTheFolderOfTheRules) {
    EXPECT_EQ("", mask::parseRules("A = B", "rules.txt").folder);
    EXPECT_EQ("a/b/", mask::parseRules("A = B", "a/b/rules.txt").folder);
    EXPECT_EQ("/", mask::parseRules("A = B", "/rules.txt").folder);
}

class RulesFileTest : public RulesTest {
  protected:
    void SetUp() override {
        RulesTest::SetUp();
        std::string pattern = testing::TempDir() + "rules_XXXXXX";
        close(mkstemp(pattern.data()));
        path_ = pattern;
    }
    void TearDown() override {
        unlink(path_.c_str());
        RulesTest::TearDown();
    }

    mask::Rules read(const std::string& text) {
        std::ofstream(path_, std::ios::binary) << text;
        return mask::readRules(path_);
    }

    std::string path_;
};

TEST_F(RulesFileTest, AFileIsReadAsItIs) {
    const mask::Rules rules = read(
        "\xEF\xBB\xBF"
        "card = AFF\r\nB = KEEP");
    EXPECT_EQ(path_, rules.file);
    EXPECT_EQ(path_.substr(0, path_.rfind('/') + 1), rules.folder);
    EXPECT_EQ("card", rules.rules.at(0).column);
    EXPECT_EQ("KEEP", rules.rules.at(1).action);
    EXPECT_EQ(path_ + ": there is no rule in it", messages([&] { read(""); }));
    EXPECT_EQ(path_ + ":1:4: the action is missing: write a provider, KEEP or DROP",
              messages([&] { read("A ="); }));
}

TEST_F(RulesFileTest, AMissingFileHasTheSystemsReason) {
    EXPECT_EQ("/nowhere/rules.txt: cannot open: No such file or directory",
              messages([] { mask::readRules("/nowhere/rules.txt"); }));
}

TEST_F(RulesFileTest, AFolderHasTheSystemsReason) {
    EXPECT_EQ("/: cannot read: Is a directory", messages([] { mask::readRules("/"); }));
}

TEST_F(RulesFileTest, AFileAboveTheLimitIsRefused) {
    const std::string rule = "A = B\n";
    std::string text = rule + std::string((16 << 20) - rule.size(), '\n');
    EXPECT_EQ(1u, read(text).rules.size());
    text += '\n';
    EXPECT_EQ(path_ + ": the rules are larger than 16 MiB", messages([&] { read(text); }));
    EXPECT_EQ("r: the rules are larger than 16 MiB", message(text));
    EXPECT_EQ("/dev/zero: the rules are larger than 16 MiB",
              messages([] { mask::readRules("/dev/zero"); }));
}

}  // namespace
