// Whole numbers of any size, on libcrypto's.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

struct bignum_st;

namespace crypto {

class Number {
  public:
    // Throws std::bad_alloc, as all members that change numbers do.
    explicit Number(uint64_t value = 0);
    Number(const Number& other);
    Number& operator=(const Number& other);
    Number(Number&&) noexcept = default;
    Number& operator=(Number&&) noexcept = default;
    static Number fromBytes(std::span<const uint8_t> bytes);

    // this * factor + summand
    void multiplyAdd(uint32_t factor, uint32_t summand);
    // Divides, and returns the remainder.
    uint32_t divide(uint32_t divisor);

    void add(const Number& other);
    void subtract(const Number& other);
    void multiply(const Number& other);
    // The rest of a division, not negative; the quotient is left in `quotient`, if that is given.
    void reduce(const Number& modulus, Number* quotient = nullptr);
    void power(uint32_t exponent);

    // The value of a number below 2^64.
    uint64_t toSmall() const;
    bool isBelow(const Number& other) const;
    uint32_t bits() const;
    // Fills the bytes from the end; throws when they are too few.
    void toBytes(std::span<uint8_t> bytes) const;

  private:
    struct Free {
        void operator()(bignum_st* number) const;
    };
    std::unique_ptr<bignum_st, Free> number_;
};

}  // namespace crypto
