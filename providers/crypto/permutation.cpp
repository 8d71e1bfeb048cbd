// Small sizes by tables, powers of ten by FF1 with radix 10, other sizes with radix 2.
#include "providers/crypto/permutation.h"

#include <algorithm>
#include <bit>

namespace crypto {

namespace {

// The mode and the number of numerals of an item.
struct Kind {
    enum Mode { same, table, decimal, binary, large } mode;
    uint32_t numerals;
    bool operator==(const Kind&) const = default;
};

Kind kindOf(const Permuted& item, const Ff1& decimal) {
    if (item.isLarge) return {Kind::large, 0};
    if (item.size == 1) return {Kind::same, 0};
    if (item.size < Permutation::kSmallestForFf1) return {Kind::table, 0};
    if (item.powerOfTen != 0) {
        return {decimal.isSmall(item.powerOfTen) ? Kind::decimal : Kind::large, item.powerOfTen};
    }
    return {Kind::binary, static_cast<uint32_t>(std::bit_width(item.size - 1))};
}

}  // namespace

void Permuted::append(uint32_t numeral, uint32_t radix) {
    if (!isLarge && size > UINT64_MAX / radix) {
        isLarge = true;
        largeNumber = Number(number);
        largeSize = Number(size);
    }
    if (isLarge) {
        largeNumber.multiplyAdd(radix, numeral);
        largeSize.multiplyAdd(radix, 0);
    } else {
        number = number * radix + numeral;
        size *= radix;
    }
}

uint32_t Permuted::takeLast(uint32_t radix) {
    if (isLarge) return largeNumber.divide(radix);
    const auto last = static_cast<uint32_t>(number % radix);
    number /= radix;
    return last;
}

Permutation::Permutation(std::span<const uint8_t> key)
    : decimal_(key, 10), binary_(key, 2), tables_(key) {}

void Permutation::run(std::span<Permuted> items, Direction direction) const {
    lookUp(items, direction);
    isDone_.assign(items.size(), false);
    for (size_t i = 0; i < items.size(); ++i) {
        const Kind kind = kindOf(items[i], decimal_);
        if (isDone_[i] || kind.mode == Kind::same || kind.mode == Kind::table) continue;
        if (kind.mode == Kind::large) {
            encipherLarge(items[i], direction);
            continue;
        }
        chosen_.clear();
        for (size_t other = i; other < items.size(); ++other) {
            if (isDone_[other] || kindOf(items[other], decimal_) != kind) continue;
            chosen_.push_back(other);
            isDone_[other] = true;
        }
        encipher(items, kind.mode == Kind::decimal ? decimal_ : binary_, kind.numerals, direction);
    }
}

void Permutation::lookUp(std::span<Permuted> items, Direction direction) const {
    const Permuted* before = nullptr;  // with the table at hand
    std::shared_ptr<const ShuffledTable> table;
    for (Permuted& item : items) {
        if (kindOf(item, decimal_).mode != Kind::table) continue;
        if (before == nullptr || before->size != item.size || before->tweak != item.tweak) {
            table = tables_.find(static_cast<uint32_t>(item.size), item.tweak, direction);
            before = &item;
        }
        item.number = (*table)[item.number];
    }
}

// Numbers that leave the range go round again. That keeps the mapping one-to-one.
void Permutation::encipher(std::span<Permuted> items, const Ff1& mode, uint32_t numerals,
                           Direction direction) const {
    while (!chosen_.empty()) {
        jobs_.clear();
        for (const size_t i : chosen_) jobs_.push_back({items[i].number, items[i].tweak});
        mode.run(jobs_, numerals, direction);
        size_t left = 0;
        for (size_t k = 0; k < chosen_.size(); ++k) {
            Permuted& item = items[chosen_[k]];
            item.number = jobs_[k].number;
            if (item.number >= item.size) chosen_[left++] = chosen_[k];
        }
        chosen_.resize(left);
    }
}

void Permutation::encipherLarge(Permuted& item, Direction direction) const {
    const bool wasLarge = item.isLarge;
    if (!wasLarge) {
        item.largeNumber = Number(item.number);
        item.largeSize = Number(item.size);
    }
    Number largest(item.largeSize);
    largest.subtract(Number(1));
    const bool isDecimal = item.powerOfTen != 0;
    const uint32_t numerals = isDecimal ? item.powerOfTen : largest.bits();
    do {
        (isDecimal ? decimal_ : binary_).run(item.largeNumber, numerals, item.tweak, direction);
    } while (!item.largeNumber.isBelow(item.largeSize));
    if (!wasLarge) item.number = item.largeNumber.toSmall();
}

}  // namespace crypto
