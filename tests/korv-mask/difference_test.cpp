// The rows that --diff shows: clear values hidden, lines that fit, no control characters.
#include "difference.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "shape.h"

namespace {

using tool::DifferenceRow;

std::string shown(const std::vector<std::string>& names, const std::vector<DifferenceRow>& rows,
                  bool showClear = false) {
    char* text = nullptr;
    size_t length = 0;
    std::FILE* stream = open_memstream(&text, &length);
    printDifference(stream, names, rows, showClear);
    std::fclose(stream);
    const std::string result(text, length);
    std::free(text);
    return result;
}

const std::vector<std::string> kNames = {"ID", "CARD", "NAME", "NOTE", "CITY"};
const DifferenceRow kRow = {17,
                            {"100001", "4556 7375 8689 9855", "Zoë", "", "Brünn"},
                            {"100001", "4556 7312 4907 4411", std::nullopt, "", ""}};

TEST(Difference, ShowsShapesAndMaskedTexts) {
    EXPECT_EQ(
        "Row 17\n"
        "  ID    999999              (unchanged)\n"
        "  CARD  9999 9999 9999 9999 -> 4556 7312 4907 4411\n"
        "  NAME  Aaa                 (left out)\n"
        "  NOTE  (empty)             (unchanged)\n"
        "  CITY  Aaaaa               -> (empty)\n",
        shown(kNames, {kRow}));
}

TEST(Difference, ShowsClearTextsOnRequestOnly) {
    for (const char* clear : {"100001", "4556 7375", "Zo", "Br"}) {
        EXPECT_EQ(std::string::npos, shown(kNames, {kRow}).find(clear));
        EXPECT_NE(std::string::npos, shown(kNames, {kRow}, true).find(clear));
    }
}

TEST(Difference, RowsAreBlocks) {
    const std::string text = shown({"A"}, {{1, {"x"}, {"y"}}, {2, {"x"}, {"x"}}});
    EXPECT_EQ("Row 1\n  A  a -> y\n\nRow 2\n  A  a (unchanged)\n", text);
    EXPECT_EQ("", shown({"A"}, {}));
}

TEST(Difference, ControlCharactersAreNotPrinted) {
    const std::string hostile = "\x1B]0;x\a\r\n\t\u202E\u009B\xFF";
    for (const bool showClear : {false, true}) {
        const std::string text =
            shown({hostile, "B"}, {{1, {hostile, hostile}, {hostile + "1", hostile}}}, showClear);
        EXPECT_EQ(3, std::count(text.begin(), text.end(), '\n'));
        std::string lines = text;
        std::erase(lines, '\n');
        EXPECT_EQ(lines, tool::printable(lines));
        EXPECT_NE(text.npos, text.find("-> ?]0;x???????1"));
    }
}

TEST(Difference, LinesFitATerminal) {
    std::vector<std::string> names, before;
    std::vector<std::optional<std::string>> after;
    for (size_t i = 0; i < 60; ++i) {
        names.push_back(std::string(i, 'N'));
        before.push_back(std::string(i % 47, 'b'));
        after.push_back(std::string(i * 7 % 61, 'a'));
    }
    for (const bool showClear : {false, true}) {
        std::istringstream text(shown(names, {{1, before, after}}, showClear));
        for (std::string line; std::getline(text, line);) {
            EXPECT_LE(line.size(), 80u) << line;
            EXPECT_FALSE(line.ends_with(' ')) << line;
        }
    }
}

TEST(Difference, ALongTextHasALineOfItsOwn) {
    const std::string text =
        shown({"A", "B", "C"},
              {{1, {std::string(40, 'x'), "xy", "xyz"}, {std::string(40, 'm'), "m", "m"}}});
    EXPECT_EQ("Row 1\n  A  " + std::string(40, 'a') + "\n     -> " + std::string(40, 'm') +
                  "\n  B  aa  -> m\n  C  aaa -> m\n",
              text);
}

}  // namespace
