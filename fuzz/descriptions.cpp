// Copies of the framework's descriptions and of field definitions: texts of any length and kind in
// buffers that are as long as the description says.
#include <cstdlib>
#include <vector>

#include "korv/korv.h"
#include "support/block.h"
#include "support/carried.h"
#include "support/expect.h"
#include "support/input.h"

namespace {

using fuzz::Block;
using fuzz::Input;

// A text as it is described: the rest of the input, as narrow text of ISO 8859-1 or as wide text.
struct Source {
    std::vector<char> bytes;
    Block<char> block;
    TextDesc text{};

    Source(Input& input, bool wide, bool present)
        : bytes(input.units<char>(wide ? input.left() / 4 * 4 : SIZE_MAX)), block(bytes) {
        if (wide && present) text.head.wideText = reinterpret_cast<const wchar_t*>(block.data());
        if (!wide && present) text.narrowText = block.data();
        text.codePage = KORV_CODEPAGE_NOT_GIVEN;
    }

    // The characters as the companion widens them.
    std::wstring widened() const {
        std::wstring wide;
        for (const char c : bytes) wide += static_cast<wchar_t>(static_cast<uint8_t>(c));
        return wide;
    }
};

constexpr uint32_t kLatin1 = 819;

template <class Char>
bool holds(const Char* text, const void* expected, std::size_t bytes, std::size_t terminator) {
    const auto* at = reinterpret_cast<const char*>(text);
    for (std::size_t i = 0; i < terminator; ++i) {
        if (at[bytes + i] != 0) return false;
    }
    return bytes == 0 || std::memcmp(at, expected, bytes) == 0;
}

bool holdsWide(const wchar_t* text, const std::wstring& expected) {
    return holds(text, expected.data(), expected.size() * sizeof(wchar_t), sizeof(wchar_t));
}

FieldDefI field(Input& input) {
    const bool wide = input.choice(2) == 1, present = input.choice(8) != 7;
    const bool described = input.choice(8) != 7;
    FieldDesc description{};
    description.dataType = input.number<int16_t>();
    description.length = input.number<uint32_t>();
    description.fldValue2 = input.number<uint16_t>();
    description.fldFlag = input.byte();
    description.textMode = wide ? input.byte() | 0x80 : KORV_TEXT_NARROW;
    Source source(input, wide, present);
    const auto bytes = source.bytes.size();
    description.textLen = static_cast<int32_t>(bytes);
    description.text = described ? &source.text : nullptr;

    FieldDefI target{};
    const int32_t status = CopyFieldStruct(&description, &target, kLatin1, 0);
    FUZZ_EXPECT(target.dataType == description.dataType && target.length == description.length &&
                target.fldValue2 == description.fldValue2 && target.fldFlag == description.fldFlag);
    if (!present || !described) {
        FUZZ_EXPECT(status == 0 && !target.wideText && !target.narrowText);
    } else if (wide) {
        FUZZ_EXPECT(status == 0 && !target.narrowText);
        FUZZ_EXPECT(target.wideTextLen == description.textLen + 4);
        FUZZ_EXPECT(holds(target.wideText, source.bytes.data(), bytes, sizeof(wchar_t)));
    } else if (bytes == 0) {
        FUZZ_EXPECT(status == KORV_BAD_TEXT_LENGTH && !target.wideText && !target.narrowText);
    } else {
        FUZZ_EXPECT(status == 0 && target.narrowTextLen == description.textLen + 1);
        FUZZ_EXPECT(target.wideTextLen == (description.textLen + 1) * 4);
        FUZZ_EXPECT(holds(target.narrowText, source.bytes.data(), bytes, 1));
        FUZZ_EXPECT(holdsWide(target.wideText, source.widened()));
    }
    return target;
}

// Each text is as long as its record says, and freed by the side that allocated it.
void duplicate(Input& input) {
    FieldDefI source = field(input);
    source.link = &source;
    if (source.wideTextLen % 8 == 4) source.narrowTextLen = -source.narrowTextLen;
    FieldDefI copy;
    FUZZ_EXPECT(DuplicateFieldDefI(&copy, &source) == 0);
    FUZZ_EXPECT(DuplicateFieldDefI(nullptr, &source) == -1);
    FUZZ_EXPECT(DuplicateFieldDefI(&copy, nullptr) == -1);
    FUZZ_EXPECT(!copy.link && copy.dataType == source.dataType && copy.length == source.length);
    FUZZ_EXPECT(copy.wideTextLen == source.wideTextLen &&
                copy.narrowTextLen == source.narrowTextLen);
    const bool narrow = source.narrowText && source.narrowTextLen > 0;
    const bool wide = source.wideText && source.wideTextLen > 0;
    FUZZ_EXPECT((copy.narrowText != nullptr) == narrow && (copy.wideText != nullptr) == wide);
    if (narrow) {
        FUZZ_EXPECT(copy.narrowText != source.narrowText);
        FUZZ_EXPECT(holds(copy.narrowText, source.narrowText,
                          static_cast<std::size_t>(source.narrowTextLen), 0));
    }
    if (wide) {
        FUZZ_EXPECT(copy.wideText != source.wideText);
        FUZZ_EXPECT(
            holds(copy.wideText, source.wideText, static_cast<std::size_t>(source.wideTextLen), 0));
    }
    for (void* text :
         {static_cast<void*>(copy.wideText), static_cast<void*>(source.wideText),
          static_cast<void*>(copy.narrowText), static_cast<void*>(source.narrowText)}) {
        std::free(text);
    }
}

void parameter(Input& input) {
    ParamDesc description{};
    description.oprCode = input.number<uint16_t>();
    description.valueKind = static_cast<int32_t>(input.choice(6)) - 1;
    const bool present = input.choice(8) != 7, negative = input.choice(8) == 7;
    const bool wide = description.valueKind == OPR_VALUE_WIDE;
    const bool hasText = wide || description.valueKind == OPR_VALUE_NARROW;
    const auto number = input.number<uint32_t>();
    const std::vector<uint32_t> name = input.units<uint32_t>(input.byte());
    Source source(input, wide, present);
    const auto bytes = source.bytes.size();
    description.valueLen = static_cast<int32_t>(negative ? ~bytes : bytes);
    description.value.number = number;
    if (hasText) description.value.text = &source.text;
    Block<uint32_t> nameBlock(name);
    TextDesc nameText{};
    nameText.head.wideText = reinterpret_cast<const wchar_t*>(nameBlock.data());
    description.oprTextMode = name.empty() ? 'N' : KORV_TEXT_WIDE;
    description.oprText = &nameText;
    description.oprTextLen = static_cast<uint32_t>(name.size() * sizeof(wchar_t));

    OprDefI target{};
    const int32_t status = CopyParamsStruct(&description, &target, kLatin1, 0);
    const bool refused = hasText && negative;
    FUZZ_EXPECT(status == (refused ? KORV_BAD_VALUE_LENGTH : KORV_SUCCESS));
    FUZZ_EXPECT(target.oprCode == description.oprCode && target.valueKind == description.valueKind);
    FUZZ_EXPECT(target.oprTextLen == description.oprTextLen);
    FUZZ_EXPECT(name.empty() ? !target.oprText
                             : holds(target.oprText, name.data(), description.oprTextLen, 0));
    FUZZ_EXPECT(target.intValue == (description.valueKind == OPR_VALUE_INTEGER ? number : 0));
    const bool opaque = description.valueKind < 0 || description.valueKind > OPR_VALUE_NARROW;
    FUZZ_EXPECT(target.otherValue == (opaque ? number : 0));
    const bool copied = hasText && !refused && present && bytes > 0;
    FUZZ_EXPECT((target.wideValue != nullptr) == copied);
    FUZZ_EXPECT((target.narrowValue != nullptr) == (copied && !wide));
    if (copied && wide) {
        FUZZ_EXPECT(target.wideValueLen == bytes + 4);
        FUZZ_EXPECT(holds(target.wideValue, source.bytes.data(), bytes, sizeof(wchar_t)));
    } else if (copied) {
        FUZZ_EXPECT(target.narrowValueLen == bytes + 1 && target.wideValueLen == (bytes + 1) * 4);
        FUZZ_EXPECT(holds(target.narrowValue, source.bytes.data(), bytes, 1));
        FUZZ_EXPECT(holdsWide(target.wideValue, source.widened()));
    }
    std::free(target.oprText);
    std::free(target.wideValue);
    std::free(target.narrowValue);
}

// Wide: as much as there is room for, padded with zeros or cut; narrow: only where all fits.
void provider(Input& input) {
    const bool narrow = input.choice(2) == 1;
    PrvDesc description{};
    description.prvAttr2 = input.number<uint32_t>();
    PrvRecord target{};
    const uint32_t room = target.text1Cap = target.text2Cap = input.byte();
    const std::wstring texts[] = {input.text<wchar_t>(), input.text<wchar_t>()};
    Block<wchar_t> sources[] = {Block<wchar_t>(fuzz::terminated(texts[0])),
                                Block<wchar_t>(fuzz::terminated(texts[1]))};
    description.text1 = sources[0].data();
    description.text2 = sources[1].data();
    Block<wchar_t> wide[] = {Block<wchar_t>(room / 4), Block<wchar_t>(room / 4)};
    Block<char> bytes[] = {Block<char>(room), Block<char>(room)};
    void* buffers[] = {narrow ? static_cast<void*>(bytes[0].data()) : wide[0].data(),
                       narrow ? static_cast<void*>(bytes[1].data()) : wide[1].data()};
    target.texts = buffers;
    const int32_t status =
        CopyPrvStruct(&target, &description, kLatin1, 0, narrow ? KORV_TEXT_NARROW : 'W');
    FUZZ_EXPECT(target.prvAttr2 == static_cast<uint16_t>(description.prvAttr2));
    bool fits = true;
    for (std::size_t i = 0; i < 2 && fits; ++i) {
        std::wstring expected = texts[i];
        if (!narrow) {
            expected.resize(room / 4);
            FUZZ_EXPECT(wide[i].holds(expected));
            continue;
        }
        fits = expected.size() < room && std::all_of(expected.begin(), expected.end(),
                                                     [](wchar_t c) { return c >= 0 && c <= 0xFF; });
        const std::string narrowed(expected.begin(), expected.end());
        if (fits) FUZZ_EXPECT(narrowed == bytes[i].data());
    }
    FUZZ_EXPECT((status == 0) == fits);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    Input input(data, size);
    switch (input.choice(3)) {
        case 0:
            duplicate(input);
            break;
        case 1:
            parameter(input);
            break;
        default:
            provider(input);
    }
    return 0;
}
