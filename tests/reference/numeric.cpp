// Digit fields, transposition, permutations and reversal, step by step.
#include "reference/numeric.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <vector>

#include "korv/numeric.h"

namespace reference {

namespace {

constexpr int kMostBlanks = 256;

bool isBlank(const char* tail, int count) {
    return count <= kMostBlanks + 1 &&
           std::memcmp(tail, PXSpaces, static_cast<std::size_t>(count)) == 0;
}
bool isBlank(const wchar_t* tail, int count) {
    return std::wcsncmp(tail, PXSpacesW, static_cast<std::size_t>(count)) == 0;
}

}  // namespace

template <class Char>
int32_t writeField(int32_t value, int width, Char* field) {
    for (int position = width - 1; position >= 0; --position) {
        field[position] = static_cast<Char>('0' + value % 10);
        value /= 10;
    }
    return value;
}
template int32_t writeField(int32_t, int, char*);
template int32_t writeField(int32_t, int, wchar_t*);

template <class Char>
bool readField(const Char* field, int digits, int width, int32_t& value) {
    uint32_t number = 0;
    for (int i = 0; i < digits; ++i) {
        if (field[i] < '0' || field[i] > '9') return false;
        number = number * 10 + static_cast<uint32_t>(field[i] - '0');
    }
    if (width > digits && !isBlank(field + std::max(digits, 0), width - digits)) return false;
    value = static_cast<int32_t>(number);
    return true;
}
template bool readField(const char*, int, int, int32_t&);
template bool readField(const wchar_t*, int, int, int32_t&);

const int kPermutations[23][4] = {
    {1, 2, 4, 3}, {4, 3, 1, 2}, {3, 4, 1, 2}, {2, 1, 4, 3}, {4, 2, 1, 3}, {1, 4, 3, 2},
    {2, 4, 1, 3}, {3, 1, 4, 2}, {2, 3, 1, 4}, {1, 4, 2, 3}, {4, 1, 3, 2}, {3, 4, 2, 1},
    {3, 2, 1, 4}, {1, 3, 2, 4}, {4, 2, 3, 1}, {2, 4, 3, 1}, {1, 3, 4, 2}, {2, 1, 3, 4},
    {3, 1, 2, 4}, {4, 3, 2, 1}, {4, 1, 2, 3}, {3, 2, 4, 1}, {2, 3, 4, 1}};

template <class Char>
int32_t transpose(const Char* input, Char* output, int16_t length, int32_t key, int16_t shift) {
    if (length < 0 || length > 12) return -1;
    if (length == 0) return 0;
    using Work = std::array<Char, 13>;
    Work work{};
    std::memcpy(work.data(), input, static_cast<std::size_t>(length) * sizeof(Char));
    work[static_cast<std::size_t>(length)] = 0;
    if (shift != 0) {
        std::vector<Work> seen;
        for (;;) {
            int sum = 0;
            std::size_t i = 0;
            do {
                const int32_t t = static_cast<int32_t>(work[i]) - '0' + shift + static_cast<int>(i);
                sum += t % 10;
                work[i] = static_cast<Char>('0' + t % 10);
                ++i;
            } while (work[i] != 0);
            if (sum != 0) break;
            if (std::find(seen.begin(), seen.end(), work) != seen.end()) return -1;
            seen.push_back(work);
        }
    }
    int row = key % 23;
    if (row < 0) row += 23;
    for (std::size_t k = 0; work[k] != 0; ++k) {
        output[k] = work[k / 4 * 4 + static_cast<std::size_t>(kPermutations[row][k % 4]) - 1];
    }
    return 0;
}
template int32_t transpose(const char*, char*, int16_t, int32_t, int16_t);
template int32_t transpose(const wchar_t*, wchar_t*, int16_t, int32_t, int16_t);

void permute(int32_t key, int32_t count, int16_t* output) {
    int16_t pool[17] = {};
    for (int i = 0; i < count; ++i) pool[i] = static_cast<int16_t>(i + 1);
    for (int left = count; left > 0; --left) {
        int r = key % left;
        if (r < 0) r += left;
        *output++ = pool[r];
        for (int j = r; j < 16; ++j) pool[j] = pool[j + 1];
    }
}

int32_t reverse(uint64_t* value) {
    uint64_t result = 0;
    while (*value != 0) {
        result = result * 10 + *value % 10;
        *value /= 10;
    }
    *value = result;
    return 0;
}

}  // namespace reference
