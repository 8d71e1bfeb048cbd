// Arithmetic with libcrypto's BIGNUM.
#include "providers/crypto/number.h"

#include <openssl/bn.h>

#include "providers/crypto/bytes.h"
#include "providers/crypto/crypto_error.h"

namespace crypto {

namespace {

struct FreeContext {
    void operator()(BN_CTX* context) const { BN_CTX_free(context); }
};

using Context = std::unique_ptr<BN_CTX, FreeContext>;

Context scratch() {
    Context context(BN_CTX_new());
    require(context != nullptr);
    return context;
}

}  // namespace

void Number::Free::operator()(bignum_st* number) const {
    BN_clear_free(number);
}

Number::Number(uint64_t value) : number_(BN_new()) {
    uint8_t bytes[8];
    storeBig(value, bytes, sizeof bytes);
    require(number_ != nullptr && BN_bin2bn(bytes, sizeof bytes, number_.get()) != nullptr);
}

Number::Number(const Number& other) : number_(BN_dup(other.number_.get())) {
    require(number_ != nullptr);
}

Number& Number::operator=(const Number& other) {
    require(BN_copy(number_.get(), other.number_.get()) != nullptr);
    return *this;
}

Number Number::fromBytes(std::span<const uint8_t> bytes) {
    Number number;
    require(BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), number.number_.get()) !=
            nullptr);
    return number;
}

void Number::multiplyAdd(uint32_t factor, uint32_t summand) {
    require(BN_mul_word(number_.get(), factor) == 1 && BN_add_word(number_.get(), summand) == 1);
}

uint32_t Number::divide(uint32_t divisor) {
    return static_cast<uint32_t>(BN_div_word(number_.get(), divisor));
}

void Number::add(const Number& other) {
    require(BN_add(number_.get(), number_.get(), other.number_.get()) == 1);
}

void Number::subtract(const Number& other) {
    require(BN_sub(number_.get(), number_.get(), other.number_.get()) == 1);
}

void Number::multiply(const Number& other) {
    require(BN_mul(number_.get(), number_.get(), other.number_.get(), scratch().get()) == 1);
}

void Number::reduce(const Number& modulus, Number* quotient) {
    require(BN_div(quotient == nullptr ? nullptr : quotient->number_.get(), number_.get(),
                   number_.get(), modulus.number_.get(), scratch().get()) == 1);
    if (BN_is_negative(number_.get()) != 0) add(modulus);
}

void Number::power(uint32_t exponent) {
    require(BN_exp(number_.get(), number_.get(), Number(exponent).number_.get(), scratch().get()) ==
            1);
}

uint64_t Number::toSmall() const {
    uint8_t bytes[8];
    toBytes(bytes);
    return loadBig(bytes, sizeof bytes);
}

bool Number::isBelow(const Number& other) const {
    return BN_cmp(number_.get(), other.number_.get()) < 0;
}

uint32_t Number::bits() const {
    return static_cast<uint32_t>(BN_num_bits(number_.get()));
}

void Number::toBytes(std::span<uint8_t> bytes) const {
    require(BN_bn2binpad(number_.get(), bytes.data(), static_cast<int>(bytes.size())) >= 0);
}

}  // namespace crypto
