// The values that providers are tried with.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "session.h"

namespace kit {

struct TestValue {
    std::string kind;  // "card number 2", "line 3 of the file of values"
    std::string text;  // UTF-8, not empty
};

// The built-in values, and those of settings.values, one in a line. Throws std::runtime_error when
// the file cannot be read.
std::vector<TestValue> makeCorpus(const Settings& settings);

// The values of a corpus that are masked.
std::vector<TestValue> acceptedOf(const std::vector<TestValue>& corpus, Session& session);

// Pseudo-random numbers that are the same everywhere: splitmix64 (Steele, Lea and Flood, "Fast
// Splittable Pseudorandom Number Generators").
class Random {
  public:
    explicit Random(uint64_t seed) : state_(seed) {}
    uint64_t next() {
        uint64_t x = state_ += 0x9E3779B97F4A7C15u;
        x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
        x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
        return x ^ (x >> 31);
    }
    // Below `limit`, which is above 0.
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(next() % limit); }

  private:
    uint64_t state_;
};

// The value with other digits for its digits and other letters for its ASCII letters. `keep` of the
// first ones stay.
std::string variant(const std::string& text, Random& random, size_t keep = 0);

// Any value: a changed one of the corpus, or any characters.
std::string anyValue(const std::vector<TestValue>& corpus, Random& random);

}  // namespace kit
