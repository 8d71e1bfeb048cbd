// Integers to digit fields and back, digit by digit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace slow {

// The field by plain division; what is left of the value is left in `value`.
template <class Char>
std::basic_string<Char> divided(int32_t& value, int width) {
    std::basic_string<Char> field(static_cast<std::size_t>(width), Char{});
    for (int i = width - 1; i >= 0; --i) {
        field[static_cast<std::size_t>(i)] = static_cast<Char>(0x30 + value % 10);
        value /= 10;
    }
    return field;
}

// Whether the field is a number, and which. With a negative count the tail begins the field.
template <class Char>
bool readField(const Char* field, int digits, int width, int32_t& value) {
    uint32_t number = 0;
    int at = 0;
    for (; at < digits; ++at) {
        const int32_t code = field[at];  // a narrow character is signed
        if (code < 0x30 || code > 0x39) return false;
        number = number * 10 + static_cast<uint32_t>(code - 0x30);
    }
    for (int i = 0; i < width - digits; ++i) {
        if (i > 256) return false;
        const Char wanted = i < 256 ? 0x20 : 0;
        if (field[at + i] != wanted) return false;
        if (sizeof(Char) == sizeof(wchar_t) && wanted == 0) break;
    }
    value = static_cast<int32_t>(number);
    return true;
}

}  // namespace slow
