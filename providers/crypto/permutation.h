// Keyed one-to-one mappings of the numbers 0 to size - 1, for any size.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "providers/crypto/ff1.h"
#include "providers/crypto/number.h"
#include "providers/crypto/shuffled_table.h"

namespace crypto {

// A number below a size. Numbers that do not fit 64 bits are in the large members.
struct Permuted {
    uint64_t number = 0;
    uint64_t size = 1;
    bool isLarge = false;
    Number largeNumber;
    Number largeSize;
    uint32_t powerOfTen = 0;  // the exponent when the size is a power of ten, or 0
    std::string tweak;

    void start() {
        number = 0;
        size = 1;
        isLarge = false;
        powerOfTen = 0;
        tweak.clear();
    }
    // Takes a numeral as the next, less significant one.
    void append(uint32_t numeral, uint32_t radix);
    // Gives the least significant numeral back.
    uint32_t takeLast(uint32_t radix);
};

class Permutation {
  public:
    explicit Permutation(std::span<const uint8_t> key);

    void run(std::span<Permuted> items, Direction direction) const;

    // From this size on FF1 is used.
    static constexpr uint64_t kSmallestForFf1 = 1000000;

  private:
    void lookUp(std::span<Permuted> items, Direction direction) const;
    void encipher(std::span<Permuted> items, const Ff1& mode, uint32_t numerals,
                  Direction direction) const;
    void encipherLarge(Permuted& item, Direction direction) const;

    Ff1 decimal_;
    Ff1 binary_;
    ShuffledTables tables_;
    // Reused.
    mutable std::vector<Ff1::Job> jobs_;
    mutable std::vector<size_t> chosen_;  // the items that are enciphered side by side
    mutable std::vector<bool> isDone_;
};

}  // namespace crypto
