// The block cipher AES of libcrypto.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

struct evp_cipher_ctx_st;

namespace crypto {

inline constexpr size_t kBlock = 16;

class Aes {
  public:
    // A key of 16, 24 or 32 bytes. Throws std::bad_alloc.
    explicit Aes(std::span<const uint8_t> key);

    // Encrypts blocks in place, each by itself: many of them in one call are fast.
    void encrypt(uint8_t* blocks, size_t count) const;

  private:
    struct Free {
        void operator()(evp_cipher_ctx_st* context) const;
    };
    std::unique_ptr<evp_cipher_ctx_st, Free> context_;
};

// The stream of AES-256 in counter mode, read as numbers. The first counter is 0.
class RandomNumbers {
  public:
    explicit RandomNumbers(std::span<const uint8_t> key);
    ~RandomNumbers();
    RandomNumbers(const RandomNumbers&) = delete;
    RandomNumbers& operator=(const RandomNumbers&) = delete;

    // A number below `limit`, which is 1 to 2^32 - 1; each is equally likely.
    uint32_t below(uint32_t limit);

  private:
    static constexpr size_t kBlocks = 64;
    uint32_t next();

    Aes aes_;
    uint64_t counter_ = 0;
    uint8_t stream_[kBlocks * kBlock] = {};
    size_t used_ = sizeof stream_;
};

}  // namespace crypto
