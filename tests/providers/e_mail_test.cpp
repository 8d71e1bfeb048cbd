// EML: user part, domain, prefix and case, and every error.
#include "masked_value.h"

namespace {

using EMailTest = MaskedValueTest;

TEST_F(EMailTest, MasksTheUserPartOnly) {
    rule("EML, method=transpose, key=4711");
    const std::string masked = mask("john.doe-99@post.example");
    EXPECT_EQ("@post.example", masked.substr(11));
    EXPECT_EQ('.', masked[4]);
    EXPECT_EQ('-', masked[8]);
    for (const size_t i : {0, 1, 2, 3, 5, 6, 7}) {
        EXPECT_TRUE(masked[i] >= 'a' && masked[i] <= 'z') << masked;
        EXPECT_NE("john.doe"[i], masked[i]);
    }
    EXPECT_TRUE(masked[9] >= '0' && masked[9] <= '9' && masked[9] != '9');
    EXPECT_EQ(masked, mask("john.doe-99@post.example"));
    rule("EML, method=transpose, key=4712");
    EXPECT_NE(masked, mask("john.doe-99@post.example"));
}

TEST_F(EMailTest, NormalisesTheCase) {
    rule("EML, method=transpose, key=1");
    EXPECT_EQ(mask("john@post.example"), mask("JOHN@Post.Example"));
    EXPECT_EQ(mask("grün@post.example"), mask("GRÜN@Post.Example"));
    rule("EML, method=transpose, key=1, case=upper, prefix=2");
    EXPECT_EQ("JO", mask("john@post.example").substr(0, 2));
    EXPECT_EQ("@POST.EXAMPLE", mask("john@post.example").substr(4));
    rule("EML, method=transpose, key=1, case=keep, prefix=2");
    EXPECT_EQ("Jo", mask("John@Post.Example").substr(0, 2));
    EXPECT_EQ("@Post.Example", mask("John@Post.Example").substr(4));
}

TEST_F(EMailTest, OperandsAreWordsInAnyCase) {
    rule("EML, method=transpose, key=1, case=UPPER, domain=a.example");
    EXPECT_EQ("@A.EXAMPLE", mask("john@b.example").substr(4));
    rule("EML, method=transpose, key=1, case=Keep, domain=A.example");
    EXPECT_EQ("@A.example", mask("john@b.example").substr(4));
    rule("EML, method=transpose, key=1, domain=A.example");
    EXPECT_EQ("@a.example", mask("john@b.example").substr(4));
}

// Each position is changed in its own way, also after the first ones, which are prepared.
TEST_F(EMailTest, MasksUserPartsOfEveryLength) {
    rule("EML, method=transpose, key=77");
    const std::string whole = mask(std::string(200, 'a') + "@post.example");
    for (size_t length = 1; length < 200; ++length) {
        EXPECT_EQ(whole.substr(0, length) + "@post.example",
                  mask(std::string(length, 'a') + "@post.example"));
    }
}

TEST_F(EMailTest, KeepsAPrefixAndReplacesTheDomain) {
    rule("EML, method=transpose, key=1, prefix=3, domain=A.Much-Longer.Domain.Example");
    const std::string masked = mask("john@b.example");
    EXPECT_EQ("joh", masked.substr(0, 3));
    EXPECT_NE('n', masked[3]);
    EXPECT_EQ("@a.much-longer.domain.example", masked.substr(4));
    EXPECT_EQ("@a.much-longer.domain.example", mask("jöhn@b.example").substr(5));
}

TEST_F(EMailTest, LettersBeyondAsciiBecomeAsciiLetters) {
    rule("EML, method=transpose, key=1");
    const std::string masked = mask("ü山@post.example");
    ASSERT_EQ("@post.example", masked.substr(2));
    for (const size_t i : {0, 1}) EXPECT_TRUE(masked[i] >= 'a' && masked[i] <= 'z');
}

TEST_F(EMailTest, ReportsWhatIsNotAnAddress) {
    rule("EML, method=transpose, key=1, prefix=2");
    EXPECT_EQ("error 1 SRCLEN=4", mask("john"));
    EXPECT_EQ("error 2 CHAR_POS=4", mask("a@b@c"));
    EXPECT_EQ("error 2 CHAR_POS=2", mask("@@"));
    EXPECT_EQ("error 2 CHAR_POS=3", mask("ü@@"));
    EXPECT_EQ("error 3 USERPRFX_LEN=0", mask("@post.example"));
    EXPECT_EQ("error 4 DOMAIN_LEN=0", mask("john@"));
    EXPECT_EQ("error 5 USERPRFX_LEN=2 SRCLEN=2", mask("jo@post.example"));
    EXPECT_EQ("", mask(""));
}

TEST_F(EMailTest, RefusesBadRules) {
    EXPECT_EQ("6 PARMKEY=CASE PARMVALUE=odd", ruleError("EML, method=transpose, key=1, case=odd"));
    EXPECT_EQ("6 PARMKEY=DOMAIN PARMVALUE=a@b",
              ruleError("EML, method=transpose, key=1, domain=a@b"));
    EXPECT_EQ("6 PARMKEY=DOMAIN PARMVALUE=grün",
              ruleError("EML, method=transpose, key=1, \"domain=grün\""));
}

}  // namespace
