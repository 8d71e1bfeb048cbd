// Case conversion against the system's, character by character, and comparison without regard to
// case against the slow way.
#include <ctype.h>
#include <wctype.h>

#include "korv/text.h"
#include "reference/text.h"
#include "support/block.h"
#include "support/expect.h"
#include "support/input.h"
#include "support/locales.h"

namespace {

using fuzz::Block;
using fuzz::Input;
using fuzz::terminated;

// The shift is up to a whole block of 16 bytes.
template <class Char>
std::size_t chooseShift(Input& input) {
    return input.choice(16 / sizeof(Char));
}

template <class Char, class Convert, class One>
void convert(Input& input, Convert convertText, One convertOne) {
    const std::size_t shift = chooseShift<Char>(input);
    const auto text = input.text<Char>();
    auto expected = text;
    for (Char& c : expected) c = static_cast<Char>(convertOne(c));
    Block<Char> block(terminated(text), shift);
    FUZZ_EXPECT(convertText(block.data()) == block.data());
    // A converted character may be a zero only where the system says so: compared in full.
    FUZZ_EXPECT(block.holds(terminated(expected)));
}

// One after the other, because each call may remember what the one before has compared.
void compare(Input& input) {
    reference::Comparison whole, counted;
    FUZZ_EXPECT(StringWCaseCompare(L"k", L"k") == whole.compare(L"k", L"k"));
    FUZZ_EXPECT(StringWNCaseCompare(L"k", L"k", 1) == counted.compareCounted(L"k", L"k", 1));
    while (!input.empty()) {
        const bool limited = input.choice(2) == 1;
        const auto count = limited ? input.number<int32_t>() : 0;
        const std::size_t firstShift = chooseShift<wchar_t>(input);
        const std::size_t secondShift = chooseShift<wchar_t>(input);
        Block<wchar_t> first(terminated(input.text<wchar_t>()), firstShift);
        Block<wchar_t> second(terminated(input.text<wchar_t>()), secondShift);
        if (limited) {
            FUZZ_EXPECT(StringWNCaseCompare(first.data(), second.data(), count) ==
                        counted.compareCounted(first.data(), second.data(), count));
        } else {
            FUZZ_EXPECT(StringWCaseCompare(first.data(), second.data()) ==
                        whole.compare(first.data(), second.data()));
        }
    }
}

void asciiLetters(Input& input) {
    const auto code = input.number<int32_t>();
    const bool lower = code >= 'a' && code <= 'z';
    const bool upper = code >= 'A' && code <= 'Z';
    FUZZ_EXPECT(toportwupper(code) == (lower ? code - 'a' + 'A' : code));
    FUZZ_EXPECT(toportwlower(code) == (upper ? code - 'A' + 'a' : code));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    Input input(data, size);
    fuzz::chooseLocale(input);
    switch (input.choice(6)) {
        case 0:
            convert<char>(input, KORV_StrToUpper,
                          [](char c) { return toupper(static_cast<signed char>(c)); });
            break;
        case 1:
            convert<char>(input, KORV_StrToLower,
                          [](char c) { return tolower(static_cast<signed char>(c)); });
            break;
        case 2:
            convert<wchar_t>(input, KORV_StrToWUpper,
                             [](wchar_t c) { return towupper(static_cast<wint_t>(c)); });
            break;
        case 3:
            convert<wchar_t>(input, KORV_StrToWLower,
                             [](wchar_t c) { return towlower(static_cast<wint_t>(c)); });
            break;
        case 4:
            compare(input);
            break;
        default:
            asciiLetters(input);
    }
    return 0;
}
