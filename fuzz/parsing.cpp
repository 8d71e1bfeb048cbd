// Elements, values of keys, trimmed texts, column names and provider names, against the slow way.
#include <strings.h>
#include <wctype.h>

#include <iterator>

#include "korv/korv.h"
#include "reference/key_value.h"
#include "reference/text.h"
#include "support/block.h"
#include "support/expect.h"
#include "support/input.h"
#include "support/locales.h"

namespace {

using fuzz::Block;
using fuzz::Input;
using fuzz::terminated;

constexpr uint32_t kUntouched = 0xDEADBEEF;

// All elements of a list, one after the other.
void elements(Input& input) {
    const wchar_t delimiter = input.character<wchar_t>();
    const std::size_t shift = input.choice(4);
    const std::wstring list = input.text<wchar_t>();
    Block<wchar_t> source(terminated(list), shift);
    for (int32_t start = 0; start >= 0;) {
        const reference::Element expected =
            reference::elementOf(list, delimiter, static_cast<std::size_t>(start));
        Block<wchar_t> output(expected.written, shift);
        uint32_t length = kUntouched;
        const int32_t next = KORV_GetNextElement(source.data(), output.data(), &length, delimiter,
                                                 0, static_cast<uint32_t>(start));
        FUZZ_EXPECT(next == expected.result);
        FUZZ_EXPECT(next < 0 || next > start);
        FUZZ_EXPECT(length == expected.text.size());
        FUZZ_EXPECT(std::equal(expected.text.begin(), expected.text.end(), output.data()));
        if (expected.terminated) FUZZ_EXPECT(output[length] == 0);
        start = next;
    }
    FUZZ_EXPECT(source.holds(terminated(list)));
}

void keyValue(Input& input) {
    const char separator = input.character<char>();
    const bool withLength = input.choice(2) == 0;
    const auto maxCount = input.number<int32_t>();
    const std::string text = input.text<char>();
    const reference::Value expected = reference::keyValue(text, maxCount, separator);
    Block<char> source(terminated(text));
    Block<char> output(expected.result == 0 ? expected.copied + 1 : 0);
    uint32_t length = kUntouched;
    const int32_t result = GetKeyValue(source.data(), output.data(), maxCount,
                                       withLength ? &length : nullptr, separator);
    FUZZ_EXPECT(result == expected.result);
    if (result == 0) FUZZ_EXPECT(expected.text == output.data());
    FUZZ_EXPECT(length == (result == 0 && withLength ? expected.copied : kUntouched));
    FUZZ_EXPECT(source.holds(terminated(text)));
}

void trim(Input& input) {
    const uint8_t mode = static_cast<uint8_t>(input.choice(3));
    const std::size_t shift = input.choice(4);
    const std::wstring delimiters = input.text<wchar_t>();
    const std::wstring text = input.text<wchar_t>();
    std::vector<wchar_t> left(text.c_str(), text.c_str() + text.size() + 1);
    std::vector<wchar_t> collected(left.size());
    uint32_t expectedLength = kUntouched;
    reference::trim(left.data(), &expectedLength, delimiters.c_str(), collected.data(), mode);

    Block<wchar_t> source(terminated(text), shift);
    Block<wchar_t> set(terminated(delimiters));
    Block<wchar_t> work(text.size() + 1, shift);
    uint32_t length = kUntouched;
    FUZZ_EXPECT(TrimSourceW(source.data(), &length, set.data(), work.data(), mode) == 0);
    FUZZ_EXPECT(length == expectedLength);
    FUZZ_EXPECT(std::wstring(collected.data()) == work.data());
    FUZZ_EXPECT(source.holds(left));
    FUZZ_EXPECT(set.holds(terminated(delimiters)));
}

void columnName(Input& input) {
    const auto maxLength = input.number<int32_t>();
    const std::wstring name = input.text<wchar_t>();
    std::wstring expected = name;
    const std::size_t second = name.size() < 2 ? name.npos : name.find(L'"', 1);
    const bool quoted = name[0] == L'"' && second != name.npos && maxLength >= 0 &&
                        second < static_cast<std::size_t>(maxLength);
    if (!quoted) {
        for (wchar_t& c : expected) c = static_cast<wchar_t>(towupper(static_cast<wint_t>(c)));
    }
    Block<wchar_t> block(terminated(name), input.choice(4));
    FUZZ_EXPECT(NormalizeColName(block.data(), maxLength) == 0);
    FUZZ_EXPECT(block.holds(terminated(expected)));
}

void provider(Input& input) {
    constexpr struct {
        const char* name;
        int32_t number;
    } providers[] = {{"CCN", 1},   {"NID", 2},     {"EML", 3},   {"AFF", 4},
                     {"COL", 4},   {"AGE", 6},     {"HASH", 5},  {"LKP", 7},
                     {"DSWAP", 8}, {"CDSWAP", 10}, {"DDSWAP", 9}};
    const std::string name = input.text<char>();
    const auto found = std::find_if(std::begin(providers), std::end(providers), [&](const auto& p) {
        return strcasecmp(p.name, name.c_str()) == 0;
    });
    Block<char> block(terminated(name));
    FUZZ_EXPECT(GetProviderID(block.data()) ==
                (found == std::end(providers) ? KORV_PROVIDER_UNKNOWN : found->number));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    Input input(data, size);
    fuzz::chooseLocale(input);
    switch (input.choice(5)) {
        case 0:
            elements(input);
            break;
        case 1:
            keyValue(input);
            break;
        case 2:
            trim(input);
            break;
        case 3:
            columnName(input);
            break;
        default:
            provider(input);
    }
    return 0;
}
