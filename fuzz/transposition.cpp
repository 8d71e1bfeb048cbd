// Transposition, permutations, reversal and shuffling, against the slow way.
#include <cstdlib>

#include "korv/numeric.h"
#include "reference/numeric.h"
#include "support/block.h"
#include "support/expect.h"
#include "support/input.h"

namespace {

using fuzz::Block;
using fuzz::Input;
using fuzz::terminated;

template <class Char>
void transpose(Input& input, int32_t (*function)(const Char*, Char*, int16_t, int32_t, int16_t)) {
    const auto key = input.number<int32_t>();
    const auto shift = input.number<int16_t>();
    const bool inPlace = input.choice(2) == 1;
    const std::size_t alignment = input.choice(4);
    std::basic_string<Char> number;
    while (!input.empty() && number.size() < 14) number += input.character<Char>();

    Block<Char> source(number, alignment);
    Block<Char> target(number.size(), alignment);
    if (inPlace) std::copy(number.begin(), number.end(), target.data());
    std::basic_string<Char> expected(target.data(), number.size());
    const int32_t status = reference::transpose(number.data(), expected.data(),
                                                static_cast<int16_t>(number.size()), key, shift);
    FUZZ_EXPECT(function(inPlace ? target.data() : source.data(), target.data(),
                         static_cast<int16_t>(number.size()), key, shift) == status);
    FUZZ_EXPECT(target.holds(expected));
    FUZZ_EXPECT(source.holds(number));
    // No buffer is needed for a length that is refused.
    const auto refused = static_cast<int16_t>(shift < 0 ? shift : 13 + shift % 1000);
    FUZZ_EXPECT(function(nullptr, nullptr, refused, key, shift) == -1);
}

void permutation(Input& input) {
    const auto key = input.number<int32_t>();
    const auto count = static_cast<int32_t>(input.choice(24)) - 4;
    const bool valid = count >= 1 && count <= 16;
    Block<int16_t> output(valid ? static_cast<std::size_t>(count) : 0);
    PXGetPermutation(key, count, output.data());
    if (!valid) return;
    std::vector<int16_t> expected(static_cast<std::size_t>(count));
    reference::permute(key, count, expected.data());
    FUZZ_EXPECT(output.holds(expected));
}

void reverseBytes(Input& input) {
    const bool negative = input.choice(2) == 1;
    const std::size_t shift = input.choice(16);
    const std::vector<char> bytes = input.units<char>();
    std::vector<char> expected = bytes;
    auto length = static_cast<int32_t>(bytes.size());
    if (negative) {
        length = -length;
    } else {
        for (std::size_t i = 0; i < bytes.size(); ++i) expected[i] = bytes[bytes.size() - 1 - i];
    }
    Block<char> block(bytes, shift);
    FUZZ_EXPECT(KORVRevString(block.data(), length) == block.data());
    FUZZ_EXPECT(block.holds(expected));
}

void rearrangeText(Input& input, int32_t (*rearrange)(wchar_t*), bool shuffled) {
    const std::size_t shift = input.choice(4);
    const std::wstring text = input.text<wchar_t>();
    const std::size_t half = text.size() / 2;
    const std::wstring expected =
        shuffled ? text.substr(half, half) + text.substr(0, half) + text.substr(2 * half)
                 : std::wstring(text.rbegin(), text.rend());
    Block<wchar_t> block(terminated(text), shift);
    FUZZ_EXPECT(rearrange(block.data()) == 0);
    FUZZ_EXPECT(block.holds(terminated(expected)));
    FUZZ_EXPECT(rearrange(block.data()) == 0);
    FUZZ_EXPECT(block.holds(terminated(text)));
}

void reverseNumber(Input& input) {
    const auto number = input.number<uint64_t>();
    Block<uint64_t> value(1);
    uint64_t expected = value[0] = number;
    reference::reverse(&expected);
    FUZZ_EXPECT(KORVReverseNum(value.data()) == 0);
    FUZZ_EXPECT(value[0] == expected);
}

void randomValue(Input& input) {
    const auto range = input.number<int32_t>();
    const int64_t limit = std::llabs(range);
    for (int i = 0; i < 4; ++i) {
        const int32_t value = KORVRandomValue(range, input.byte());
        FUZZ_EXPECT(value >= 0 && (range == 0 ? value == 0 : value < limit));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    Input input(data, size);
    switch (input.choice(8)) {
        case 0:
            transpose<char>(input, PXTransposeNum);
            break;
        case 1:
            transpose<wchar_t>(input, PXTransposeNumW);
            break;
        case 2:
            permutation(input);
            break;
        case 3:
            reverseBytes(input);
            break;
        case 4:
            rearrangeText(input, KORVRevStringW, false);
            break;
        case 5:
            rearrangeText(input, KORVShuffle, true);
            break;
        case 6:
            reverseNumber(input);
            break;
        default:
            randomValue(input);
    }
    return 0;
}
