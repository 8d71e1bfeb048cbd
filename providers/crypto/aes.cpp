// AES through libcrypto's EVP interface.
#include "providers/crypto/aes.h"

#include <openssl/evp.h>

#include <cstring>

#include "providers/crypto/bytes.h"
#include "providers/crypto/crypto_error.h"
#include "secrets/secret_pages.h"

namespace crypto {

void Aes::Free::operator()(evp_cipher_ctx_st* context) const {
    EVP_CIPHER_CTX_free(context);
}

Aes::Aes(std::span<const uint8_t> key) : context_(EVP_CIPHER_CTX_new()) {
    const EVP_CIPHER* const cipher = key.size() == 16   ? EVP_aes_128_ecb()
                                     : key.size() == 24 ? EVP_aes_192_ecb()
                                                        : EVP_aes_256_ecb();
    require(context_ != nullptr &&
            EVP_EncryptInit_ex2(context_.get(), cipher, key.data(), nullptr, nullptr) == 1 &&
            EVP_CIPHER_CTX_set_padding(context_.get(), 0) == 1);
}

void Aes::encrypt(uint8_t* blocks, size_t count) const {
    int length = 0;
    require(EVP_EncryptUpdate(context_.get(), blocks, &length, blocks,
                              static_cast<int>(count * kBlock)) == 1);
}

RandomNumbers::RandomNumbers(std::span<const uint8_t> key) : aes_(key) {}

RandomNumbers::~RandomNumbers() {
    secrets::wipe(stream_, sizeof stream_);
}

uint32_t RandomNumbers::next() {
    if (used_ == sizeof stream_) {
        std::memset(stream_, 0, sizeof stream_);
        for (size_t i = 0; i < kBlocks; ++i) storeBig(counter_++, stream_ + i * kBlock + 8, 8);
        aes_.encrypt(stream_, kBlocks);
        used_ = 0;
    }
    const auto number = static_cast<uint32_t>(loadBig(stream_ + used_, 4));
    used_ += 4;
    return number;
}

uint32_t RandomNumbers::below(uint32_t limit) {
    const uint64_t fair = (uint64_t{1} << 32) / limit * limit;
    uint32_t number = next();
    while (number >= fair) number = next();
    return number % limit;
}

}  // namespace crypto
