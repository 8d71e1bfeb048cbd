// Runs a conversion into fenced buffers of every capacity around the need, and checks the rules
// that all of them share.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "korv/datacnv.h"
#include "support/fenced.h"

constexpr uint32_t kUntouched = 0xDEADBEEF;
constexpr uint32_t kNoLength = 0;

inline CnvOptions codePage(uint32_t number, uint8_t flag = 0) {
    CnvOptions options;
    std::memset(&options, 0xEE, sizeof options);
    options.codePage = number;
    options.flag = flag;
    return options;
}

// convert(target, capacity, outLen) with a target of `capacity` bytes, of which whole units exist.
template <class Unit, class Convert>
int32_t statusAt(uint32_t capacity, Convert convert) {
    Fenced<Unit> target(capacity / sizeof(Unit));
    uint32_t outLen = kUntouched;
    const int32_t status = convert(target.data(), capacity, &outLen);
    EXPECT_TRUE(target.intact());
    if (status != CNV_SUCCESS) {
        EXPECT_EQ(kUntouched, outLen);
        if (target.size() > 0) {
            EXPECT_EQ(Unit{}, target[0]);
        }
    }
    return status;
}

// The conversion gives `expected` wherever it fits with its terminator, and fails elsewhere.
template <class Unit, class Convert>
void expectText(const std::basic_string<Unit>& expected, Convert convert) {
    const auto need = static_cast<uint32_t>((expected.size() + 1) * sizeof(Unit));
    for (uint32_t capacity = 0; capacity < need; ++capacity) {
        ASSERT_EQ(CNV_TARGET_TOO_SMALL, statusAt<Unit>(capacity, convert)) << capacity;
    }
    for (uint32_t capacity = need; capacity <= need + 9; ++capacity) {
        Fenced<Unit> target(capacity / sizeof(Unit));
        uint32_t outLen = kUntouched;
        ASSERT_EQ(CNV_SUCCESS, convert(target.data(), capacity, &outLen)) << capacity;
        ASSERT_TRUE(target.intact());
        ASSERT_EQ(expected.size(), outLen);
        ASSERT_EQ(expected, std::basic_string<Unit>(target.data(), outLen));
        ASSERT_EQ(Unit{}, target[outLen]);
    }
}

// The conversion fails with `status` into a target of any size that takes `units` and a terminator.
template <class Unit, class Convert>
void expectFailure(int32_t status, uint32_t units, Convert convert) {
    for (uint32_t more = 0; more < 3; ++more) {
        const auto capacity = static_cast<uint32_t>((units + 1 + more) * sizeof(Unit));
        ASSERT_EQ(status, statusAt<Unit>(capacity, convert));
    }
}

// Fixed narrow text next to an unreadable page, as a conversion for the functions above.
inline auto fixedText(const std::string& text, const CnvOptions* options) {
    return [=](wchar_t* target, uint32_t capacity, uint32_t* outLen) {
        Fenced<char> source(text, false);
        const auto length = static_cast<uint32_t>(text.size());
        return KORVCnvCharToWVarcharSz(source.data(), &length, target, capacity, outLen, options);
    };
}

// Zero-terminated wide text, as a conversion to narrow text.
inline auto narrowed(const std::wstring& text, const CnvOptions* options) {
    return [=](char* target, uint32_t capacity, uint32_t* outLen) {
        Fenced<wchar_t> source(text);
        return KORVCnvWVarcharSzToVarcharSz(source.data(), &kNoLength, target, capacity, outLen,
                                            options);
    };
}
