// Arrays for the tests of the sort, of every shape that treats a quicksort differently.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <random>
#include <vector>

using Bytes = std::vector<unsigned char>;

enum class Shape {
    equal,
    sorted,
    reversed,
    organPipe,
    random,
    fewDistinct,
    sawtooth,
    lastOut,
    lastGreater,
    lastSmaller
};
inline constexpr Shape kAllShapes[] = {
    Shape::equal,       Shape::sorted,   Shape::reversed, Shape::organPipe,   Shape::random,
    Shape::fewDistinct, Shape::sawtooth, Shape::lastOut,  Shape::lastGreater, Shape::lastSmaller};

inline uint32_t keyOf(Shape shape, uint32_t i, uint32_t count, std::mt19937& random) {
    switch (shape) {
        case Shape::equal:
            return 7;
        case Shape::sorted:
            return i;
        case Shape::reversed:
            return count - i;
        case Shape::organPipe:
            return std::min(i, count - i);
        case Shape::random:
            return random();
        case Shape::fewDistinct:
            return random() % 4;
        case Shape::sawtooth:
            return i % 11;
        case Shape::lastOut:
            return i + 1 == count ? 0 : i + 1;
        // Equal elements except for the last one: neither side of the pivot waits to be sorted.
        case Shape::lastGreater:
            return i + 1 == count ? 2 : 1;
        case Shape::lastSmaller:
            return i + 1 == count ? 0 : 1;
    }
    return 0;
}

// Elements of `width` bytes: the key in up to four bytes, the highest first, then a number of its
// own for each element as far as there is room, then bytes that differ from element to element.
inline Bytes makeArray(Shape shape, uint32_t count, uint32_t width, std::mt19937& random) {
    Bytes array(std::size_t{count} * width);
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t key = keyOf(shape, i, count, random);
        unsigned char* element = array.data() + std::size_t{i} * width;
        const uint32_t keyBytes = std::min<uint32_t>(width, 4);
        for (uint32_t b = 0; b < width; ++b) {
            if (b < keyBytes) {
                element[b] = static_cast<unsigned char>(key >> 8 * (keyBytes - 1 - b));
            } else {
                element[b] = static_cast<unsigned char>(b < 8 ? i >> 8 * (b - 4) : i * 31 + b);
            }
        }
    }
    return array;
}

// The order of two elements by their keys: less than, equal to or greater than 0.
inline int32_t compareKeys(const unsigned char* first, const unsigned char* second,
                           uint32_t width) {
    return std::memcmp(first, second, std::min<uint32_t>(width, 4));
}

// The elements, in an order that depends on nothing but themselves.
inline std::vector<Bytes> contents(const Bytes& array, uint32_t width) {
    std::vector<Bytes> elements;
    for (std::size_t at = 0; at + width <= array.size(); at += width) {
        elements.emplace_back(array.begin() + static_cast<std::ptrdiff_t>(at),
                              array.begin() + static_cast<std::ptrdiff_t>(at + width));
    }
    std::sort(elements.begin(), elements.end());
    return elements;
}
