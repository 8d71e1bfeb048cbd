// The parser of the rules: what it makes of a line, and where it finds an error.
#include "host/rules.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <fstream>

#include "host/host_error.h"

namespace {

class RulesTest : public testing::Test {
  protected:
    void SetUp() override {
        std::setlocale(LC_CTYPE, "C.UTF-8");
        std::string pattern = testing::TempDir() + "rules_XXXXXX";
        close(mkstemp(pattern.data()));
        path_ = pattern;
    }
    void TearDown() override {
        unlink(path_.c_str());
        std::setlocale(LC_CTYPE, "C");
    }

    host::Rules read(const std::string& text) {
        std::ofstream(path_, std::ios::binary) << text;
        return host::readRules(path_);
    }
    std::string message(const std::string& text) {
        try {
            read(text);
        } catch (const host::HostError& error) {
            return std::string(error.what()).substr(path_.size());
        }
        return "accepted";
    }

    std::string path_;
};

TEST_F(RulesTest, TakesARuleApart) {
    const host::Rules rules = read("# comment\n\n  card\t= ccn , key = 17 ,\tStrict\r\n");
    ASSERT_EQ(1u, rules.rules.size());
    const host::Rule& rule = rules.rules[0];
    EXPECT_EQ(3u, rule.line);
    EXPECT_EQ("CARD", rule.column);
    EXPECT_FALSE(rule.quotedColumn);
    EXPECT_EQ("CCN", rule.provider);
    EXPECT_EQ(10u, rule.providerPosition);
    EXPECT_FALSE(rule.wide);
    ASSERT_EQ(2u, rule.operands.size());
    EXPECT_EQ("KEY", rule.operands[0].key);
    EXPECT_EQ("17", rule.operands[0].value);
    EXPECT_TRUE(rule.operands[0].hasValue);
    EXPECT_EQ(16u, rule.operands[0].position);
    EXPECT_EQ("STRICT", rule.operands[1].key);
    EXPECT_FALSE(rule.operands[1].hasValue);
}

TEST_F(RulesTest, QuotesKeepCaseAndDelimiters) {
    const host::Rules rules =
        read("\"First, Name = x\" = HASH, \"file = a, b.txt \", \"list=\\\"x\\\";\\\\\"\n");
    const host::Rule& rule = rules.rules[0];
    EXPECT_EQ("First, Name = x", rule.column);
    EXPECT_TRUE(rule.quotedColumn);
    EXPECT_EQ("FILE", rule.operands[0].key);
    EXPECT_EQ("a, b.txt", rule.operands[0].value);
    EXPECT_EQ("\"x\";\\", rule.operands[1].value);
}

TEST_F(RulesTest, UnquotedColumnsIgnoreCase) {
    const host::Rules rules = read("straße = AFF\n\"Ort\" = AFF\n");
    EXPECT_TRUE(host::namesColumn(rules.rules[0], "Straße"));
    EXPECT_FALSE(host::namesColumn(rules.rules[0], "Strasse"));
    EXPECT_TRUE(host::namesColumn(rules.rules[1], "Ort"));
    EXPECT_FALSE(host::namesColumn(rules.rules[1], "ORT"));
}

TEST_F(RulesTest, TypeBelongsToTheHost) {
    const host::Rules rules = read("A = AFF, type=wide\nB = AFF, type=auto, method=reverse\n");
    EXPECT_TRUE(rules.rules[0].wide);
    EXPECT_TRUE(rules.rules[0].operands.empty());
    EXPECT_FALSE(rules.rules[1].wide);
    EXPECT_EQ(1u, rules.rules[1].operands.size());
}

TEST_F(RulesTest, ErrorsHaveTheirPlace) {
    const struct {
        std::string text;
        const char* message;
    } cases[] = {
        {"", ": no rule in it"},
        {"# only\n", ": no rule in it"},
        {"CARD\n", ":1:5: a rule has the form COLUMN = PROVIDER, operand=value, ..."},
        {"= CCN\n", ":1:1: an empty element"},
        {"A = AFF\nCARD =\n", ":2:7: the provider is missing"},
        {"CARD = , key=1\n", ":1:8: an empty element"},
        {"CARD = CCN,\n", ":1:12: an operand is missing"},
        {"CARD = CCN, , key=1\n", ":1:13: an empty element"},
        {"CARD = CCN, key=\n", ":1:13: operand KEY has no value"},
        {"CARD = CCN, =17\n", ":1:13: an operand without a name"},
        {"CARD = CCN, key=1, Key=2\n", ":1:20: operand KEY stands twice"},
        {"CARD = CCN, type=odd\n", ":1:13: the type is auto or wide"},
        {"CARD = CCN, file=\"x\"\n", ":1:13: a quote where none may stand"},
        {"CARD = CCN, \"file=x\n", ":1:13: a quote that is not closed at the end of its element"},
        {"CARD = CCN, \"file=x\\\"\n",
         ":1:13: a quote that is not closed at the end of its element"},
        {"\"CARD\" x = CCN\n", ":1:1: a quote that is not closed at the end of its element"},
        {"CARD = CCN\n\ncard = CCN\n", ":3:1: column CARD has a rule on line 1 already"},
        {"CARD = CCN\xFF\n", ":1:11: the rule is not UTF-8 text"},
        {std::string("CARD\0 = CCN\n", 12), ":1:5: the rule is not UTF-8 text"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.message, message(c.text)) << c.text;
}

TEST_F(RulesTest, AByteOrderMarkIsNoPartOfTheFirstLine) {
    EXPECT_EQ("CARD", read("\xEF\xBB\xBF"
                           "card = AFF\n")
                          .rules.at(0)
                          .column);
    EXPECT_EQ(2u, read("\xEF\xBB\xBF# comment\ncard = AFF\n").rules.at(0).line);
    EXPECT_EQ(":1:1: an empty element", message("\xEF\xBB\xBF\"\" = AFF\n"));
}

TEST_F(RulesTest, AMissingFileIsNamed) {
    try {
        host::readRules("/nowhere/rules.txt");
        FAIL() << "read";
    } catch (const host::HostError& error) {
        EXPECT_STREQ("/nowhere/rules.txt: cannot be read", error.what());
    }
}

}  // namespace
