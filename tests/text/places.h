// Runs a test at every place that matters to code that reads and writes several units at once.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "support/fenced.h"

// Calls body(pointer) for `count` elements that end at an unreadable page, and then at every
// alignment within 16 bytes, right after an unreadable page and with canaries on both sides.
template <class T, class Body>
void atEveryPlace(std::size_t count, Body body) {
    {
        Fenced<T> last(count);
        body(last.data());
        EXPECT_TRUE(last.intact());
    }
    constexpr std::size_t margin = 64 / sizeof(T);
    for (std::size_t shift = 0; shift < 16 / sizeof(T); ++shift) {
        Fenced<T> around(shift + count + margin, Fenced<T>::Fence::before);
        body(around.data() + shift);
        const auto bytes = reinterpret_cast<const char*>(around.data());
        const std::size_t begin = shift * sizeof(T), end = begin + count * sizeof(T);
        for (std::size_t i = 0; i < around.size() * sizeof(T); ++i) {
            if (i == begin) i = end;
            ASSERT_EQ(Fenced<T>::canary, bytes[i])
                << "byte " << i << " around " << begin << ".." << end;
        }
        ASSERT_TRUE(around.intact());
    }
}

// Lengths around every size of block that code may use: all up to 70, and some further ones.
inline const std::vector<std::size_t>& everyLength() {
    static const std::vector<std::size_t> lengths = [] {
        std::vector<std::size_t> all;
        for (std::size_t length = 0; length <= 70; ++length) all.push_back(length);
        for (std::size_t around : {80u, 96u, 128u, 192u, 256u}) {
            for (const std::size_t length : {around - 1, around, around + 1, around + 5}) {
                all.push_back(length);
            }
        }
        return all;
    }();
    return lengths;
}

// All texts of up to `longest` characters over an alphabet.
template <class T, class Body>
void forEachText(std::basic_string_view<T> alphabet, std::size_t longest, Body body) {
    for (std::size_t length = 0; length <= longest; ++length) {
        std::basic_string<T> text(length, alphabet[0]);
        std::basic_string<std::size_t> digit(length, 0);
        for (;;) {
            body(text);
            std::size_t i = 0;
            while (i < length && ++digit[i] == alphabet.size()) {
                digit[i] = 0;
                text[i++] = alphabet[0];
            }
            if (i == length) break;
            text[i] = alphabet[digit[i]];
        }
    }
}
