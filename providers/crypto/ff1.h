// Format-preserving encryption: the mode FF1 of NIST SP 800-38G, which libcrypto lacks.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "providers/crypto/aes.h"
#include "providers/crypto/number.h"

namespace crypto {

enum class Direction { encrypt, decrypt };

class Ff1 {
  public:
    // `radix` is 2 to 65,536. Throws std::bad_alloc, as all members do.
    Ff1(std::span<const uint8_t> key, uint32_t radix);

    // A number of `numerals` numerals, and its tweak.
    struct Job {
        uint64_t number;
        std::string_view tweak;
    };
    // Whether numbers of so many numerals can be done as jobs.
    bool isSmall(uint32_t numerals) const;
    // Works on many numbers at once, all of them with the same number of numerals.
    void run(std::span<Job> jobs, uint32_t numerals, Direction direction) const;

    // Works on a number of any size, with at least two numerals.
    void run(Number& number, uint32_t numerals, std::string_view tweak, Direction direction) const;

  private:
    struct Lane {
        uint8_t mac[kBlock];  // of all that is the same in each round
        uint64_t left;
        uint64_t right;
    };
    void startLanes(std::span<const Job> jobs, uint32_t numerals, size_t bytes) const;
    void putFirstBlock(uint8_t* block, uint32_t numerals, size_t tweakLength) const;

    Aes aes_;
    uint32_t radix_;
    // Reused: the state of a provider belongs to one thread.
    mutable std::vector<Lane> lanes_;
    mutable std::vector<uint8_t> blocks_;
};

}  // namespace crypto
