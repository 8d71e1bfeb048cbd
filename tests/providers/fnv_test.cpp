// The hash of HASH against its definition.
#include "providers/fnv.h"

#include <gtest/gtest.h>

#include <random>

namespace {

// FNV-1a by its definition: each byte is combined with the state, which is then multiplied.
uint64_t plainFnv(uint64_t state, uint32_t character) {
    for (int byte = 0; byte < 4; ++byte) {
        state ^= character % 256;
        state *= 1099511628211u;
        character /= 256;
    }
    return state;
}

TEST(FnvTest, AgreesWithItsDefinition) {
    EXPECT_EQ(14695981039346656037u, provider::kFnvStart);
    std::mt19937_64 random(1);
    for (int i = 0; i < 1000; ++i) {
        const uint64_t state = random();
        for (uint32_t c = 0; c < 0x400; ++c) {
            ASSERT_EQ(plainFnv(state, c), provider::fnv(state, c)) << state << " " << c;
        }
        const auto c = static_cast<uint32_t>(random());
        ASSERT_EQ(plainFnv(state, c), provider::fnv(state, c)) << state << " " << c;
    }
}

}  // namespace
