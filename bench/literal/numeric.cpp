// Digit fields, transposition, permutation and reversal, step by step.
#include <cstring>
#include <cwchar>

#include "korv/numeric.h"
#include "literal/literal.h"

namespace {

constexpr int16_t rows[23][12] = {
    {1, 2, 4, 3, 5, 6, 8, 7, 9, 10, 12, 11}, {4, 3, 1, 2, 8, 7, 5, 6, 12, 11, 9, 10},
    {3, 4, 1, 2, 7, 8, 5, 6, 11, 12, 9, 10}, {2, 1, 4, 3, 6, 5, 8, 7, 10, 9, 12, 11},
    {4, 2, 1, 3, 8, 6, 5, 7, 12, 10, 9, 11}, {1, 4, 3, 2, 5, 8, 7, 6, 9, 12, 11, 10},
    {2, 4, 1, 3, 6, 8, 5, 7, 10, 12, 9, 11}, {3, 1, 4, 2, 7, 5, 8, 6, 11, 9, 12, 10},
    {2, 3, 1, 4, 6, 7, 5, 8, 10, 11, 9, 12}, {1, 4, 2, 3, 5, 8, 6, 7, 9, 12, 10, 11},
    {4, 1, 3, 2, 8, 5, 7, 6, 12, 9, 11, 10}, {3, 4, 2, 1, 7, 8, 6, 5, 11, 12, 10, 9},
    {3, 2, 1, 4, 7, 6, 5, 8, 11, 10, 9, 12}, {1, 3, 2, 4, 5, 7, 6, 8, 9, 11, 10, 12},
    {4, 2, 3, 1, 8, 6, 7, 5, 12, 10, 11, 9}, {2, 4, 3, 1, 6, 8, 7, 5, 10, 12, 11, 9},
    {1, 3, 4, 2, 5, 7, 8, 6, 9, 11, 12, 10}, {2, 1, 3, 4, 6, 5, 7, 8, 10, 9, 11, 12},
    {3, 1, 2, 4, 7, 5, 6, 8, 11, 9, 10, 12}, {4, 3, 2, 1, 8, 7, 6, 5, 12, 11, 10, 9},
    {4, 1, 2, 3, 8, 5, 6, 7, 12, 9, 10, 11}, {3, 2, 4, 1, 7, 6, 8, 5, 11, 10, 12, 9},
    {2, 3, 4, 1, 6, 7, 8, 5, 10, 11, 12, 9}};

template <class Unit>
int32_t write(int32_t value, int16_t width, Unit* field) {
    for (int position = width - 1; position >= 0; --position) {
        field[position] = static_cast<Unit>('0' + value % 10);
        value /= 10;
    }
    return value == 0 ? 0 : -1;
}

// False when one of the characters is no digit.
template <class Unit>
bool readDigits(const Unit* field, int16_t digits, uint32_t& number) {
    number = 0;
    for (int i = 0; i < digits; ++i) {
        if (field[i] < '0' || field[i] > '9') return false;
        number = number * 10 + static_cast<uint32_t>(field[i] - '0');
    }
    return true;
}

template <class Unit>
int32_t transpose(const Unit* input, Unit* output, int16_t length, int32_t key, int16_t shift) {
    Unit copy[13];
    if (length > 12) return -1;
    std::memcpy(copy, input, static_cast<std::size_t>(length) * sizeof(Unit));
    copy[length] = 0;
    if (shift != 0) {
        int sum;
        do {
            sum = 0;
            for (int i = 0; copy[i]; ++i) {
                const int remainder = (copy[i] - '0' + shift) % 10;
                sum += remainder;
                copy[i] = static_cast<Unit>('0' + remainder);
                ++shift;
            }
            shift = static_cast<int16_t>(shift - length);
        } while (sum == 0);
    }
    const int16_t* row = rows[key % 23];
    for (int k = 0; copy[k]; ++k) output[k] = copy[row[k] - 1];
    return 0;
}

}  // namespace

int32_t literalLongToNum(int32_t value, int16_t width, char* field) {
    return write(value, width, field);
}

int32_t literalLongToNumW(int32_t value, int16_t width, wchar_t* field) {
    const int32_t status = write(value, width, field);
    field[width] = 0;
    return status;
}

int32_t literalNumToLong(const char* field, int16_t digits, int16_t width, int32_t* value) {
    uint32_t number;
    if (!readDigits(field, digits, number)) return -1;
    if (width > digits &&
        std::memcmp(field + digits, PXSpaces, static_cast<std::size_t>(width - digits)) != 0) {
        return -1;
    }
    *value = static_cast<int32_t>(number);
    return 0;
}

int32_t literalNumToLongW(const wchar_t* field, int16_t digits, int16_t width, int32_t* value) {
    uint32_t number;
    if (!readDigits(field, digits, number)) return -1;
    if (width > digits &&
        std::wcsncmp(field + digits, PXSpacesW, static_cast<std::size_t>(width - digits)) != 0) {
        return -1;
    }
    *value = static_cast<int32_t>(number);
    return 0;
}

int32_t literalTransposeNum(const char* input, char* output, int16_t length, int32_t key,
                            int16_t shift) {
    return transpose(input, output, length, key, shift);
}

int32_t literalTransposeNumW(const wchar_t* input, wchar_t* output, int16_t length, int32_t key,
                             int16_t shift) {
    return transpose(input, output, length, key, shift);
}

void literalGetPermutation(int32_t key, int32_t count, int16_t* output) {
    int16_t pool[16] = {};
    for (int i = 0; i < count; ++i) pool[i] = static_cast<int16_t>(i + 1);
    for (int i = 0; i < count - 1; ++i) {
        const int r = key % (count - i);
        output[i] = pool[r];
        for (int j = r; j < 15; ++j) pool[j] = pool[j + 1];
    }
    output[count - 1] = pool[0];
}

int32_t literalReverseNum(uint64_t* value) {
    uint64_t result = 0;
    while (*value != 0) {
        result = result * 10 + *value % 10;
        *value /= 10;
    }
    *value = result;
    return 0;
}
