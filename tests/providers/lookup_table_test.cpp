// The lookup of LKP against a sorted list and the library's comparison.
#include <algorithm>
#include <random>
#include <set>

#include "masked_value.h"

namespace {

using LookupTableTest = MaskedValueTest;

struct Line {
    std::wstring value;
    std::string replacement;
};

bool comesBefore(const Line& a, const Line& b) {
    return StringWCaseCompare(a.value.c_str(), b.value.c_str()) < 0;
}

// The replacement that a binary search finds, or an error.
std::string findSorted(const std::vector<Line>& lines, const std::string& value) {
    const Line wanted = {text::toWide(value), ""};
    const auto line = std::lower_bound(lines.begin(), lines.end(), wanted, comesBefore);
    if (line == lines.end() || comesBefore(wanted, *line)) {
        return "error 1 SRCLEN=" + std::to_string(wanted.value.size());
    }
    return line->replacement;
}

TEST_F(LookupTableTest, AgreesWithASortedList) {
    // Letters whose other case is ASCII (the Kelvin sign), longer, or does not exist, and texts
    // that begin with each other.
    const std::wstring alphabet = L"aAbBkK\u212AsSßſiIİıéÉΣσςǅ山😀 -";
    std::mt19937 random(3);
    const auto randomText = [&] {
        std::wstring text(1 + random() % 4, L' ');
        for (wchar_t& c : text) c = alphabet[random() % alphabet.size()];
        return text;
    };
    std::vector<Line> lines;
    std::string file;
    while (lines.size() < 3000) {
        std::wstring value = randomText();
        if (value.front() == L' ' || value.back() == L' ') continue;
        const Line line = {value, "r" + std::to_string(lines.size())};
        const auto at = std::lower_bound(lines.begin(), lines.end(), line, comesBefore);
        if (at != lines.end() && !comesBefore(line, *at)) continue;
        lines.insert(at, line);
        file += text::toUtf8(value) + " = " + line.replacement + "\n";
    }
    writeFile("list.txt", file);
    rule("LKP, file=list.txt");
    int found = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::string value = text::toUtf8(randomText());
        const std::string expected = findSorted(lines, value);
        found += expected[0] == 'r';
        ASSERT_EQ(expected, mask(value)) << value;
    }
    EXPECT_GT(found, 2000);
    EXPECT_LT(found, 18000);
}

TEST_F(LookupTableTest, FindsTheLinesOfALargeFile) {
    constexpr int kLines = 100000;
    std::string file;
    for (int i = 0; i < kLines; ++i) {
        file += "Key " + std::to_string(i) + " = Value " + std::to_string(i) + "\n";
    }
    writeFile("list.txt", file);
    rule("LKP, file=list.txt");
    for (int i = 0; i < kLines; i += 97) {
        EXPECT_EQ("Value " + std::to_string(i), mask("KEY " + std::to_string(i)));
    }
    EXPECT_EQ("error 1 SRCLEN=10", mask("Key 100000"));
}

TEST_F(LookupTableTest, NamesTheSecondLineOfAValue) {
    std::string file;
    for (int i = 0; i < 1000; ++i) file += "Key " + std::to_string(i) + " = x\n";
    writeFile("list.txt", file + "kEY 500 = y\n");
    EXPECT_EQ("3 PATH=" + folder_ + "/list.txt ROW_COUNT=1001", ruleError("LKP, file=list.txt"));
}

}  // namespace
