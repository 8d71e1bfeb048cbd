// What the providers here share beyond korv/provider.hpp: keys, and values that are permuted.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "korv/provider.hpp"
#include "providers/crypto/permutation.h"
#include "providers/value_text.h"

namespace provider {

// The key of a keyed method. Throws Error without one.
inline std::span<const uint8_t, kKeyBytes> keyOf(const Operands& operands) {
    return std::span<const uint8_t, kKeyBytes>(operands.key(), kKeyBytes);
}

// A positive pseudo-random number made of a key and a position.
uint32_t mix(uint32_t key, uint32_t position);

// A provider that can also permute values under a key. Beside mask it has
//     const crypto::Permutation* permutation() const;  // nullptr when the rule's method is another
//     template <class Char> void prepare(Text<Char>& text, crypto::Permuted& number) const;
//     template <class Char> void finish(Text<Char>& text, crypto::Permuted& number) const;
// prepare turns the value into a number, and finish writes the permuted one into the text. That is
// done for many values together, and backwards to unmask.
template <class Provider>
class Permuting {
  public:
    static constexpr auto& kSampleRules = Provider::kSampleRules;

    explicit Permuting(const Operands& operands) : provider_(operands) {}

    template <class Char>
    void mask(Text<Char>& text) {
        if (provider_.permutation() == nullptr) return provider_.mask(text);
        permute(text, crypto::Direction::encrypt);
    }

    template <class Char>
    void unmask(Text<Char>& text) {
        if (provider_.permutation() == nullptr) throw Error(kUnexpected, {});
        permute(text, crypto::Direction::decrypt);
    }

    bool usesBatches() const { return provider_.permutation() != nullptr; }

    template <class Char>
    void maskAll(std::vector<Item<Char>>& items) {
        if (numbers_.size() < items.size()) numbers_.resize(items.size());
        size_t count = 0;
        for (Item<Char>& item : items) {
            try {
                crypto::Permuted& number = numbers_[count];
                number.start();
                provider_.prepare(item.text, number);
                ++count;
            } catch (const Error&) {
                item.isLeft = true;
            }
        }
        provider_.permutation()->run({numbers_.data(), count}, crypto::Direction::encrypt);
        count = 0;
        for (Item<Char>& item : items) {
            if (!item.isLeft) provider_.finish(item.text, numbers_[count++]);
        }
    }

    uint32_t promises() const { return provider_.promises(); }

  private:
    template <class Char>
    void permute(Text<Char>& text, crypto::Direction direction) {
        if (numbers_.empty()) numbers_.resize(1);
        crypto::Permuted& number = numbers_.front();
        number.start();
        provider_.prepare(text, number);
        provider_.permutation()->run({&number, 1}, direction);
        provider_.finish(text, number);
    }

    const Provider provider_;
    std::vector<crypto::Permuted> numbers_;  // used for one batch after another
};

}  // namespace provider
