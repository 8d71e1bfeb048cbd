// A build without libcrypto: the engine refuses rules with a secret. A provider that another
// program opens with a key fails.
#include <stdexcept>

#include "providers/crypto/keyed_hash.h"
#include "providers/crypto/permutation.h"

namespace crypto {

namespace {
[[noreturn]] void fail() {
    throw std::runtime_error("built without libcrypto");
}
}  // namespace

void Aes::Free::operator()(evp_cipher_ctx_st*) const {}
void KeyedHash::Free::operator()(evp_mac_ctx_st*) const {}
void Number::Free::operator()(bignum_st*) const {}

Aes::Aes(std::span<const uint8_t>) {
    fail();
}
KeyedHash::KeyedHash(std::span<const uint8_t>) {
    fail();
}
Digest KeyedHash::of(std::string_view) const {
    fail();
}
uint64_t KeyedHash::fractionOf(std::string_view) const {
    fail();
}
void writeBase32(const Digest&, size_t, char*) {
    fail();
}

Number::Number(uint64_t) {}
Permutation::Permutation(std::span<const uint8_t>) : decimal_({}, 10), binary_({}, 2), tables_({}) {
    fail();
}
ShuffledTables::ShuffledTables(std::span<const uint8_t>) : hash_({}) {
    fail();
}
Ff1::Ff1(std::span<const uint8_t>, uint32_t) : aes_({}), radix_(0) {
    fail();
}
void Permutation::run(std::span<Permuted>, Direction) const {
    fail();
}
void Permuted::append(uint32_t, uint32_t) {
    fail();
}
uint32_t Permuted::takeLast(uint32_t) {
    fail();
}

}  // namespace crypto
