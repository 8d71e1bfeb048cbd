// HKDF of libcrypto.
#include "secrets/keys.h"

#include <openssl/core_names.h>
#include <openssl/kdf.h>
#include <openssl/params.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace secrets {

namespace {

struct FreeKdf {
    void operator()(EVP_KDF* kdf) const { EVP_KDF_free(kdf); }
    void operator()(EVP_KDF_CTX* context) const { EVP_KDF_CTX_free(context); }
};

// Without a salt.
void hkdf(std::span<const uint8_t> secret, const std::string& info, std::span<uint8_t> result) {
    const std::unique_ptr<EVP_KDF, FreeKdf> kdf(EVP_KDF_fetch(nullptr, "HKDF", nullptr));
    const std::unique_ptr<EVP_KDF_CTX, FreeKdf> context(EVP_KDF_CTX_new(kdf.get()));
    char digest[] = "SHA256";
    const OSSL_PARAM parameters[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest, 0),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_KEY, const_cast<uint8_t*>(secret.data()),
                                          secret.size()),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_INFO, const_cast<char*>(info.data()),
                                          info.size()),
        OSSL_PARAM_construct_end(),
    };
    if (context == nullptr ||
        EVP_KDF_derive(context.get(), result.data(), result.size(), parameters) != 1) {
        throw std::runtime_error("libcrypto cannot derive a key");
    }
}

}  // namespace

bool hasCryptography() {
    return true;
}

void deriveKey(std::span<const uint8_t> secret, const std::string& scope,
               const std::string& provider, const std::string& method, uint8_t* key) {
    const char zero = '\0';
    hkdf(secret, "korv/1" + (zero + scope) + zero + provider + zero + method, {key, kKeyBytes});
}

std::string fingerprint(std::span<const uint8_t> secret) {
    uint8_t bytes[4];
    hkdf(secret, "korv/fingerprint", bytes);
    char digits[9];
    std::snprintf(digits, sizeof digits, "%02x%02x%02x%02x", unsigned{bytes[0]}, unsigned{bytes[1]},
                  unsigned{bytes[2]}, unsigned{bytes[3]});
    return digits;
}

}  // namespace secrets
