// AFF, LKP and HASH: reordering, lookup and pick, and every error.
#include <set>

#include "masked_value.h"

namespace {

using AffTest = MaskedValueTest;
using LookupTest = MaskedValueTest;
using PickTest = MaskedValueTest;

TEST_F(AffTest, ReordersBothWidthsAlike) {
    const struct {
        const char* method;
        const char* value;
        const char* masked;
    } cases[] = {
        {"shuffle", "abcd", "cdab"},   {"shuffle", "abcde", "cdabe"},
        {"shuffle", "äbcd", "cdäb"},   {"reverse", "abcd", "dcba"},
        {"reverse", "abcde", "edcba"}, {"reverse", "aé😀", "😀éa"},
        {"number", "1234", "4321"},    {"number", "1200", "0021"},
        {"number", "0012", "0021"},    {"number", "123456789012345678", "876543210987654321"},
    };
    for (const auto& c : cases) {
        for (const char* type : {"auto", "wide"}) {
            rule("AFF, method=" + std::string(c.method) + ", type=" + type);
            EXPECT_EQ(c.masked, mask(c.value));
        }
    }
    rule("COL, method=shuffle");
    EXPECT_EQ("cdab", mask("abcd"));
}

TEST_F(AffTest, ReordersEveryLength) {
    rule("AFF, method=reverse");
    std::string value = "x";
    for (int length = 2; length <= 300; ++length) {
        value += static_cast<char>('A' + length % 26);
        EXPECT_EQ(std::string(value.rbegin(), value.rend()), mask(value));
    }
}

TEST_F(AffTest, ReportsWhatItCannotDisguise) {
    rule("AFF, method=shuffle");
    EXPECT_EQ("error 1 SRCLEN=1", mask("a"));
    EXPECT_EQ("error 1 SRCLEN=4", mask("abab"));
    rule("AFF, method=reverse");
    EXPECT_EQ("error 1 SRCLEN=3", mask("ÄbÄ"));
    rule("AFF, method=number");
    EXPECT_EQ("error 3 CHAR_POS=3 SRCLEN=4", mask("12x4"));
    EXPECT_EQ("error 4 SRCLEN=19 EXPSRCLEN=18", mask("1234567890123456789"));
    EXPECT_EQ("error 1 SRCLEN=1", mask("0"));
}

TEST_F(LookupTest, FindsEveryLineWithoutRegardToCase) {
    std::string file = "# comment\n\n";
    for (int i = 0; i < 100; ++i) {
        file += "Key" + std::to_string(i * 37 % 100) + " =  Value " + std::to_string(i * 37 % 100) +
                "  \r\n";
    }
    writeFile("list.txt", file + "Ärger=Freude\nab=1\nabc=2\n");
    rule("LKP, \"file=list.txt\"");
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ("Value " + std::to_string(i), mask("kEY" + std::to_string(i)));
    }
    EXPECT_EQ("Freude", mask("ärGER"));
    EXPECT_EQ("1", mask("AB"));
    EXPECT_EQ("2", mask("ABC"));
    EXPECT_EQ("error 1 SRCLEN=1", mask("a"));
    EXPECT_EQ("error 1 SRCLEN=4", mask("abcd"));
    EXPECT_EQ("error 1 SRCLEN=6", mask("Key100"));
}

TEST_F(LookupTest, ReplacesNarrowValuesByAnyText) {
    writeFile("list.txt", "a = 山田😀\nb = " + std::string(1500, 'x') + "\n");
    rule("LKP, \"file=list.txt\"");
    EXPECT_EQ("山田😀", mask("a"));
    rule("LKP, file=list.txt, default=Ölstadt");
    EXPECT_EQ("Ölstadt", mask("other"));
    EXPECT_EQ("Ölstadt", mask("öther"));
    EXPECT_EQ(std::string(1500, 'x'), mask("b"));
}

TEST_F(LookupTest, RefusesReplacementsWithoutRoom) {
    writeFile("list.txt", "a = " + std::string(100000, 'x') + "\n");
    rule("LKP, \"file=list.txt\"");
    EXPECT_EQ(0u, mask("a").find("error 101 BUF_EXPECTED_LEN=100000 BUFFER_SIZE="));
}

TEST_F(LookupTest, RefusesBadFiles) {
    const auto error = [&](const std::string& text) {
        writeFile("list.txt", text);
        return ruleError("LKP, \"file=list.txt\"");
    };
    const std::string path = " PATH=" + folder_ + "/list.txt";
    EXPECT_EQ("2" + path + " ROW_COUNT=2", error("a = b\nno separator\n"));
    EXPECT_EQ("2" + path + " ROW_COUNT=1", error("= b\n"));
    EXPECT_EQ("2" + path + " ROW_COUNT=3", error("# x\n\na =  \n"));
    EXPECT_EQ("3" + path + " ROW_COUNT=3", error("a = b\nc = d\nA = e\n"));
    EXPECT_EQ("104" + path + " ROW_COUNT=2", error("a = b\nc = \xFF\n"));
    EXPECT_EQ("104" + path, error("# nothing\n"));
    const std::string missing = " ERRMSG=No such file or directory";
    EXPECT_EQ("104 PATH=" + folder_ + "/none.txt" + missing, ruleError("LKP, file=none.txt"));
    EXPECT_EQ("104 PATH=/none.txt" + missing, ruleError("LKP, file=/none.txt"));
    EXPECT_EQ("104 PATH=" + folder_ + "/. ERRMSG=Is a directory", ruleError("LKP, file=."));
    EXPECT_EQ("104 PATH=/dev/null ERRMSG=Not a regular file", ruleError("LKP, file=/dev/null"));
    // 1 GiB of zeros that take no room on the disk.
    writeFile("list.txt", "");
    ASSERT_EQ(0, truncate((folder_ + "/list.txt").c_str(), (1 << 30) + 1));
    EXPECT_EQ("104" + path + " ERRMSG=File too large", ruleError("LKP, file=list.txt"));
}

TEST_F(PickTest, PicksTheSameForTheSameValueWhateverItsCase) {
    rule("HASH, method=seed, seed=autumn, list=red;green;blue");
    std::set<std::string> picked;
    for (int i = 0; i < 60; ++i) {
        const std::string value = "Name " + std::to_string(i);
        const std::string pick = mask(value);
        picked.insert(pick);
        EXPECT_EQ(pick, mask("nAME " + std::to_string(i)));
    }
    EXPECT_EQ((std::set<std::string>{"red", "green", "blue"}), picked);
    const std::string wide = mask("Ängström");
    EXPECT_EQ(wide, mask("äNGSTRÖM"));
}

TEST_F(PickTest, NarrowAndWideValuesPickAlike) {
    for (int i = 0; i < 20; ++i) {
        const std::string value = "Name " + std::to_string(i);
        rule("HASH, method=seed, seed=autumn, list=a;b;c;d;e;f;g;h");
        const std::string narrow = mask(value);
        rule("HASH, method=seed, seed=autumn, list=a;b;c;d;e;f;g;h, type=wide");
        EXPECT_EQ(narrow, mask(value));
    }
}

TEST_F(PickTest, TheSeedMakesADifference) {
    int different = 0;
    for (int i = 0; i < 20; ++i) {
        rule("HASH, method=seed, seed=autumn, list=a;b;c;d;e;f;g;h");
        const std::string first = mask("Name " + std::to_string(i));
        rule("HASH, method=seed, seed=winter, list=a;b;c;d;e;f;g;h");
        different += first != mask("Name " + std::to_string(i)) ? 1 : 0;
    }
    EXPECT_GT(different, 10);
}

TEST_F(PickTest, ReadsFilesAndQuotedLists) {
    writeFile("names.txt", "# names\nÉdith\r\n");
    rule("HASH, method=seed, seed=autumn, \"file=names.txt\"");
    EXPECT_EQ("Édith", mask("x"));
    rule("HASH, method=seed, seed=autumn, \"list=\\\"Only; one\\\"\"");
    EXPECT_EQ("Only; one", mask("x"));
}

// An element of a rule between quotes.
std::string quoted(const std::string& text) {
    std::string element;
    for (const char c : text)
        element += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    return "\"" + element + "\"";
}

TEST_F(PickTest, ElementsOfAListKeepTheirCaseAndLoseBlanksAndEscapes) {
    const struct {
        const char* list;
        const char* element;
    } cases[] = {{"Straße", "Straße"},
                 {"  Two words  ", "Two words"},
                 {R"("Kept: ; ")", "Kept: ; "},
                 {R"(  "Closed" and dropped)", "Closed"},
                 {R"(A \"quote\" b)", "A \"quote\" b"},
                 {R"(a\\B)", "a\\B"},
                 {R"(\a)", "a"},
                 {R"("In\"side")", "In\"side"}};
    for (const auto& c : cases) {
        rule("HASH, method=seed, seed=autumn, " + quoted("list=" + std::string(c.list)));
        EXPECT_EQ(c.element, mask("x")) << c.list;
        rule("HASH, method=seed, seed=autumn, " +
             quoted("list=" + std::string(c.list) + ";" + c.list));
        EXPECT_EQ(c.element, mask("x")) << c.list;
        EXPECT_EQ(c.element, mask("y")) << c.list;
    }
    rule("HASH, method=seed, seed=autumn, " + quoted("list=\"Never closed "));
    EXPECT_EQ("\"Never closed", mask("x"));
}

TEST_F(PickTest, TheCaseOfTheSeedMakesNoDifference) {
    for (int i = 0; i < 20; ++i) {
        const std::string value = "Name " + std::to_string(i);
        rule("HASH, method=seed, seed=STRÄSSE, list=a;b;c;d;e;f;g;h");
        const std::string first = mask(value);
        rule("HASH, method=seed, seed=Sträße2, list=a;b;c;d;e;f;g;h");
        const std::string other = mask(value);
        rule("HASH, method=seed, seed=STRÄßE2, list=a;b;c;d;e;f;g;h");
        EXPECT_EQ(other, mask(value));
        rule("HASH, method=seed, seed=strässe, list=a;b;c;d;e;f;g;h");
        EXPECT_EQ(first, mask(value));
    }
}

TEST_F(PickTest, RefusesBadRules) {
    EXPECT_EQ("1 HASHSEED_LEN=3", ruleError("HASH, method=seed, seed=abc, list=a"));
    EXPECT_EQ("2 OPERAND_LIST=FILE, LIST", ruleError("HASH, method=seed, seed=abcd"));
    EXPECT_EQ("2 OPERAND_LIST=FILE, LIST",
              ruleError("HASH, method=seed, seed=abcd, list=a, file=b"));
    EXPECT_EQ("3 PARMKEY=LIST PARMVALUE=a;;b",
              ruleError("HASH, method=seed, seed=abcd, list=a;;b"));
    EXPECT_EQ("3 PARMKEY=LIST PARMVALUE=a;", ruleError("HASH, method=seed, seed=abcd, list=a;"));
    EXPECT_EQ("3 PARMKEY=LIST PARMVALUE=a\"b",
              ruleError("HASH, method=seed, seed=abcd, \"list=a\\\"b\""));
}

}  // namespace
