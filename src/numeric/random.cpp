// Bounded random values from the system library's generator.
#include <cstdlib>
#include <ctime>

#include "korv/numeric.h"

int32_t KORVRandomValue(int32_t range, uint8_t reseed) {
    if (reseed == 1) std::srand(static_cast<unsigned>(std::time(nullptr)));
    const int value = std::abs(std::rand());
    return range == 0 ? 0 : value % range;
}
