// The conversions of the companion library.
#include "concurrency/run.h"

namespace {

constexpr uint32_t kNone = 0;

// Narrow text of a length prefix and characters.
struct Prefixed {
    char bytes[2 + Text<char>::length];

    explicit Prefixed(const char* text) {
        const int16_t length = Text<char>::length;
        std::memcpy(bytes, &length, sizeof length);
        std::memcpy(bytes + sizeof length, text, Text<char>::length);
    }
};

}  // namespace

void convertText(Run& run) {
    const Text<char> narrow(run.number());
    const Text<wchar_t> wide(run.number());
    const Prefixed prefixed(narrow.characters);
    const uint32_t bytes = narrow.length, wideBytes = 4 * wide.length;
    wchar_t target[64];
    char back[64];
    uint32_t length = 0;
    // Direct conversions, and some by way of the system's.
    constexpr uint32_t pages[] = {819, 1208, 1252, 850, 28592, 437, 932, 1251};
    CnvOptions options = {};
    options.codePage = pages[run.number() % 8];
    const auto isWhole = [&] {
        const bool whole = length == wide.length && equal(target, wide.characters);
        std::wmemset(target, L'?', 64);
        length = 0;
        return whole;
    };
    CHECK(CALL(KORVCnvCharToWVarcharSz, narrow.characters, &bytes, target, sizeof target, &length,
               &options) == 0);
    CHECK(isWhole());
    CHECK(CALL(KORVCnvVarcharSzToWVarcharSz, narrow.characters, &kNone, target, sizeof target,
               &length, &options) == 0);
    CHECK(isWhole());
    CHECK(CALL(KORVCnvVarcharToWVarcharSz, prefixed.bytes, &kNone, target, sizeof target, &length,
               &options) == 0);
    CHECK(isWhole());
    CHECK(CALL(KORVCnvWCharToWVarcharSz, wide.characters, &wideBytes, target, sizeof target,
               &length, nullptr) == 0);
    CHECK(isWhole());
    CHECK(CALL(KORVCnvWVarcharSzToVarcharSz, wide.characters, &kNone, back, sizeof back, &length,
               &options) == 0);
    CHECK(length == narrow.length && equal(back, narrow.characters));

    const char one[] = {4, 0, static_cast<char>('a' + run.thread), 0, 0, 0};
    CHECK(CALL(KORVCnvWVarcharToWVarcharSz, one, &kNone, target, sizeof target, &length, nullptr) ==
          0);
    CHECK(length == 1 && target[0] == static_cast<wchar_t>('a' + run.thread) && target[1] == 0);
}

void convertNumbers(Run& run) {
    const auto number = -static_cast<int32_t>(run.number());
    const auto positive = run.number();
    const auto small = static_cast<int16_t>(number);
    const auto smallPositive = static_cast<uint16_t>(positive);
    wchar_t target[32];
    uint32_t length = 0;
    const auto isNumber = [&](bool negative) {
        wchar_t* end = nullptr;
        const long value = std::wcstol(target, &end, 10);
        return value == (negative ? number : -number) && end == target + length;
    };
    CHECK(CALL(KORVCnvIntToWVarcharSz1, &number, &kNone, target, sizeof target, &length, nullptr) ==
          0);
    CHECK(isNumber(true));
    CHECK(CALL(KORVCnvUIntToWVarcharSz, &positive, &kNone, target, sizeof target, &length,
               nullptr) == 0);
    CHECK(isNumber(false));
    CHECK(CALL(KORVCnvSmallIntToWVarcharSz, &small, &kNone, target, sizeof target, &length,
               nullptr) == 0);
    CHECK(isNumber(true));
    CHECK(CALL(KORVCnvSmallUIntToWVarcharSz, &smallPositive, &kNone, target, sizeof target, &length,
               nullptr) == 0);
    CHECK(isNumber(false));
    const auto day = static_cast<uint16_t>(10 + run.thread);
    const uint16_t moment[] = {2024, 3, day, 14, 7, 9};
    CHECK(CALL(KORVGetStringFromTS, moment, target, sizeof target, &length) == 0);
    CHECK(length == 19 && target[9] == static_cast<wchar_t>(L'0' + run.thread));
}
