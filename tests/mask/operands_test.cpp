// Operands against their descriptions, as providers get them, and file names in them.
#include <unistd.h>

#include "c_interface.h"
#include "folder.h"

namespace {

using OperandsTest = EngineTest;

// What the provider ECHO has got of a rule, or what is wrong with the rule.
std::string echo(const std::string& operands,
                 const std::optional<std::string>& file = std::nullopt) {
    Setting setting;
    setting.rulesFile = file;
    Mask mask("A = ECHO" + operands, setting);
    if (mask.opened != KORV_MASK_SUCCESS) return mask.text();
    return mask.batch({"value"}).at(0).value_or("NULL");
}

std::string openingError(const std::string& rule) {
    const Mask mask("A = " + rule);
    EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened) << rule;
    return mask.text();
}

TEST_F(OperandsTest, EveryKindArrives) {
    EXPECT_EQ("", echo(""));
    EXPECT_EQ("NUMBER=-3;", echo(", number=-3"));
    EXPECT_EQ("FLAG;", echo(", Flag"));
    EXPECT_EQ("FLAG;WIDE=w;NUMBER=5;NARROW=n;", echo(", flag, WIDE=w, number=+5, narrow = n"));
}

TEST_F(OperandsTest, ValuesKeepTheirCase) {
    EXPECT_EQ("NARROW=Other;WIDE=Straße;", echo(", narrow=Other, wide=Straße"));
    EXPECT_EQ("NARROW=Größe;", echo(", narrow=Größe"));
    EXPECT_EQ("NARROW=a, \"b\";", echo(", \"narrow=a, \\\"b\\\"\""));
}

TEST_F(OperandsTest, NumbersHaveBounds) {
    const std::string bounds = "rules:1:11: operand NUMBER must be a number from -5 to 5\n";
    for (const char* number : {"6", "-6", "x", "1x", "0000000001", "+", "-", "1.5"}) {
        EXPECT_EQ(bounds, echo(", number=" + std::string(number))) << number;
    }
    EXPECT_EQ("NUMBER=5;", echo(", number=000000005"));
    EXPECT_EQ("NUMBER=-5;", echo(", number=-5"));
}

TEST_F(OperandsTest, OperandsAreChecked) {
    EXPECT_EQ("rules:1:5: LKP needs the operand FILE\n", openingError("LKP"));
    const std::string ccn = "CCN, method=transpose, ";
    EXPECT_EQ("rules:1:28: CCN has no operand KEYS\n", openingError(ccn + "keys=1, key=1"));
    EXPECT_EQ("rules:1:35: operand STRICT takes no value\n", openingError(ccn + "key=1, strict=1"));
    EXPECT_EQ("rules:1:28: operand KEY needs a value\n", openingError(ccn + "key"));
    EXPECT_EQ("rules:1:35: operand SHIFT must be a number from 1 to 9\n",
              openingError(ccn + "key=1, shift=0"));
    EXPECT_EQ(
        "rules:1:5: provider CCN does not accept this rule: CCN error 107, the method needs this "
        "operand: KORV_TOKID_COLNAME=A KORV_TOKID_PARMKEY=KEY\n",
        openingError("CCN, method=transpose"));
}

// The rules' own operands are not the provider's.
TEST_F(OperandsTest, OperandsOfEveryRuleDoNotReachTheProvider) {
    EXPECT_EQ("FLAG;", echo(", type=wide, flag, on-error=null, unchanged=error"));
    EXPECT_EQ("", echo(", on-error=const, value=x"));
}

TEST_F(OperandsTest, FileNamesBeginInTheFolderOfTheRules) {
    EXPECT_EQ("PATH=a.txt;", echo(", path=a.txt"));
    EXPECT_EQ("PATH=a.txt;", echo(", path=a.txt", "rules.txt"));
    EXPECT_EQ("PATH=sub/folder/a.txt;", echo(", path=a.txt", "sub/folder/rules.txt"));
    EXPECT_EQ("PATH=/sub/b/A.txt;", echo(", path=b/A.txt", "/sub/rules.txt"));
    EXPECT_EQ("PATH=/b/a.txt;", echo(", path=/b/a.txt", "/sub/rules.txt"));
    EXPECT_EQ("NARROW=a.txt;", echo(", narrow=a.txt", "/sub/rules.txt"));
}

TEST_F(OperandsTest, ALookupFileLiesBesideTheRules) {
    const Folder folder;
    folder.write("names.txt", "Smith = Miller\n");
    Setting setting;
    setting.rulesFile = folder.write("rules.txt", "A = LKP, file=names.txt, default=Other\n");
    Mask mask(std::nullopt, setting);
    ASSERT_EQ(KORV_MASK_SUCCESS, mask.opened) << mask.text();
    EXPECT_EQ((Values{"Miller", "Other"}), mask.batch({"Smith", "Jones"}));
}

TEST_F(OperandsTest, AMissingLookupFileIsAFaultOfTheRules) {
    const Folder folder;
    Setting setting;
    setting.rulesFile = folder.path() + "/rules.txt";
    const Mask mask("A = LKP, file=names.txt", setting);
    EXPECT_EQ(KORV_MASK_BAD_RULES, mask.opened);
    EXPECT_EQ(1u, mask.records().size());
    EXPECT_TRUE(contains(mask.text(), folder.path() + "/names.txt")) << mask.text();
}

}  // namespace
