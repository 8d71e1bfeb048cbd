// Keys and fingerprints of secrets, by HKDF (RFC 5869) with SHA-256.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace secrets {

inline constexpr uint32_t kKeyBytes = 32;

// Whether this build has libcrypto. The functions below need it.
bool hasCryptography();

// Derives the key of a provider's method to `key`, which has kKeyBytes. Both throw
// std::runtime_error when libcrypto fails.
void deriveKey(std::span<const uint8_t> secret, const std::string& scope,
               const std::string& provider, const std::string& method, uint8_t* key);

// Eight hexadecimal digits that tell secrets apart.
std::string fingerprint(std::span<const uint8_t> secret);

}  // namespace secrets
