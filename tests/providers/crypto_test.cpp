// The building blocks of the keyed methods: FF1, tables, the permutation made of both, and HMAC.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <numeric>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "providers/crypto/aes.h"
#include "providers/crypto/bytes.h"
#include "providers/crypto/ff1.h"
#include "providers/crypto/keyed_hash.h"
#include "providers/crypto/permutation.h"
#include "providers/crypto/shuffled_table.h"

namespace {

using crypto::Direction;
using crypto::Ff1;
using crypto::Number;
using crypto::Permutation;
using crypto::Permuted;

constexpr uint8_t kKey[32] = {1, 2, 3, 4, 5, 6, 7, 8, 9};

std::vector<uint8_t> bytesOf(const std::string& hex) {
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < hex.size(); i += 2) {
        bytes.push_back(static_cast<uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

uint32_t valueOf(char numeral) {
    return static_cast<uint32_t>(numeral <= '9' ? numeral - '0' : numeral - 'a' + 10);
}

// Numerals as a number, and back.
Number numberOf(const std::string& numerals, uint32_t radix) {
    Number number;
    for (const char c : numerals) number.multiplyAdd(radix, valueOf(c));
    return number;
}

std::string numeralsOf(Number number, uint32_t radix, size_t count) {
    std::string numerals(count, '0');
    for (size_t i = count; i > 0; --i) {
        numerals[i - 1] = "0123456789abcdefghijklmnopqrstuvwxyz"[number.divide(radix)];
    }
    return numerals;
}

struct Vector {
    std::string source, key, radix, tweak, plain, cipher;
};

std::vector<Vector> publishedVectors() {
    std::ifstream file(KORV_SOURCE_DIR "/tests/methods/ff1_vectors.csv");
    std::vector<Vector> vectors;
    std::string line;
    while (std::getline(file, line)) {
        if (line.empty() || line[0] == '#' || line.starts_with("source,")) continue;
        std::istringstream fields(line);
        Vector v;
        for (std::string* field : {&v.source, &v.key, &v.radix, &v.tweak, &v.plain, &v.cipher}) {
            std::getline(fields, *field, ',');
        }
        vectors.push_back(v);
    }
    return vectors;
}

TEST(Ff1Test, GivesThePublishedResults) {
    const std::vector<Vector> vectors = publishedVectors();
    size_t samples = 0;
    for (const Vector& v : vectors) {
        samples += v.source.starts_with("sample") ? 1 : 0;
        const auto radix = static_cast<uint32_t>(std::stoul(v.radix));
        const std::vector<uint8_t> tweak = bytesOf(v.tweak);
        const std::string_view tweakText(reinterpret_cast<const char*>(tweak.data()), tweak.size());
        const Ff1 mode(bytesOf(v.key), radix);
        const auto count = static_cast<uint32_t>(v.plain.size());
        Number number = numberOf(v.plain, radix);
        mode.run(number, count, tweakText, Direction::encrypt);
        EXPECT_EQ(v.cipher, numeralsOf(number, radix, count)) << v.source;
        mode.run(number, count, tweakText, Direction::decrypt);
        EXPECT_EQ(v.plain, numeralsOf(number, radix, count)) << v.source;
        if (!mode.isSmall(count)) continue;
        Ff1::Job job = {numberOf(v.plain, radix).toSmall(), tweakText};
        mode.run({&job, 1}, count, Direction::encrypt);
        EXPECT_EQ(v.cipher, numeralsOf(Number(job.number), radix, count)) << v.source;
        mode.run({&job, 1}, count, Direction::decrypt);
        EXPECT_EQ(v.plain, numeralsOf(Number(job.number), radix, count)) << v.source;
    }
    EXPECT_EQ(9u, samples);
    EXPECT_GE(vectors.size(), 40u);
}

// Numbers side by side, with tweaks of all lengths, have the results of large numbers.
TEST(Ff1Test, BothWaysAgree) {
    std::mt19937_64 random(3);
    for (const uint32_t radix : {2u, 10u, 26u, 36u}) {
        const Ff1 mode(kKey, radix);
        for (uint32_t numerals = 2; mode.isSmall(numerals); ++numerals) {
            Number size(radix);
            size.power(numerals);
            std::vector<std::string> tweaks;
            for (size_t i = 0; i < 40; ++i) tweaks.push_back(std::string(i * (i % 3), 'x') + "/");
            std::vector<Ff1::Job> jobs;
            for (const std::string& tweak : tweaks) {
                Number number(random());
                number.reduce(size);
                jobs.push_back({number.toSmall(), tweak});
            }
            std::vector<Ff1::Job> before = jobs;
            mode.run(jobs, numerals, Direction::encrypt);
            for (size_t i = 0; i < jobs.size(); ++i) {
                Number number(before[i].number);
                mode.run(number, numerals, before[i].tweak, Direction::encrypt);
                ASSERT_EQ(number.toSmall(), jobs[i].number) << radix << " " << numerals;
            }
            mode.run(jobs, numerals, Direction::decrypt);
            for (size_t i = 0; i < jobs.size(); ++i) {
                ASSERT_EQ(before[i].number, jobs[i].number) << radix << " " << numerals;
            }
        }
    }
}

Permuted item(uint64_t number, uint64_t size, const std::string& tweak) {
    Permuted permuted;
    permuted.number = number;
    permuted.size = size;
    permuted.tweak = tweak;
    return permuted;
}

TEST(PermutationTest, IsOneToOneForSmallSizes) {
    const Permutation permutation(kKey);
    for (uint64_t size = 1; size <= 300; ++size) {
        std::vector<Permuted> items;
        for (uint64_t i = 0; i < size; ++i) items.push_back(item(i, size, "/"));
        permutation.run(items, Direction::encrypt);
        std::vector<bool> met(size);
        for (const Permuted& each : items) {
            ASSERT_LT(each.number, size);
            ASSERT_FALSE(met[each.number]);
            met[each.number] = true;
        }
        permutation.run(items, Direction::decrypt);
        for (uint64_t i = 0; i < size; ++i) ASSERT_EQ(i, items[i].number);
    }
}

TEST(PermutationTest, MixedItemsHaveTheirOwnResults) {
    const Permutation permutation(kKey);
    std::mt19937_64 random(4);
    const uint64_t sizes[] = {7,          999999,     1000000,      1000001,
                              1000000000, 9000000000, 26 * 26 * 10, UINT64_MAX};
    std::vector<Permuted> items;
    for (int i = 0; i < 300; ++i) {
        const uint64_t size = sizes[random() % std::size(sizes)];
        Permuted& added =
            items.emplace_back(item(random() % size, size, std::to_string(random() % 3)));
        if (size == 1000000) added.powerOfTen = 6;
        if (size == 1000000000) added.powerOfTen = 9;
    }
    const std::vector<Permuted> before = items;
    permutation.run(items, Direction::encrypt);
    for (size_t i = 0; i < items.size(); ++i) {
        Permuted alone = before[i];
        permutation.run({&alone, 1}, Direction::encrypt);
        ASSERT_EQ(alone.number, items[i].number) << before[i].size;
        ASSERT_LT(alone.number, alone.size);
    }
    permutation.run(items, Direction::decrypt);
    for (size_t i = 0; i < items.size(); ++i) ASSERT_EQ(before[i].number, items[i].number);
}

// Numerals that fit 64 bits, and those that do not, come back as they went in.
TEST(PermutationTest, NumeralsOfAnyCountComeBack) {
    const Permutation permutation(kKey);
    std::mt19937 random(5);
    for (const size_t count : {1, 5, 6, 13, 14, 18, 19, 20, 64, 300}) {
        for (const bool mixed : {false, true}) {
            std::vector<std::pair<uint32_t, uint32_t>> numerals;  // value and radix
            Permuted number;
            number.start();
            number.tweak = "t";
            for (size_t i = 0; i < count; ++i) {
                const uint32_t radix = mixed && i % 2 == 0 ? 26 : 10;
                numerals.emplace_back(random() % radix, radix);
                number.append(numerals.back().first, radix);
            }
            number.powerOfTen = mixed ? 0 : static_cast<uint32_t>(count);
            permutation.run({&number, 1}, Direction::encrypt);
            permutation.run({&number, 1}, Direction::decrypt);
            for (size_t i = count; i > 0; --i) {
                ASSERT_EQ(numerals[i - 1].first, number.takeLast(numerals[i - 1].second));
            }
        }
    }
}

TEST(ShuffledTableTest, TheCacheForgetsAndMakesTheSameAgain) {
    const crypto::ShuffledTables tables(kKey);
    constexpr uint32_t kSize = 900000;
    const auto first = tables.find(kSize, "0", Direction::encrypt);
    EXPECT_EQ(first, tables.find(kSize, "0", Direction::encrypt));
    for (int i = 1; i < 8; ++i) tables.find(kSize, std::to_string(i), Direction::encrypt);
    const auto again = tables.find(kSize, "0", Direction::encrypt);
    EXPECT_NE(first, again);
    for (uint32_t i = 0; i < kSize; i += 1000) EXPECT_EQ((*first)[i], (*again)[i]);
}

TEST(RandomNumbersTest, EveryLimitIsKeptAndReached) {
    crypto::RandomNumbers random(kKey);
    for (const uint32_t limit : {1u, 2u, 10u, 0x80000001u, 0xFFFFFFFFu}) {
        uint32_t largest = 0;
        for (int i = 0; i < 2000; ++i) {
            const uint32_t number = random.below(limit);
            ASSERT_LT(number, limit);
            largest = std::max(largest, number);
        }
        EXPECT_GE(largest, limit - 1 - limit / 100);
    }
}

// The second test case of RFC 4231, and the base32 forms of RFC 4648.
TEST(KeyedHashTest, GivesThePublishedResults) {
    const crypto::KeyedHash hash(bytesOf("4a656665"));
    const std::vector<uint8_t> expected =
        bytesOf("5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
    for (int i = 0; i < 3; ++i) {
        const crypto::Digest digest = hash.of("what do ya want for nothing?");
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), digest.begin(), digest.end()));
    }
    EXPECT_EQ(0x5bdcc146bf60754eu, hash.fractionOf("what do ya want for nothing?"));
    char text[51];
    crypto::writeBase32({'f', 'o', 'o', 'b', 'a', 'r'}, 9, text);
    EXPECT_EQ("mzxw6ytbo", std::string(text, 9));
    crypto::Digest ones;
    ones.fill(0xFF);
    crypto::writeBase32(ones, 51, text);
    EXPECT_EQ(std::string(51, '7'), std::string(text, 51));
}

TEST(PickTest, IsTheFractionOfTheCount) {
    EXPECT_EQ(0u, crypto::pick(0, 7));
    EXPECT_EQ(6u, crypto::pick(UINT64_MAX, 7));
    EXPECT_EQ(3u, crypto::pick(uint64_t{1} << 63, 7));
    EXPECT_EQ(UINT32_MAX - 1, crypto::pick(UINT64_MAX, UINT32_MAX));
    EXPECT_EQ(1u, crypto::pick(uint64_t{1} << 63, 2));
    EXPECT_EQ(0u, crypto::pick((uint64_t{1} << 63) - 1, 2));
}

}  // namespace
