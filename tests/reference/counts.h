// Counts of digits, and day numbers.
#pragma once

#include <cstdint>

#include "korv/datatypes.h"

namespace reference {

// Adds the digits of a value, an int32_t or int64_t, to the counter.
template <class T>
int32_t countDigits(T value, uint32_t* counter);

// Both have the 16-bit intermediates of the calculation.
OdbcDate dateOf(int32_t day);
int32_t dayOf(const OdbcDate& date);

}  // namespace reference
