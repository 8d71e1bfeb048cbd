// KorvMaskBatch with values of any bytes and offsets in any order: what is promised of a result
// holds, values do not depend on their neighbours, and no message has a clear value.
#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

#include "korv/mask.h"
#include "reference/utf8.h"
#include "support/expect.h"
#include "support/input.h"

namespace {

// Those with a secret are left out where the engine has no cryptography.
constexpr const char* kRules[] = {
    "CCN, method=transpose, key=17",
    "NID, method=transpose, key=5, on-error=null",
    "EML, method=transpose, key=3, on-error=const, value=none",
    "HASH, method=seed, list=Red;Green;Blue, seed=autumn",
    "AGE, method=move, days=400, on-error=drop-row",
    "AGE, method=move, days=-30, format=DD.MM.YYYY, on-error=empty",
    "CONST, value=x",
    "KEEP",
    "NULL",
    "CCN, secret=fuzz",
    "NID, secret=fuzz, unchanged=error",
    "EML, secret=fuzz",
    "HASH, secret=fuzz, list=Red;Green;Blue",
    "AGE, secret=fuzz, range=-30..30",
    "COL, secret=fuzz",
    "AFF, secret=fuzz",
};
constexpr std::size_t kRuleCount = std::size(kRules);

// The handles stay open: each is used for many inputs.
KorvMask* handleOf(std::size_t rule) {
    static KorvMask* handles[kRuleCount];
    static bool tried[kRuleCount];
    if (!tried[rule]) {
        tried[rule] = true;
        const char* columns[] = {"VALUE"};
        const char* folders[] = {KORV_FUZZ_PROVIDERS};
        const uint8_t bytes[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
        const KorvMaskSecret secret = {"fuzz", bytes, sizeof bytes};
        KorvMaskSettings settings = {};
        settings.size = sizeof settings;
        settings.flags = KORV_MASK_ONE_RULE;
        settings.rules = kRules[rule];
        settings.columns = columns;
        settings.columnCount = 1;
        settings.folders = folders;
        settings.folderCount = 1;
        settings.secrets = &secret;
        settings.secretCount = 1;
        if (KorvMaskOpen(&settings, &handles[rule]) != KORV_MASK_SUCCESS) {
            // A rule without a secret is right.
            FUZZ_EXPECT(std::strstr(kRules[rule], "secret") != nullptr);
            KorvMaskClose(handles[rule]);
            handles[rule] = nullptr;
        }
    }
    return handles[rule];
}

using Value = std::optional<std::string>;

// The values in blocks of exactly their size.
struct Batch {
    std::vector<char> bytes;
    std::vector<int32_t> offsets;
    std::vector<int64_t> wideOffsets;
    std::vector<uint8_t> validity;

    Batch(const std::vector<Value>& values, std::size_t first) : offsets(first + 1, 0) {
        validity.assign((first + values.size() + 7) / 8, 0);
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (values[i]) {
                bytes.insert(bytes.end(), values[i]->begin(), values[i]->end());
                validity[(first + i) / 8] |= static_cast<uint8_t>(1u << (first + i) % 8);
            }
            offsets.push_back(static_cast<int32_t>(bytes.size()));
        }
        bytes.shrink_to_fit();
        offsets.shrink_to_fit();
        wideOffsets.assign(offsets.begin(), offsets.end());
    }

    KorvMaskStrings strings(std::size_t first, uint32_t offsetBits) const {
        const void* const chosen = offsetBits == 32 ? static_cast<const void*>(offsets.data())
                                                    : static_cast<const void*>(wideOffsets.data());
        return {
            offsets.size() - first - 1, first, offsetBits, chosen, bytes.data(), validity.data()};
    }
};

int64_t offsetAt(const KorvMaskStrings& strings, uint64_t index) {
    return strings.offsetBits == 32 ? static_cast<const int32_t*>(strings.offsets)[index]
                                    : static_cast<const int64_t*>(strings.offsets)[index];
}

struct Masked {
    Value text;
    uint8_t state;
    bool operator==(const Masked&) const = default;
};

bool isUtf8(const std::string& text) {
    std::wstring characters;
    return reference::decodeUtf8(text, characters);
}

void checkMessages(const KorvMask* mask, const std::vector<Value>& values) {
    const auto isLongNumber = [](const Value& value) {
        return value && value->size() >= 8 && std::all_of(value->begin(), value->end(), [](char c) {
                   return c >= '0' && c <= '9';
               });
    };
    for (uint64_t i = 0; const KorvMaskRecord* record = KorvMaskGetRecord(mask, i); ++i) {
        for (const Value& value : values) {
            if (!isLongNumber(value)) continue;
            FUZZ_EXPECT(std::strstr(record->message, value->c_str()) == nullptr);
            for (uint32_t t = 0; t < record->tokenCount; ++t) {
                FUZZ_EXPECT(std::strstr(record->tokens[t].text, value->c_str()) == nullptr);
            }
        }
    }
}

std::vector<Masked> maskValues(KorvMask* mask, const std::vector<Value>& values, std::size_t first,
                               uint32_t offsetBits) {
    const Batch batch(values, first);
    const KorvMaskStrings source = batch.strings(first, offsetBits);
    const KorvMaskResult* result = nullptr;
    const int32_t status = KorvMaskBatch(mask, 0, 1, &source, nullptr, &result);
    FUZZ_EXPECT(status == KORV_MASK_SUCCESS || status == KORV_MASK_VALUES_FAILED);
    const KorvMaskStrings& strings = result->strings;
    FUZZ_EXPECT(strings.count == values.size() && strings.offsetBits == offsetBits);
    std::vector<Masked> masked;
    uint64_t failed = 0;
    for (uint64_t i = 0; i < strings.count; ++i) {
        const uint64_t at = strings.first + i;
        const bool isNull = strings.validity && !(strings.validity[at / 8] >> at % 8 & 1);
        const int64_t begin = offsetAt(strings, at), end = offsetAt(strings, at + 1);
        FUZZ_EXPECT(begin >= 0 && begin <= end);
        Value text;
        if (!isNull) text.emplace(strings.bytes + begin, static_cast<std::size_t>(end - begin));
        const uint8_t state = result->states[i];
        FUZZ_EXPECT(state <= KORV_MASK_VALUE_DROP_ROW);
        failed += state == KORV_MASK_VALUE_FAILED || state == KORV_MASK_VALUE_DROP_ROW;
        FUZZ_EXPECT((!values[i] || values[i]->empty()) == (state == KORV_MASK_VALUE_NULL) ||
                    result->strings.bytes == batch.bytes.data());
        if (text && strings.bytes != batch.bytes.data()) FUZZ_EXPECT(isUtf8(*text));
        masked.push_back({text, state});
    }
    FUZZ_EXPECT((failed > 0) == (status == KORV_MASK_VALUES_FAILED));
    FUZZ_EXPECT(result->statistics.failed == failed);
    FUZZ_EXPECT(result->statistics.values + result->statistics.nulls == values.size());
    checkMessages(mask, values);
    KorvMaskClearRecords(mask);
    return masked;
}

// Offsets that decrease are refused; others are read.
void checkAnyOffsets(KorvMask* mask, fuzz::Input& input) {
    std::vector<int32_t> offsets = {0};
    for (unsigned count = input.choice(8); count > 0; --count) offsets.push_back(input.byte());
    std::vector<char> bytes(*std::max_element(offsets.begin(), offsets.end()));
    for (char& byte : bytes) byte = static_cast<char>(input.byte());
    const KorvMaskStrings source = {offsets.size() - 1, 0,      32, offsets.data(),
                                    bytes.data(),       nullptr};
    const KorvMaskResult* result = nullptr;
    const int32_t status = KorvMaskBatch(mask, 0, 1, &source, nullptr, &result);
    const bool ascend = std::is_sorted(offsets.begin(), offsets.end());
    FUZZ_EXPECT((status == KORV_MASK_BAD_ARGUMENT) == !ascend);
    FUZZ_EXPECT((result == nullptr) == !ascend);
    KorvMaskClearRecords(mask);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    KorvMask* const mask = handleOf(input.choice(kRuleCount));
    if (!mask) return 0;
    const unsigned form = input.choice(3);
    if (form == 2) {
        checkAnyOffsets(mask, input);
        return 0;
    }
    const std::size_t first = input.choice(9);
    std::vector<Value> values;
    while (!input.empty() && values.size() < 20) {
        if (input.choice(8) == 7) {
            values.emplace_back();
        } else {
            values.emplace_back(input.text<char>());
        }
    }
    const std::vector<Masked> together = maskValues(mask, values, first, form == 0 ? 32 : 64);
    for (std::size_t i = 0; i < values.size(); ++i) {
        FUZZ_EXPECT(maskValues(mask, {values[i]}, 0, 32)[0] == together[i]);
    }
    return 0;
}
