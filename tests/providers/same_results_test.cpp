// Results that have been the same since the first release, on every word size.
#include "masked_value.h"

namespace {

using SameResultsTest = MaskedValueTest;

TEST_F(SameResultsTest, OfEveryProvider) {
    const struct {
        const char* rule;
        const char* value;
        const char* masked;
    } cases[] = {
        {"CCN, METHOD=TRANSPOSE, KEY=17", "4556-7375-8689-9855", "4556-7390-3273-8216"},
        {"CCN, METHOD=TRANSPOSE, KEY=17", "4556737586899855", "4556739032738216"},
        {"CCN, METHOD=TRANSPOSE, KEY=999999999, SHIFT=9, PREFIX=0", "3714 496353 98431",
         "6272 913788 50257"},
        {"CCN, METHOD=TRANSPOSE, KEY=4, PREFIX=8, STRICT", "6011111111111117", "6011111175497659"},
        {"NID, METHOD=TRANSPOSE, KEY=29", "078-05-1120", "115-84-5647"},
        {"NID, METHOD=TRANSPOSE, KEY=29", "+33 (0)1 42 68 53 00", "+67 (3)4 58 10 69 34"},
        {"NID, METHOD=TRANSPOSE, KEY=5, SHIFT=1, COUNTRY=FRANCE", "1 85 05 78 006 084 36",
         "2 60 62 99 723 503 75"},
        {"NID, METHOD=TRANSPOSE, KEY=29", "Nº 123456789012345", "Nº 604848262609717"},
        {"EML, METHOD=TRANSPOSE, KEY=4711", "John.Doe-99@Post.Example", "mnyo.bes-67@post.example"},
        {"EML, METHOD=TRANSPOSE, KEY=4711, PREFIX=1, DOMAIN=MASKED.EXAMPLE",
         "jürgen.groß@post.example", "jxihal.uohy@masked.example"},
        {"EML, METHOD=TRANSPOSE, KEY=999999999, CASE=UPPER",
         "a_very.long+user%part-of=more/"
         "than~sixty{four}characters.0123456789.abcdefghijklmnopqrstuvwxyz@x.example",
         "K_OCGC.SJVP+BWMY%YDAL-KQ=ZACC/"
         "JOXS~XKEYG{TADL}QIOLFVBJLV.2054819002.FTHSTSDUAOVUHKKGJXJBTFSJPR@X.EXAMPLE"},
        {"EML, METHOD=TRANSPOSE, KEY=0, CASE=KEEP, PREFIX=2", "Ab山田.Z9@X", "Aboe.A3@X"},
        {"AGE, METHOD=MOVE, YEARS=-1, DAYS=45, LIMIT=400", "1980-02-29", "1979-04-14"},
        {"AGE, METHOD=MOVE, MONTHS=1, FORMAT=DD.MM.YYYY", "31.01.1999", "28.02.1999"},
        {"AFF, METHOD=SHUFFLE", "shuffled", "fledshuf"},
        {"AFF, METHOD=REVERSE", "aé😀", "😀éa"},
        {"AFF, METHOD=NUMBER", "00123400", "00004321"},
        {"HASH, METHOD=SEED, SEED=AUTUMN, LIST=RED;GREEN;BLUE;WHITE;BLACK", "Ada", "BLUE"},
        {"HASH, METHOD=SEED, SEED=AUTUMN, LIST=RED;GREEN;BLUE;WHITE;BLACK", "Grace Hopper", "BLUE"},
        {"HASH, METHOD=SEED, SEED=AUTUMN, LIST=RED;GREEN;BLUE;WHITE;BLACK", "Ångström", "RED"},
        {"HASH, METHOD=SEED, SEED=AUTUMN, LIST=RED;GREEN;BLUE;WHITE;BLACK", "山田", "WHITE"},
        {"HASH, METHOD=SEED, SEED=STRÄSSE, LIST=RED;GREEN;BLUE;WHITE;BLACK", "😀", "GREEN"},
    };
    for (const auto& c : cases) {
        rule(c.rule);
        EXPECT_EQ(c.masked, mask(c.value)) << c.rule;
    }
}

TEST_F(SameResultsTest, WhereOperandsKeepTheirCase) {
    const struct {
        const char* capitals;
        const char* asWritten;
        const char* value;
    } cases[] = {
        {"EML, method=transpose, key=4711, CASE=UPPER",
         "EML, method=transpose, key=4711, case=upper", "john.doe@post.example"},
        {"EML, method=transpose, key=4711, DOMAIN=A.EXAMPLE",
         "EML, method=transpose, key=4711, domain=a.Example", "john@post.example"},
        {"NID, method=transpose, key=29, COUNTRY=US", "NID, method=transpose, key=29, country=us",
         "078-05-1120"},
        {"AFF, METHOD=NUMBER", "AFF, method=number", "001234"},
        {"AGE, method=move, days=1, FORMAT=DD.MM.YYYY",
         "AGE, method=move, days=1, format=dd.mm.yyyy", "31.12.1999"},
        {"HASH, METHOD=SEED, SEED=AUTUMN, list=a;b;c;d;e",
         "HASH, method=seed, seed=autumn, list=a;b;c;d;e", "Ada"},
    };
    for (const auto& c : cases) {
        rule(c.capitals);
        const std::string masked = mask(c.value);
        EXPECT_FALSE(masked.starts_with("error")) << masked;
        rule(c.asWritten);
        EXPECT_EQ(masked, mask(c.value)) << c.asWritten;
    }
}

}  // namespace
