// Shapes, and texts that are safe to show.
#include "shape.h"

#include <gtest/gtest.h>

#include <clocale>

namespace {

using tool::shapeOf;

TEST(Shape, ReplacesCharactersByTheirClass) {
    const struct {
        const char* text;
        const char* shape;
    } cases[] = {
        {"", ""},
        {"Anna 1984", "Aaaa 9999"},
        {"4556-7375 8689.9855", "9999-9999 9999.9999"},
        {"o'Neill@mail.example", "a'Aaaaa@aaaa.aaaaaaa"},
        {"Ærøskøbing", "Aaaaaaaaaa"},
        {"Ωμέγα", "Aaaaa"},
        {"Žižek", "Aaaaa"},
        {"北京", "aa"},
        {"\u0664\u0662", "aa"},  // digits of another script
        {"a\tb\nc\x7F\x1B[", "a?a?a??["},
        {"♥\u00A0\u202E\U0001F600", "????"},
        {"\xFF\x80z\xC3", "??a?"},
        {"\xED\xA0\x80", "???"},  // a surrogate
        {"\xC0\xAF", "??"},       // a character that is written too long
    };
    for (const auto& c : cases) EXPECT_EQ(c.shape, shapeOf(c.text)) << c.text;
    EXPECT_EQ("a?a", shapeOf(std::string("b\0c", 3)));
}

TEST(Shape, LongTextsAreCut) {
    EXPECT_EQ(std::string(40, 'a'), shapeOf(std::string(40, 'x')));
    EXPECT_EQ(std::string(40, 'a') + "...", shapeOf(std::string(41, 'x')));
    std::string letters;
    for (int i = 0; i < 50; ++i) letters += "É";
    EXPECT_EQ(std::string(40, 'A') + "...", shapeOf(letters));
}

TEST(Shape, TheShapeOfAShapeIsTheSame) {
    std::string all;
    for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
    for (size_t i = 0; i < all.size(); ++i) {
        const std::string shape = shapeOf(all.substr(i));
        EXPECT_EQ(shape, shapeOf(shape));
    }
}

TEST(Shape, DoesNotDependOnTheLocale) {
    ASSERT_STREQ("C", std::setlocale(LC_ALL, nullptr));
    EXPECT_EQ("Aa", shapeOf("Éé"));
    ASSERT_NE(nullptr, std::setlocale(LC_ALL, "C.UTF-8"));
    EXPECT_EQ("Aa", shapeOf("Éé"));
    std::setlocale(LC_ALL, "C");
}

TEST(Printable, HidesWhatATerminalWouldObey) {
    EXPECT_EQ("", tool::printable(""));
    EXPECT_EQ("Zoë, 北京 😀", tool::printable("Zoë, 北京 😀"));
    EXPECT_EQ("?[31mred?", tool::printable("\x1B[31mred\a"));
    EXPECT_EQ("??????", tool::printable("\r\n\t\x7F\u0085\u009B"));
    EXPECT_EQ("??????", tool::printable("\u202E\u2066\u200B\u2028\uFEFF\U000E0041"));
    EXPECT_EQ("??a", tool::printable("\xC3\xFF"
                                     "a"));
    EXPECT_EQ("a--b", tool::printable("a\1\xFF"
                                      "b",
                                      10, "-"));
}

TEST(Printable, CutsAtACharacter) {
    EXPECT_EQ("äöü", tool::printable("äöü", 3));
    EXPECT_EQ("äö...", tool::printable("äöü", 2));
    EXPECT_EQ("...", tool::printable("ä", 0));
}

TEST(Printable, CountsCharacters) {
    EXPECT_EQ(0u, tool::characterCount(""));
    EXPECT_EQ(4u, tool::characterCount("aä北😀"));
    EXPECT_EQ(2u, tool::characterCount("\xFF\xC3"));
}

TEST(UpperCase, OfEveryLengthOfCharacter) {
    EXPECT_EQ("AÄŁꞋ𐐀1ß", tool::upperCase("aäłꞌ𐐨1ß"));
    EXPECT_EQ("A\xFF", tool::upperCase("a\xFF"));
}

}  // namespace
