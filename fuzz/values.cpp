// The catalogue of data types, lengths and classes of values, and work buffers, against tables and
// a model of a buffer.
#include <cstring>
#include <cwchar>

#include "korv/korv.h"
#include "reference/catalogue.h"
#include "reference/source_values.h"
#include "support/block.h"
#include "support/expect.h"
#include "support/input.h"

namespace {

using fuzz::Block;
using fuzz::Input;
using reference::Rule;

constexpr uint32_t kUntouched = reference::kUntouched;

// A code of the catalogue, or any.
int16_t chooseCode(Input& input) {
    const unsigned choice = input.choice(30);
    if (choice == 29) return input.number<int16_t>();
    return static_cast<int16_t>(choice == 0 ? unsigned{DATATYPE_101} : choice);
}

void catalogue(Input& input) {
    const int16_t code = chooseCode(input);
    FieldDefI field{};
    field.dataType = code;
    field.length = input.number<uint32_t>();
    const reference::CatalogueRow* row = reference::catalogueRow(code);
    uint32_t bytes = kUntouched, length = kUntouched;
    FUZZ_EXPECT(GetDataTypeBytes(&field, &bytes) == (row ? KORV_SUCCESS : KORV_TYPE_UNKNOWN));
    FUZZ_EXPECT(bytes == (!row                ? kUntouched
                          : row->perCharacter ? row->perCharacter * field.length
                                              : row->bytes));
    FUZZ_EXPECT(GetDataTypeLengths(&field, &length) ==
                (row ? row->lengthStatus : KORV_TYPE_UNKNOWN));
    FUZZ_EXPECT(length == (row ? row->textLength : kUntouched));
    FUZZ_EXPECT(KORV_IsCharacterDatatype(code) == (row && row->narrow ? 0 : -1));
    FUZZ_EXPECT(KORV_IsWideCharacterDatatype(code) == (row && row->wide ? 0 : -1));
    const char* name = KORVGetDataTypeName(code);
    const char* expected = row ? row->name : code == 11 ? "11" : code == 12 ? "12" : nullptr;
    FUZZ_EXPECT(name && expected ? std::strcmp(name, expected) == 0 : name == expected);
}

// The bytes of a value as its type wants them: of variable text no more than the prefix is read, of
// terminated text nothing after the terminator, of all others nothing.
std::vector<char> valueBytes(Input& input, Rule rule) {
    const std::string text = input.text<char>();
    std::vector<char> bytes(text.begin(), text.end());
    if (rule == Rule::prefix) {
        bytes.resize(2);
    } else if (rule == Rule::narrowText) {
        bytes.push_back(0);
    } else if (rule == Rule::wideText) {
        const std::wstring wide(text.begin(), text.end());
        bytes.resize((wide.size() + 1) * sizeof(wchar_t));
        std::memcpy(bytes.data(), wide.c_str(), bytes.size());
    } else {
        bytes.clear();
    }
    return bytes;
}

void lengths(Input& input) {
    const int16_t code = chooseCode(input);
    const reference::LengthRow rule = reference::lengthRow(code);
    const reference::CatalogueRow* row = reference::catalogueRow(code);
    ValueRecord value{};
    value.nullIndicator = static_cast<uint8_t>(input.choice(3));
    const bool hasData = input.choice(4) != 3;
    const auto given = value.length = input.number<int32_t>();
    Block<char> data(valueBytes(input, rule.rule));
    int16_t prefix = 0;
    if (data.size() >= sizeof prefix) std::memcpy(&prefix, data.data(), sizeof prefix);
    const bool wide = row && row->wide;
    const auto characters = static_cast<int32_t>(data.size() / (wide ? sizeof(wchar_t) : 1)) - 1;

    FieldDefI field{};
    field.dataType = code;
    value.data = hasData ? data.data() : nullptr;
    int32_t length = static_cast<int32_t>(kUntouched);
    int32_t expected = length;
    if (value.nullIndicator == 1 || !hasData) {
        expected = -1;
    } else if (rule.rule == Rule::prefix) {
        expected = wide ? prefix / 4 : prefix;
    } else if (rule.rule == Rule::narrowText || rule.rule == Rule::wideText) {
        expected = characters;
    } else if (row && (row->narrow || row->wide)) {
        expected = wide ? given / 4 : given;
    } else if (row) {
        expected = static_cast<int32_t>(row->textLength);
    }
    FUZZ_EXPECT(KORVGetSourceDataLen(&value, &field, &length) == 0);
    FUZZ_EXPECT(length == expected);

    value.data = data.data();
    FUZZ_EXPECT(GetSrcBufLen(&value, code) == (rule.rule == Rule::none ? -1 : 0));
    int64_t bytes = given;
    if (rule.rule == Rule::constant) bytes = rule.bytes;
    if (given <= 0 && rule.rule == Rule::prefix) {
        bytes = (given & ~0xFFFF) + int64_t{static_cast<uint16_t>(prefix)} + 2;
    } else if (given <= 0 && (rule.rule == Rule::narrowText || rule.rule == Rule::wideText)) {
        const int32_t unit = wide ? 4 : 1;
        bytes = static_cast<int16_t>(characters) * unit + unit;
    }
    FUZZ_EXPECT(value.length == bytes);
}

void copyToTarget(Input& input) {
    FieldDefI field{};
    field.dataType = chooseCode(input);
    CtrlBlkI context{};
    context.blkCode = static_cast<uint8_t>(input.choice(3));
    context.fieldRefs.fieldDef = &field;
    ValueRecord value{}, result{};
    value.length = input.number<int16_t>();
    value.capacity = input.number<int16_t>();
    result.secondFlag = 77;
    Block<char> source(static_cast<std::size_t>(std::max(value.length, 0)));
    Block<char> target(static_cast<std::size_t>(std::max(value.capacity, 0)), input.choice(16));
    for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<char>(i * 31 + 1);
    std::vector<char> expected(target.data(), target.data() + target.size());
    const int32_t copied = std::min(value.length, value.capacity);
    if (context.blkCode != 0 && copied > 0) {
        std::copy_n(source.data(), copied, expected.begin());
    }
    value.data = source.data();
    value.target = target.data();
    value.copiedLength = INT32_MIN;
    const int32_t processing = KORV_IsZeroOrZeroLength(&context, &value, &result);
    FUZZ_EXPECT(processing == reference::expectedClass(field.dataType));
    FUZZ_EXPECT(value.processingClass == processing && result.secondFlag == 0);
    FUZZ_EXPECT(value.copiedLength == (context.blkCode != 0 ? copied : INT32_MIN));
    FUZZ_EXPECT(target.holds(expected));
}

// A buffer through any number of resizings, beside a model of its contents.
void buffers(Input& input) {
    void* buffer = nullptr;
    uint32_t size = 0;
    std::string model;
    while (!input.empty()) {
        const unsigned keep = input.choice(3);
        const bool plain = input.choice(2) == 1;
        const auto newSize = static_cast<int32_t>(input.number<int16_t>() % 2000);
        const int32_t status =
            plain ? KORVAllocateBuffer(&buffer, &size, newSize)
                  : KORVAllocateBuffer1(&buffer, &size, newSize, static_cast<uint8_t>(keep));
        FUZZ_EXPECT(status == (newSize < 1 ? KORV_BAD_BUFFER_SIZE : KORV_SUCCESS));
        if (status == KORV_SUCCESS) {
            if (plain || keep != 1) model.clear();
            model.resize(static_cast<std::size_t>(newSize));
        }
        FUZZ_EXPECT(size == model.size() && (size == 0) == !buffer);
        auto* const bytes = static_cast<char*>(buffer);
        FUZZ_EXPECT(std::equal(model.begin(), model.end(), bytes));
        if (size > 0) model[size / 2] = bytes[size / 2] = static_cast<char>(input.byte());
    }
    std::free(buffer);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    Input input(data, size);
    switch (input.choice(4)) {
        case 0:
            catalogue(input);
            break;
        case 1:
            lengths(input);
            break;
        case 2:
            copyToTarget(input);
            break;
        default:
            buffers(input);
    }
    return 0;
}
