// UTF-16 and UTF-32 units, XML characters, byte order and bit order, against the slow way.
#include "reference/units.h"
#include "korv/datacnv.h"
#include "korv/text.h"
#include "reference/bytes.h"
#include "support/block.h"
#include "support/expect.h"
#include "support/input.h"

namespace {

using fuzz::Block;
using fuzz::Input;
using fuzz::terminated;

constexpr uint32_t kUntouched = 0xDEADBEEF;

// Both ways at once: `literal` is the slow one, `convert` the library's, which counts in bytes, and
// `back` its counterpart.
template <class Source, class Target, class Convert, class Literal, class Back>
void unicode(Input& input, Convert convert, Literal literal, Back back) {
    const auto room = static_cast<int32_t>(input.number<uint8_t>());
    const auto partial = static_cast<int32_t>(input.choice(sizeof(Source)));
    const std::size_t sourceShift = input.choice(8), targetShift = input.choice(8);
    const std::vector<Source> units = input.units<Source>();
    Block<Source> source(units, sourceShift);
    Block<Target> target(static_cast<std::size_t>(room), targetShift);
    std::vector<Target> expected(target.data(), target.data() + room);
    uint32_t expectedCount = kUntouched, count = kUntouched;
    const int32_t fault = literal(source.data(), static_cast<int32_t>(units.size()),
                                  expected.data(), room, &expectedCount);
    const auto bytes = static_cast<int32_t>(units.size() * sizeof(Source)) + partial;
    const int32_t status = convert(source.data(), bytes, target.data(),
                                   room * static_cast<int32_t>(sizeof(Target)), &count);
    FUZZ_EXPECT(status == (fault == 0   ? CNV_SUCCESS
                           : fault == 1 ? CNV_TARGET_TOO_SMALL
                                        : CNV_MALFORMED_SOURCE));
    FUZZ_EXPECT(count == expectedCount);
    FUZZ_EXPECT(source.holds(units));
    // What is converted before a fault is the same in both, and nothing is written after it.
    FUZZ_EXPECT(target.holds(expected));
    if (status != 0) return;
    Block<Source> again(units.size());
    FUZZ_EXPECT(back(target.data(), static_cast<int32_t>(count * sizeof(Target)), again.data(),
                     static_cast<int32_t>(units.size() * sizeof(Source)), &count) == 0);
    FUZZ_EXPECT(again.holds(units));
}

void xmlCharacters(Input& input) {
    const bool allocate = input.choice(2) == 1;
    const std::size_t shift = input.choice(4);
    const std::wstring text = input.text<wchar_t>();
    Block<wchar_t> source(terminated(text), shift);
    Block<uint16_t> given(text.empty() ? 0 : text.size() + 1, shift);
    uint16_t* units = given.data();
    const int32_t result = KORVGetXMLCHARFromWCHAR(source.data(), &units, allocate);
    FUZZ_EXPECT(result == (text.empty() ? -1 : 0));
    FUZZ_EXPECT((units != given.data()) == (allocate && !text.empty()));
    for (std::size_t i = 0; !text.empty() && i <= text.size(); ++i) {
        FUZZ_EXPECT(units[i] == static_cast<uint16_t>(text.c_str()[i]));
    }
    if (units != given.data()) std::free(units);
}

// Swaps to a zero unit or to a count, whichever comes first; a counted string need not have a zero.
template <class Unit>
void swapBytes(Input& input, Unit* (*whole)(Unit*), Unit* (*counted)(Unit*, int32_t)) {
    const bool limited = input.choice(2) == 1;
    const std::size_t shift = input.choice(16 / sizeof(Unit));
    auto bytes = input.number<int32_t>();
    std::vector<Unit> units = input.units<Unit>();
    if (!limited) units.push_back(0);
    // Whole blocks within the count are read, also after a zero unit.
    bytes %= static_cast<int32_t>(units.size() * sizeof(Unit)) + 1;
    std::vector<Unit> expected = units;
    reference::swapUnits(expected.data(), limited ? bytes : INT64_MAX);
    Block<Unit> block(units, shift);
    FUZZ_EXPECT((limited ? counted(block.data(), bytes) : whole(block.data())) == block.data());
    FUZZ_EXPECT(block.holds(expected));
}

void swapValues(Input& input) {
    const auto value = input.number<uint32_t>();
    const auto half = static_cast<uint16_t>(value);
    FUZZ_EXPECT(RTENDIAN_SWAP_UINT(value) == reference::swapped(value));
    FUZZ_EXPECT(RTENDIAN_SWAP_USHORT(half) == reference::swapped(half));
    const uint32_t one = 1;
    const bool big = *reinterpret_cast<const uint8_t*>(&one) != 1;
    FUZZ_EXPECT(KORV_IsPlatformBigEndian() == (big ? 1 : 0));
}

// Target and source lie in one block, apart or one over the other.
void flipBits(Input& input) {
    const std::size_t shift = input.choice(16);
    std::size_t target = input.number<uint16_t>(), source = input.number<uint16_t>();
    std::vector<uint8_t> bytes = input.units<uint8_t>();
    target %= bytes.size() + 1;
    source %= bytes.size() + 1;
    const std::size_t count = bytes.size() - std::max(target, source);
    Block<uint8_t> block(bytes, shift);
    RTBITFIELD_FLIP(block.data() + target, block.data() + source, static_cast<uint32_t>(count));
    reference::flipBits(bytes.data() + target, bytes.data() + source, count);
    FUZZ_EXPECT(block.holds(bytes));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    Input input(data, size);
    switch (input.choice(7)) {
        case 0:
            unicode<uint16_t, wchar_t>(input, KORV_Utf16ToUtf32, reference::utf16ToUtf32,
                                       KORV_Utf32ToUtf16);
            break;
        case 1:
            unicode<wchar_t, uint16_t>(input, KORV_Utf32ToUtf16, reference::utf32ToUtf16,
                                       KORV_Utf16ToUtf32);
            break;
        case 2:
            xmlCharacters(input);
            break;
        case 3:
            swapBytes<uint16_t>(input, SwapBytes_2, SwapnBytes_2);
            break;
        case 4:
            swapBytes<uint32_t>(input, SwapBytes_4, SwapnBytes_4);
            break;
        case 5:
            swapValues(input);
            break;
        default:
            flipBits(input);
    }
    return 0;
}
