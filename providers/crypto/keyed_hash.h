// HMAC (RFC 2104) with SHA-256, of libcrypto.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

struct evp_mac_ctx_st;

namespace crypto {

using Digest = std::array<uint8_t, 32>;

class KeyedHash {
  public:
    // Throws std::bad_alloc.
    explicit KeyedHash(std::span<const uint8_t> key);

    Digest of(std::string_view message) const;
    // The number in the first 8 bytes of the digest.
    uint64_t fractionOf(std::string_view message) const;

  private:
    struct Free {
        void operator()(evp_mac_ctx_st* context) const;
    };
    std::unique_ptr<evp_mac_ctx_st, Free> context_;
};

// The first `length` characters of the base32 form (RFC 4648), in lower case; at most 51.
void writeBase32(const Digest& digest, size_t length, char* target);

}  // namespace crypto
