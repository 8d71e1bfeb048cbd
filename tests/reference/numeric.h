// Digit fields, transposition, permutations and reversal. Char is char or wchar_t.
#pragma once

#include <cstdint>

namespace reference {

// Writes the last `width` digits of a value; a terminator is not added. Returns what is left of the
// value.
template <class Char>
int32_t writeField(int32_t value, int width, Char* field);

// Whether a field is a number, which is then stored. With a negative count the tail begins the
// field.
template <class Char>
bool readField(const Char* field, int digits, int width, int32_t& value);

// The columns of the table of permutations.
extern const int kPermutations[23][4];

// Returns 0, or -1 when nothing is written. `length` characters of output and input may be the same
// ones. A number that would be shifted for ever is found by its states.
template <class Char>
int32_t transpose(const Char* input, Char* output, int16_t length, int32_t key, int16_t shift);

// Draws the numbers 1 to `count`, 16 at most, out of a shrinking pool.
void permute(int32_t key, int32_t count, int16_t* output);

int32_t reverse(uint64_t* value);

}  // namespace reference
