// The stand-in's conversions of text, integers and moments to and from wide text, against UTF-8 by
// table and the system's formatting; of every code page, what all conversions promise.
#include <cinttypes>
#include <cwchar>

#include "korv/datacnv.h"
#include "reference/utf8.h"
#include "support/block.h"
#include "support/expect.h"
#include "support/input.h"

namespace {

using fuzz::Block;
using fuzz::Input;
using fuzz::terminated;

constexpr uint32_t kUntouched = 0xDEADBEEF;
constexpr uint32_t kNoLength = 0;

// What a conversion leaves in a target.
template <class Char>
struct Outcome {
    int32_t status;
    std::basic_string<Char> text;
};

// Runs convert(target, capacity, outLen), and checks the rules of all conversions.
template <class Char, class Convert>
Outcome<Char> run(uint32_t capacity, Convert convert) {
    const std::size_t units = capacity / sizeof(Char);
    Block<Char> target(units);
    uint32_t outLen = kUntouched;
    const int32_t status = convert(target.data(), capacity, &outLen);
    if (status == CNV_SUCCESS) {
        FUZZ_EXPECT(outLen < units && target[outLen] == 0);
        return {status, {target.data(), outLen}};
    }
    FUZZ_EXPECT(status >= CNV_TARGET_TOO_SMALL && status <= CNV_NO_MEMORY);
    FUZZ_EXPECT(outLen == kUntouched);
    FUZZ_EXPECT(units == 0 || target[0] == 0);
    return {status, {}};
}

// The conversion gives `expected` where there is room for it and its terminator.
template <class Char, class Convert>
void expectText(const std::basic_string<Char>& expected, uint32_t capacity, Convert convert) {
    const Outcome<Char> outcome = run<Char>(capacity, convert);
    if (expected.size() < capacity / sizeof(Char)) {
        FUZZ_EXPECT(outcome.status == CNV_SUCCESS && outcome.text == expected);
    } else {
        FUZZ_EXPECT(outcome.status == CNV_TARGET_TOO_SMALL);
    }
}

// UTF-8 half of the time.
CnvOptions chooseCodePage(Input& input) {
    constexpr uint32_t pages[] = {1208, 819,  37,   437,   850,   1252,  1047,  932,
                                  943,  1200, 1201, 12000, 12001, 28605, 54936, 20127};
    constexpr unsigned count = std::size(pages);
    const unsigned choice = input.choice(2 * count);
    CnvOptions options{};
    options.codePage = choice < count    ? pages[choice]
                       : choice == count ? input.number<uint32_t>()
                                         : pages[0];
    return options;
}

// Narrow text to wide and back.
void throughCodePage(Input& input) {
    const CnvOptions options = chooseCodePage(input);
    const uint32_t capacity = input.number<uint16_t>() % 1024;
    std::string bytes;
    while (!input.empty()) bytes += static_cast<char>(input.byte());
    const auto length = static_cast<uint32_t>(bytes.size());
    Block<char> source(bytes);
    const auto widen = [&](wchar_t* target, uint32_t room, uint32_t* outLen) {
        return KORVCnvCharToWVarcharSz(source.data(), &length, target, room, outLen, &options);
    };
    // A converter may make several characters of one byte, but not of many.
    const Outcome<wchar_t> full = run<wchar_t>((length + 1) * 4 * 4, widen);
    const Outcome<wchar_t> cut = run<wchar_t>(capacity, widen);
    if (full.status == CNV_SUCCESS) expectText(full.text, capacity, widen);
    if (full.status != CNV_SUCCESS) FUZZ_EXPECT(cut.status != CNV_SUCCESS);
    if (options.codePage == 1208) {
        std::wstring expected;
        const bool wellFormed = reference::decodeUtf8(bytes, expected);
        FUZZ_EXPECT(full.status == (wellFormed ? CNV_SUCCESS : CNV_MALFORMED_SOURCE));
        if (wellFormed) FUZZ_EXPECT(full.text == expected);
    }
    if (full.status != CNV_SUCCESS || full.text.find(L'\0') != full.text.npos) return;

    Block<wchar_t> wide(terminated(full.text));
    const auto narrow = [&](char* target, uint32_t room, uint32_t* outLen) {
        return KORVCnvWVarcharSzToVarcharSz(wide.data(), &kNoLength, target, room, outLen,
                                            &options);
    };
    const bool exact = options.codePage == 1208 || options.codePage == 819;
    const Outcome<char> back = run<char>((length + 1) * 8, narrow);
    if (exact) FUZZ_EXPECT(back.status == CNV_SUCCESS && back.text == bytes);
    if (back.status == CNV_SUCCESS) expectText(back.text, capacity, narrow);
}

// Wide text to narrow, with what no text holds, and back where it is text.
void fromWide(Input& input) {
    const CnvOptions options = chooseCodePage(input);
    const std::wstring text = input.text<wchar_t>();
    Block<wchar_t> source(terminated(text));
    const auto length = static_cast<uint32_t>(input.number<uint8_t>());
    const Outcome<char> narrow =
        run<char>((static_cast<uint32_t>(text.size()) + 1) * 8,
                  [&](char* target, uint32_t room, uint32_t* outLen) {
                      return KORVCnvWVarcharSzToVarcharSz(source.data(), &length, target, room,
                                                          outLen, &options);
                  });
    const std::wstring taken = length == 0 ? text : text.substr(0, length);
    const bool isText = std::all_of(taken.begin(), taken.end(), [](wchar_t unit) {
        const auto c = static_cast<uint32_t>(unit);
        return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
    });
    if (!isText) FUZZ_EXPECT(narrow.status != CNV_SUCCESS);
    if (options.codePage != 1208) return;
    std::wstring decoded;
    FUZZ_EXPECT(narrow.status == (isText ? CNV_SUCCESS : CNV_MALFORMED_SOURCE));
    if (isText) FUZZ_EXPECT(reference::decodeUtf8(narrow.text, decoded) && decoded == taken);
}

// Text of each form, without options: bytes are characters.
void forms(Input& input) {
    const unsigned form = input.choice(4);
    const uint32_t capacity = input.number<uint16_t>() % 1024;
    const std::vector<uint8_t> bytes = input.units<uint8_t>(2000);
    const auto length = static_cast<uint32_t>(bytes.size());
    const bool wide = form % 2 == 1, prefixed = form >= 2;
    std::wstring expected(bytes.begin(), bytes.end());
    if (wide) {
        expected.resize(length / sizeof(wchar_t));
        std::copy_n(bytes.begin(), expected.size() * sizeof(wchar_t),
                    reinterpret_cast<uint8_t*>(expected.data()));
    }
    // Variable wide text need not be aligned, and after its 2-byte prefix it is not.
    Block<uint8_t> source(bytes.size() + (prefixed ? 2 : 0));
    const auto prefix = static_cast<int16_t>(length);
    if (prefixed) std::memcpy(source.data(), &prefix, sizeof prefix);
    std::copy(bytes.begin(), bytes.end(), source.data() + (prefixed ? 2 : 0));
    const void* value = source.data();
    expectText(expected, capacity, [&](wchar_t* target, uint32_t room, uint32_t* outLen) {
        switch (form) {
            case 0:
                return KORVCnvCharToWVarcharSz(static_cast<const char*>(value), &length, target,
                                               room, outLen, nullptr);
            case 1:
                return KORVCnvWCharToWVarcharSz(static_cast<const wchar_t*>(value), &length, target,
                                                room, outLen, nullptr);
            case 2:
                return KORVCnvVarcharToWVarcharSz(value, &kNoLength, target, room, outLen, nullptr);
            default:
                return KORVCnvWVarcharToWVarcharSz(value, &kNoLength, target, room, outLen,
                                                   nullptr);
        }
    });
}

template <class Integer, class Convert>
void integer(Input& input, Convert convert) {
    const uint32_t capacity = input.number<uint8_t>();
    const auto value = input.number<Integer>();
    const std::string digits = std::to_string(value);
    expectText(std::wstring(digits.begin(), digits.end()), capacity,
               [&](wchar_t* target, uint32_t room, uint32_t* outLen) {
                   return convert(&value, &kNoLength, target, room, outLen, nullptr);
               });
}

void moment(Input& input) {
    const uint32_t capacity = input.number<uint8_t>();
    Block<char> record(12);
    uint16_t numbers[6];
    for (uint16_t& number : numbers) number = input.number<uint16_t>();
    std::memcpy(record.data(), numbers, sizeof numbers);
    const auto year = static_cast<int16_t>(numbers[0]);
    char text[64];
    std::snprintf(text, sizeof text, "%s%04d-%02u-%02u %02u:%02u:%02u", year < 0 ? "-" : "",
                  std::abs(int{year}), numbers[1], numbers[2], numbers[3], numbers[4], numbers[5]);
    const std::string expected = text;
    expectText(std::wstring(expected.begin(), expected.end()), capacity,
               [&](wchar_t* target, uint32_t room, uint32_t* outLen) {
                   return KORVGetStringFromTS(record.data(), target, room, outLen);
               });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    Input input(data, size);
    switch (input.choice(8)) {
        case 0:
            throughCodePage(input);
            break;
        case 1:
            fromWide(input);
            break;
        case 2:
            forms(input);
            break;
        case 3:
            integer<int32_t>(input, KORVCnvIntToWVarcharSz1);
            break;
        case 4:
            integer<uint32_t>(input, KORVCnvUIntToWVarcharSz);
            break;
        case 5:
            integer<int16_t>(input, KORVCnvSmallIntToWVarcharSz);
            break;
        case 6:
            integer<uint16_t>(input, KORVCnvSmallUIntToWVarcharSz);
            break;
        default:
            moment(input);
    }
    return 0;
}
