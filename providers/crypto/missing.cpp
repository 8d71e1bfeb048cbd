// A build without libcrypto: the engine refuses rules with a secret, so none of this is called.
#include <cstdlib>

#include "providers/crypto/keyed_hash.h"
#include "providers/crypto/permutation.h"

namespace crypto {

void Aes::Free::operator()(evp_cipher_ctx_st*) const {}
void KeyedHash::Free::operator()(evp_mac_ctx_st*) const {}
void Number::Free::operator()(bignum_st*) const {}

Aes::Aes(std::span<const uint8_t>) {
    std::abort();
}
KeyedHash::KeyedHash(std::span<const uint8_t>) {
    std::abort();
}
Digest KeyedHash::of(std::string_view) const {
    std::abort();
}
uint64_t KeyedHash::fractionOf(std::string_view) const {
    std::abort();
}
void writeBase32(const Digest&, size_t, char*) {
    std::abort();
}

Number::Number(uint64_t) {}
Permutation::Permutation(std::span<const uint8_t>) : decimal_({}, 10), binary_({}, 2), tables_({}) {
    std::abort();
}
ShuffledTables::ShuffledTables(std::span<const uint8_t>) : hash_({}) {
    std::abort();
}
Ff1::Ff1(std::span<const uint8_t>, uint32_t) : aes_({}), radix_(0) {
    std::abort();
}
void Permutation::run(std::span<Permuted>, Direction) const {
    std::abort();
}
void Permuted::append(uint32_t, uint32_t) {
    std::abort();
}
uint32_t Permuted::takeLast(uint32_t) {
    std::abort();
}

}  // namespace crypto
