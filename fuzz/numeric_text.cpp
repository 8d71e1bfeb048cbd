// Digit fields of both widths, written and read, against digits one by one.
#include "korv/numeric.h"
#include "reference/numeric.h"
#include "support/block.h"
#include "support/expect.h"
#include "support/input.h"

namespace {

using fuzz::Block;
using fuzz::Input;

// A width or a count of digits: mostly a small one, or one that reaches past 256 blanks.
int16_t chooseWidth(Input& input) {
    const unsigned byte = input.byte();
    return static_cast<int16_t>((byte < 0xC0 ? byte % 32 : input.number<uint16_t>() % 600) - 4);
}

template <class Char>
void write(Input& input, int32_t (*writer)(int32_t, int16_t, Char*), bool terminates) {
    const auto value = input.number<int32_t>();
    const int16_t width = chooseWidth(input);
    std::basic_string<Char> expected(static_cast<std::size_t>(std::max<int>(width, 0)), Char{});
    const int32_t rest = reference::writeField(value, width, expected.data());
    if (terminates && width >= 0) expected += Char{};
    Block<Char> field(expected.size(), input.choice(16 / sizeof(Char)));
    FUZZ_EXPECT(writer(value, width, field.data()) == (rest == 0 ? 0 : -1));
    FUZZ_EXPECT(field.holds(expected));
}

// A field of what the input says, then blanks, then the rest of the input.
template <class Char>
void read(Input& input, int32_t (*reader)(const Char*, int16_t, int16_t, int32_t*)) {
    const int16_t digits = chooseWidth(input), width = chooseWidth(input);
    const std::size_t shift = input.choice(16 / sizeof(Char));
    const int blanks = std::max<int>(chooseWidth(input), 0);
    std::basic_string<Char> text = input.text<Char>();
    text.append(static_cast<std::size_t>(blanks), Char{' '});
    while (!input.empty()) text += input.character<Char>();
    // A negative count of digits makes the tail longer, of which no more than 257 are compared.
    const int size = digits < 0 ? std::min(width - digits, 257) : std::max(digits, width);
    text.resize(static_cast<std::size_t>(std::max(size, 0)), Char{' '});

    Block<Char> field(text, shift);
    constexpr int32_t untouched = 0x5A5AA5A5;
    int32_t expected = untouched, value = untouched;
    const bool isNumber = reference::readField(field.data(), digits, width, expected);
    FUZZ_EXPECT(reader(field.data(), digits, width, &value) == (isNumber ? 0 : -1));
    FUZZ_EXPECT(value == expected);
    FUZZ_EXPECT(field.holds(text));
}

// What has been written is read again.
template <class Char>
void thereAndBack(Input& input, int32_t (*writer)(int32_t, int16_t, Char*),
                  int32_t (*reader)(const Char*, int16_t, int16_t, int32_t*)) {
    const int32_t number = input.number<int32_t>() & INT32_MAX;
    const auto width = static_cast<int16_t>(10 + input.choice(40));
    Block<Char> field(static_cast<std::size_t>(width) + 1);
    FUZZ_EXPECT(writer(number, width, field.data()) == 0);
    int32_t value = ~number;
    FUZZ_EXPECT(reader(field.data(), width, width, &value) == 0);
    FUZZ_EXPECT(value == number);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    Input input(data, size);
    switch (input.choice(9)) {
        case 0:
            write<char>(input, PXLongToNum, false);
            break;
        case 1:
            write<char>(input, PXIntToNum, true);
            break;
        case 2:
            write<wchar_t>(input, PXLongToNumW, true);
            break;
        case 3:
            write<wchar_t>(input, PXIntToNumW, true);
            break;
        case 4:
            read<char>(input, PXNumToLong);
            break;
        case 5:
            read<char>(input, KORVCharNumToInt);
            break;
        case 6:
            read<wchar_t>(input, PXNumToLongW);
            break;
        case 7:
            thereAndBack<char>(input, PXIntToNum, PXNumToLong);
            break;
        default:
            thereAndBack<wchar_t>(input, PXIntToNumW, PXNumToLongW);
    }
    return 0;
}
