// CCN and NID: valid check digits, kept prefixes and layouts, and every error.
#include <set>

#include "masked_value.h"

namespace {

std::string digitsOf(const std::string& text) {
    std::string digits;
    for (const char c : text) {
        if (c >= '0' && c <= '9') digits += c;
    }
    return digits;
}

// The text with every digit as a 9.
std::string layoutOf(std::string text) {
    for (char& c : text) c = c >= '0' && c <= '9' ? '9' : c;
    return text;
}

// The card check by its definition: from the right, every second digit doubled, products' digits
// added up.
bool isValidCard(const std::string& digits) {
    int sum = 0;
    for (size_t i = 0; i < digits.size(); ++i) {
        const int digit = digits[digits.size() - 1 - i] - '0';
        const int product = i % 2 == 0 ? digit : digit * 2;
        sum += product / 10 + product % 10;
    }
    return sum % 10 == 0;
}

using CardTest = MaskedValueTest;
using IdentityTest = MaskedValueTest;

TEST_F(CardTest, KeepsPrefixAndLayoutAndHasAValidCheckDigit) {
    const char* const separators[] = {"", " ", "-"};
    for (const char* prefix : {"0", "4", "6", "8"}) {
        for (const char* type : {"auto", "wide"}) {
            rule("CCN, method=transpose, key=17, prefix=" + std::string(prefix) + ", type=" + type);
            const size_t kept = static_cast<size_t>(prefix[0] - '0');
            for (size_t count = 12; count <= 19; ++count) {
                for (const char* separator : separators) {
                    std::string number;
                    for (size_t i = 0; i < count; ++i) {
                        if (i > 0 && i % 4 == 0) number += separator;
                        number += static_cast<char>('0' + (i * 7 + count) % 10);
                    }
                    const std::string masked = mask(number);
                    EXPECT_EQ(layoutOf(number), layoutOf(masked));
                    EXPECT_TRUE(isValidCard(digitsOf(masked))) << masked;
                    EXPECT_EQ(digitsOf(number).substr(0, kept), digitsOf(masked).substr(0, kept));
                    EXPECT_NE(digitsOf(number).substr(kept), digitsOf(masked).substr(kept));
                    EXPECT_EQ(masked, mask(number));
                }
            }
        }
    }
}

TEST_F(CardTest, NarrowAndWideValuesMaskAlike) {
    rule("CCN, method=transpose, key=5");
    const std::string narrow = mask("4111-1111-1111-1111");
    rule("CCN, method=transpose, key=5, type=wide");
    EXPECT_EQ(narrow, mask("4111-1111-1111-1111"));
}

TEST_F(CardTest, KeyAndShiftMakeADifference) {
    std::set<std::string> masked;
    for (const char* text : {"key=0", "key=1", "key=22", "key=0, shift=1", "key=0, shift=9"}) {
        rule("CCN, method=transpose, " + std::string(text));
        masked.insert(mask("4000123456789017"));
    }
    EXPECT_EQ(5u, masked.size());
}

// The 12 digits after the prefix are one piece of the library's transposition, with a shift of 3
// and row 5 of its table.
TEST_F(CardTest, TransposesAsTheLibraryDoes) {
    rule("CCN, method=transpose, key=5, shift=3, prefix=6");
    EXPECT_EQ("999999408628640642", mask("9999991234567890120").substr(0, 18));
}

TEST_F(CardTest, ReportsWhatIsNotACardNumber) {
    rule("CCN, method=transpose, key=17");
    EXPECT_EQ("error 1 CHAR_POS=3 SRCLEN=16", mask("41x1111111111111"));
    EXPECT_EQ("error 1 CHAR_POS=16 SRCLEN=16", mask("411111111111111\u0661"));
    EXPECT_EQ("error 2 SRCLEN=11 EXPSRCLEN=12", mask("4111-1111-111"));
    EXPECT_EQ("error 2 SRCLEN=0 EXPSRCLEN=12", mask(" - "));
    EXPECT_EQ("error 3 SRCLEN=20 EXPSRCLEN=19", mask("41111111111111111111"));
    EXPECT_EQ("", mask(""));
    EXPECT_TRUE(isValidCard(digitsOf(mask("4111111111111112"))));
    rule("CCN, method=transpose, key=17, strict");
    EXPECT_EQ("error 4 CHAR_POS=16", mask("4111111111111112"));
    EXPECT_TRUE(isValidCard(digitsOf(mask("4111111111111111"))));
}

TEST_F(IdentityTest, MasksEveryRunOfDigitsAndKeepsTheRest) {
    rule("NID, method=transpose, key=29");
    for (size_t count = 1; count <= 30; ++count) {
        std::string digits;
        for (size_t i = 0; i < count; ++i) digits += static_cast<char>('0' + i % 10);
        const std::string number = "AB " + digits + "/x" + digits + "-";
        const std::string masked = mask(number);
        EXPECT_EQ(layoutOf(number), layoutOf(masked));
        EXPECT_NE(digits, masked.substr(3, count));
        EXPECT_EQ(masked.substr(3, count), masked.substr(count + 5, count));
        EXPECT_EQ(digitsOf(masked), digitsOf(mask("é" + number)));
    }
}

TEST_F(IdentityTest, DifferentRunsStayDifferent) {
    for (const int count : {1, 2, 3}) {
        rule("NID, method=transpose, key=4");
        std::set<std::string> masked;
        const int values = count == 1 ? 10 : count == 2 ? 100 : 1000;
        for (int i = 0; i < values; ++i) {
            masked.insert(mask(std::to_string(values + i).substr(1)));
        }
        EXPECT_EQ(static_cast<size_t>(values), masked.size());
    }
}

TEST_F(IdentityTest, CountriesHaveTheirNumbersOfDigits) {
    const struct {
        const char* country;
        const char* name;
        size_t digits;
    } cases[] = {{"france", "France", 15}, {"SPAIN", "Spain", 8}, {"Italy", "Italy", 7},
                 {"uk", "UK", 6},          {"us", "US", 9},       {"canada", "Canada", 9}};
    for (const auto& c : cases) {
        rule("NID, method=transpose, key=1, country=" + std::string(c.country));
        const std::string digits(c.digits, '7');
        EXPECT_EQ(layoutOf(digits), layoutOf(mask(digits)));
        for (const size_t count : {c.digits - 1, c.digits + 1}) {
            EXPECT_EQ("error 2 COUNTRY=" + std::string(c.name) + " SRCLEN=" +
                          std::to_string(count) + " EXPSRCLEN=" + std::to_string(c.digits),
                      mask(std::string(count, '7')));
        }
    }
    EXPECT_EQ("3 COUNTRY=Atlantis", ruleError("NID, method=transpose, key=1, country=Atlantis"));
}

TEST_F(IdentityTest, ReportsAValueWithoutDigits) {
    rule("NID, method=transpose, key=29");
    EXPECT_EQ("error 1 SRCLEN=3", mask("abc"));
    EXPECT_EQ("error 1 SRCLEN=1", mask("—"));
}

}  // namespace
