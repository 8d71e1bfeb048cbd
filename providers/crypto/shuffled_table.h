// Permutations of small ranges as tables, and the cache that all instances of a provider share.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "providers/crypto/ff1.h"
#include "providers/crypto/keyed_hash.h"
#include "secrets/secret_pages.h"

namespace crypto {

// The numbers 0 to size - 1, shuffled by the method of Fisher and Yates; or the way back.
class ShuffledTable {
  public:
    ShuffledTable(const Digest& key, uint32_t size, Direction direction);

    uint32_t operator[](uint64_t number) const { return places_[number]; }

  private:
    secrets::SecretPages memory_;
    uint32_t* places_;
};

class ShuffledTables {
  public:
    explicit ShuffledTables(std::span<const uint8_t> key);

    // The table of a size and a tweak, made unless the cache holds it.
    std::shared_ptr<const ShuffledTable> find(uint32_t size, std::string_view tweak,
                                              Direction direction) const;

    // Tables that were used last are kept up to this sum.
    static constexpr size_t kCacheBytes = size_t{16} << 20;

  private:
    KeyedHash hash_;
    Digest name_;  // stands for the key in the cache
};

}  // namespace crypto
