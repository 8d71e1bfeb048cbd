// FF1, steps 1 to 7 of the standard; small numbers in 64-bit arithmetic, many of them side by side.
#include "providers/crypto/ff1.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "providers/crypto/bytes.h"
#include "secrets/secret_pages.h"

namespace crypto {

namespace {

constexpr uint32_t kRounds = 10;

// radix^exponent, or more than 2^32 when it is more.
uint64_t powerOf(uint64_t radix, uint32_t exponent) {
    uint64_t power = 1;
    for (uint32_t i = 0; i < exponent && power <= uint64_t{1} << 32; ++i) power *= radix;
    return power;
}

// Bytes that hold any number below `power`.
size_t bytesBelow(uint64_t power) {
    size_t bytes = 0;
    for (uint64_t largest = power - 1; largest > 0; largest >>= 8) ++bytes;
    return bytes;
}

// The length of T || 0...0 || i || NUM(B) in blocks.
size_t blocksOf(size_t tweakLength, size_t bytes) {
    return (tweakLength + bytes + 1 + kBlock - 1) / kBlock;
}

// Byte `at` of T || 0...0, for the xor with a block.
void mix(uint8_t* block, std::string_view tweak, size_t from) {
    for (size_t i = from; i < std::min(from + kBlock, tweak.size()); ++i) {
        block[i - from] ^= static_cast<uint8_t>(tweak[i]);
    }
}

}  // namespace

Ff1::Ff1(std::span<const uint8_t> key, uint32_t radix) : aes_(key), radix_(radix) {}

bool Ff1::isSmall(uint32_t numerals) const {
    return numerals >= 2 && powerOf(radix_, numerals - numerals / 2) <= uint64_t{1} << 32;
}

// The block P of the standard.
void Ff1::putFirstBlock(uint8_t* block, uint32_t numerals, size_t tweakLength) const {
    block[0] = 1;
    block[1] = 2;
    block[2] = 1;
    storeBig(radix_, block + 3, 3);
    block[6] = kRounds;
    block[7] = static_cast<uint8_t>(numerals / 2);
    storeBig(numerals, block + 8, 4);
    storeBig(tweakLength, block + 12, 4);
}

// The blocks before the last one of each round are the same in all rounds.
void Ff1::startLanes(std::span<const Job> jobs, uint32_t numerals, size_t bytes) const {
    lanes_.resize(jobs.size());
    blocks_.resize(jobs.size() * kBlock);
    size_t most = 0;
    for (size_t i = 0; i < jobs.size(); ++i) {
        putFirstBlock(&blocks_[i * kBlock], numerals, jobs[i].tweak.size());
        most = std::max(most, blocksOf(jobs[i].tweak.size(), bytes));
    }
    aes_.encrypt(blocks_.data(), jobs.size());
    for (size_t i = 0; i < jobs.size(); ++i) {
        std::memcpy(lanes_[i].mac, &blocks_[i * kBlock], kBlock);
    }
    for (size_t block = 0; block + 1 < most; ++block) {
        const auto continues = [&](size_t i) {
            return block + 1 < blocksOf(jobs[i].tweak.size(), bytes);
        };
        size_t count = 0;
        for (size_t i = 0; i < jobs.size(); ++i) {
            if (!continues(i)) continue;
            mix(lanes_[i].mac, jobs[i].tweak, block * kBlock);
            std::memcpy(&blocks_[count++ * kBlock], lanes_[i].mac, kBlock);
        }
        aes_.encrypt(blocks_.data(), count);
        count = 0;
        for (size_t i = 0; i < jobs.size(); ++i) {
            if (continues(i)) std::memcpy(lanes_[i].mac, &blocks_[count++ * kBlock], kBlock);
        }
    }
    for (size_t i = 0; i < jobs.size(); ++i) {
        mix(lanes_[i].mac, jobs[i].tweak, (blocksOf(jobs[i].tweak.size(), bytes) - 1) * kBlock);
    }
}

void Ff1::run(std::span<Job> jobs, uint32_t numerals, Direction direction) const {
    const uint32_t leftNumerals = numerals / 2;
    const uint64_t leftPower = powerOf(radix_, leftNumerals);
    const uint64_t rightPower = powerOf(radix_, numerals - leftNumerals);
    const size_t bytes = bytesBelow(rightPower);  // at most 4, so that 8 bytes of a block are added
    startLanes(jobs, numerals, bytes);
    for (size_t i = 0; i < jobs.size(); ++i) {
        lanes_[i].left = jobs[i].number / rightPower;
        lanes_[i].right = jobs[i].number % rightPower;
    }
    const bool forward = direction == Direction::encrypt;
    for (uint32_t step = 0; step < kRounds; ++step) {
        const uint32_t round = forward ? step : kRounds - 1 - step;
        const uint64_t power = round % 2 == 0 ? leftPower : rightPower;
        for (size_t i = 0; i < jobs.size(); ++i) {
            const Lane& lane = lanes_[i];
            uint64_t last = loadBig(lane.mac + 8, 8);
            last ^= uint64_t{round} << 8 * bytes | (forward ? lane.right : lane.left);
            std::memcpy(&blocks_[i * kBlock], lane.mac, 8);
            storeBig(last, &blocks_[i * kBlock + 8], 8);
        }
        aes_.encrypt(blocks_.data(), jobs.size());
        for (size_t i = 0; i < jobs.size(); ++i) {
            Lane& lane = lanes_[i];
            const uint64_t change = loadBig(&blocks_[i * kBlock], 8) % power;
            if (forward) {
                const uint64_t sum = lane.left + change;
                lane.left = lane.right;
                lane.right = sum < power ? sum : sum - power;
            } else {
                const uint64_t rest = lane.right + (lane.right < change ? power : 0) - change;
                lane.right = lane.left;
                lane.left = rest;
            }
        }
    }
    for (size_t i = 0; i < jobs.size(); ++i) {
        jobs[i].number = lanes_[i].left * rightPower + lanes_[i].right;
    }
}

void Ff1::run(Number& number, uint32_t numerals, std::string_view tweak,
              Direction direction) const {
    const uint32_t leftNumerals = numerals / 2;
    Number leftPower(radix_);
    leftPower.power(leftNumerals);
    Number rightPower(radix_);
    rightPower.power(numerals - leftNumerals);
    Number largest(rightPower);
    largest.subtract(Number(1));
    const size_t bytes = (largest.bits() + 7) / 8;
    const size_t added = (bytes + 3) / 4 * 4 + 4;

    // The text that is authenticated: P || T || 0...0 || i || NUM(B).
    const size_t blocks = 1 + blocksOf(tweak.size(), bytes);
    std::vector<uint8_t> text(blocks * kBlock);
    putFirstBlock(text.data(), numerals, tweak.size());
    std::copy(tweak.begin(), tweak.end(), text.begin() + kBlock);
    const std::span<uint8_t> half(&text[text.size() - bytes], bytes);

    Number left;
    Number right(number);
    right.reduce(rightPower, &left);
    const bool forward = direction == Direction::encrypt;
    std::vector<uint8_t> stream((added + kBlock - 1) / kBlock * kBlock);
    for (uint32_t step = 0; step < kRounds; ++step) {
        const uint32_t round = forward ? step : kRounds - 1 - step;
        text[text.size() - bytes - 1] = static_cast<uint8_t>(round);
        (forward ? right : left).toBytes(half);
        uint8_t mac[kBlock] = {};
        for (size_t block = 0; block < blocks; ++block) {
            for (size_t i = 0; i < kBlock; ++i) mac[i] ^= text[block * kBlock + i];
            aes_.encrypt(mac, 1);
        }
        for (size_t block = 0; block * kBlock < stream.size(); ++block) {
            uint8_t* const part = &stream[block * kBlock];
            std::memcpy(part, mac, kBlock);
            if (block == 0) continue;
            storeBig(loadBig(mac + 8, 8) ^ block, part + 8, 8);
            aes_.encrypt(part, 1);
        }
        Number change = Number::fromBytes({stream.data(), added});
        const Number& power = round % 2 == 0 ? leftPower : rightPower;
        if (forward) {
            left.add(change);
            left.reduce(power);
            std::swap(left, right);
        } else {
            right.subtract(change);
            right.reduce(power);
            std::swap(left, right);
        }
    }
    left.multiply(rightPower);
    left.add(right);
    number = std::move(left);
    secrets::wipe(text.data(), text.size());
    secrets::wipe(stream.data(), stream.size());
}

}  // namespace crypto
