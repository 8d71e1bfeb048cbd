// HMAC through libcrypto's EVP interface; the key is prepared once.
#include "providers/crypto/keyed_hash.h"

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/params.h>

#include "providers/crypto/bytes.h"
#include "providers/crypto/crypto_error.h"

namespace crypto {

void KeyedHash::Free::operator()(evp_mac_ctx_st* context) const {
    EVP_MAC_CTX_free(context);
}

KeyedHash::KeyedHash(std::span<const uint8_t> key) {
    EVP_MAC* const mac = EVP_MAC_fetch(nullptr, "HMAC", nullptr);
    context_.reset(EVP_MAC_CTX_new(mac));
    EVP_MAC_free(mac);
    char digest[] = "SHA256";
    const OSSL_PARAM parameters[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, digest, 0),
        OSSL_PARAM_construct_end(),
    };
    require(context_ != nullptr &&
            EVP_MAC_init(context_.get(), key.data(), key.size(), parameters) == 1);
}

Digest KeyedHash::of(std::string_view message) const {
    Digest digest;
    size_t length = 0;
    require(EVP_MAC_init(context_.get(), nullptr, 0, nullptr) == 1 &&
            EVP_MAC_update(context_.get(), reinterpret_cast<const uint8_t*>(message.data()),
                           message.size()) == 1 &&
            EVP_MAC_final(context_.get(), digest.data(), &length, digest.size()) == 1);
    return digest;
}

uint64_t KeyedHash::fractionOf(std::string_view message) const {
    return loadBig(of(message).data(), 8);
}

void writeBase32(const Digest& digest, size_t length, char* target) {
    constexpr char kDigits[] = "abcdefghijklmnopqrstuvwxyz234567";
    uint32_t bits = 0;
    int count = 0;
    size_t next = 0;
    for (size_t i = 0; i < length; ++i) {
        if (count < 5) {
            bits = bits << 8 | digest[next++];
            count += 8;
        }
        count -= 5;
        target[i] = kDigits[bits >> count & 31];
        bits &= (1u << count) - 1;
    }
}

}  // namespace crypto
