// Integers become decimal digits as wide text.
#include <limits>
#include <random>
#include <string>

#include "datacnv/outcome.h"

namespace {

template <class Int>
using Conversion = int32_t (*)(const Int*, const uint32_t*, wchar_t*, uint32_t, uint32_t*,
                               const CnvOptions*);

template <class Int>
void expectDigits(Int value, Conversion<Int> conversion) {
    const std::string digits = std::to_string(value);
    expectText(std::wstring(digits.begin(), digits.end()),
               [=](wchar_t* target, uint32_t capacity, uint32_t* outLen) {
                   Fenced<Int> source{value};
                   return conversion(source.data(), &kNoLength, target, capacity, outLen, nullptr);
               });
}

// Zero, every power of ten with its neighbours, and the limits of the type.
template <class Int>
void expectDigitsAtLimits(Conversion<Int> conversion) {
    using Limits = std::numeric_limits<Int>;
    for (Int value : {Limits::min(), Limits::max()}) expectDigits(value, conversion);
    expectDigits(static_cast<Int>(Limits::min() + 1), conversion);
    for (int64_t power = 1; power <= Limits::max(); power *= 10) {
        for (int64_t value : {power - 1, power, power + 1, -power, 1 - power, -power - 1}) {
            if (value < Limits::min() || value > Limits::max()) continue;
            expectDigits(static_cast<Int>(value), conversion);
        }
    }
}

TEST(Integers, Signed32) {
    expectDigitsAtLimits<int32_t>(KORVCnvIntToWVarcharSz1);
}

TEST(Integers, Unsigned32) {
    expectDigitsAtLimits<uint32_t>(KORVCnvUIntToWVarcharSz);
}

TEST(Integers, Signed16) {
    expectDigitsAtLimits<int16_t>(KORVCnvSmallIntToWVarcharSz);
}

TEST(Integers, Unsigned16) {
    expectDigitsAtLimits<uint16_t>(KORVCnvSmallUIntToWVarcharSz);
}

template <class Int>
std::wstring digitsOf(Int value, Conversion<Int> conversion) {
    wchar_t target[12];
    uint32_t outLen = 0;
    if (conversion(&value, &kNoLength, target, sizeof target, &outLen, nullptr)) return L"failed";
    return target[outLen] == 0 ? std::wstring(target, outLen) : L"not terminated";
}

TEST(Integers, Every16BitValue) {
    for (int value = -32768; value <= 65535; ++value) {
        if (value <= 32767) {
            ASSERT_EQ(std::to_wstring(value),
                      digitsOf<int16_t>(static_cast<int16_t>(value), KORVCnvSmallIntToWVarcharSz));
        }
        if (value >= 0) {
            ASSERT_EQ(std::to_wstring(value), digitsOf<uint16_t>(static_cast<uint16_t>(value),
                                                                 KORVCnvSmallUIntToWVarcharSz));
        }
    }
}

TEST(Integers, Random32BitValues) {
    std::mt19937 random(20);
    for (int i = 0; i < 100000; ++i) {
        const uint32_t value = static_cast<uint32_t>(random()) >> (i % 32);
        ASSERT_EQ(std::to_wstring(value), digitsOf<uint32_t>(value, KORVCnvUIntToWVarcharSz));
        const int32_t other = static_cast<int32_t>(~value);
        ASSERT_EQ(std::to_wstring(other), digitsOf<int32_t>(other, KORVCnvIntToWVarcharSz1));
    }
}

}  // namespace
